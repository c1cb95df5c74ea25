#pragma once

#include <QDateTime>
#include <QStringList>

class MoveJournal;
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
// journal knows of (one left by a journal that was damaged, say).
// Runs before anything else moves, in the process that owns the journal.
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
        // "finished 1 move and removed 2 partial copies", say.
        QString summary() const;
        // kTitle + ": " + summary(), for the command line.
        QString line() const;
    };

    JournalRecovery(MoveJournal &journal, Trash &trash);
    Report recover(const QStringList &sweepFolders, const QDateTime &now);

private:
    MoveJournal &m_journal;
    Trash &m_trash;
};
