#pragma once

#include "MoveJournal.h"

#include <QDateTime>
#include <QStringList>

class Trash;

// Finishes, at start-up, what the journal says was in flight when Brevano was
// cut short, so that every item is in exactly one place and no hidden name of
// ours is left behind:
// - a partial copy across file systems is removed (its source is still whole);
// - a copy that was renamed into place has the removal of its source finished,
//   entry by entry, only where the copy holds the same (FileMover's
//   finishInterruptedMove);
// - an item moved aside while being replaced is trashed when its successor is
//   in, as the replace would have done, and otherwise takes its name back, or
//   a free numbered one (never deleted);
// - each announced item is looked for where it went, so the run's record
//   says what really happened; then the run is ended as recovered.
// The folders given are swept too, for partial copies and set-aside items no
// journal knows of (one left by a journal that was damaged, say). Such an item
// has no name on record: it becomes "Recovered item" (numbered when taken),
// with the extension its contents call for, so that it still opens.
// Runs before anything else moves, in the process that owns the journal (with
// no open journal it does nothing: another process may be moving). Finishing
// reads files whole to compare them, so it may take a while: not on the main
// thread.
class JournalRecovery
{
public:
    static inline const QString kTitle = QStringLiteral("Brevano recovered an interrupted tidy");

    struct Report
    {
        int runs = 0;     // runs that were cut short
        int finished = 0; // moves whose copy was in place, now finished
        int partialsRemoved = 0;
        int putBack = 0;      // set-aside items given a visible name again
        int trashed = 0;      // set-aside items trashed, their successor being in
        QStringList problems; // what could not be done, for people to read
        bool isEmpty() const
        {
            return runs == 0 && partialsRemoved == 0 && putBack == 0 && trashed == 0 &&
                   problems.isEmpty();
        }
        // What was done, in one sentence without the title:
        // "finished 1 move, removed 2 partial copies", say, then what could
        // not be done after "; ".
        QString summary() const;
        // kTitle + ": " + summary(), for the command line.
        QString line() const;
    };

    JournalRecovery(MoveJournal &journal, Trash &trash);
    Report recover(const QStringList &sweepFolders, const QDateTime &now);

private:
    void recoverItem(quint64 run, const MoveJournal::Item &item, Report &report);
    // Trashes an item that was moved aside as the item at target, as the
    // replace would have; keeps it visible when that fails.
    void trashAside(const QString &aside, const QString &target, Report &report);
    // Gives an item under one of our hidden names the name wanted, or a free
    // numbered one when that is taken.
    void putBack(const QString &path, const QString &wanted, Report &report);
    void removePartial(const QString &path, Report &report);
    void sweep(const QString &folder, Report &report);

    MoveJournal &m_journal;
    Trash &m_trash;
};
