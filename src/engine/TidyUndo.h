#pragma once

#include "MoveJournal.h"

#include <QStringList>

#include <optional>

// Takes the last tidy back: each item it moved returns to its own Desktop name
// through the no-replace move restores use, and the ignore list is left alone.
// An item whose Desktop name is taken now stays in the Shadow Desktop; one
// that is no longer where the tidy put it (the user moved, restored or
// trashed it since, or something else now has its name) is skipped, never
// looked for elsewhere. An item the tidy left split between the Desktop and
// the Shadow Desktop (it changed while being copied) stays as it is. All of
// these are reported. The undo is itself a run of the journal; once it ends,
// the tidy is undone and a second undo finds nothing. An undo cut short
// leaves the tidy to be undone again: the next one takes back what is left,
// passing over in silence what the one cut short put back.
class TidyUndo
{
public:
    struct Report
    {
        bool nothingToUndo = false;
        quint64 run = 0; // the tidy taken back
        qint64 restored = 0;
        QStringList nameTaken; // Desktop paths that were taken
        QStringList split;     // Desktop paths of items left partly in the Shadow Desktop
        QStringList notThere;  // Shadow Desktop paths no longer holding the item
        QStringList failed;    // "path: reason"
        // What happened, in lines for people ("Put back 12 items.", ...).
        QStringList lines() const;
    };

    explicit TidyUndo(MoveJournal &journal) : m_journal(journal) {}

    // What an undo would take back now, answered from memory (menus ask it).
    std::optional<MoveJournal::Run> candidate() const;
    Report undoLastTidy(const QDateTime &now);

private:
    MoveJournal &m_journal;
};
