#pragma once

#include "JournalFile.h"
#include "JournalRuns.h"

#include <QByteArray>

#include <optional>

// What the journal holds, in short, so that opening need not read it: the
// runs as JournalRuns knows them (without items), the number the next run
// takes, and where the journal ended (JournalFile::Mark), which tells whether
// it is still the journal summed up, maybe grown since. Kept beside it
// (JournalFile's index), written when a run ends and whenever the journal is
// written anew; an index that is missing, stale or damaged is rebuilt from
// the journal.
struct JournalIndex
{
    quint64 nextRun = 1;
    JournalFile::Mark journal;
    QList<JournalRuns::Entry> runs;

    QByteArray toBytes() const;
    // None when the bytes are damaged, cut short or of another version.
    static std::optional<JournalIndex> fromBytes(QByteArrayView bytes);
};
