#pragma once

#include "MoveJournal.h"

// One line for people about a run of the journal, the same wherever runs are
// listed: "2025-03-14 09:30  tidy (manual): moved 12, failed 0, deferred 1".
class RunDescription
{
public:
    // Its start in local time, what it was, its counts, and how it ended when
    // that was not plainly: "(interrupted)", "(interrupted, recovered)",
    // "(undone)".
    static QString line(const MoveJournal::Run &run);
    // What it was: "tidy (manual)", "undo of run 12", "restore", "drop", "trash".
    static QString kind(const MoveJournal::Run &run);
};
