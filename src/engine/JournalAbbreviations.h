#pragma once

#include "JournalRecord.h"

#include <QHash>
#include <QList>

#include <functional>
#include <vector>

// What the lines a run writes need not repeat: the folders its paths lie in,
// each named once by a folder record, and what an item's intent said, which
// its outcome leaves out where it still holds. Kept for the runs written to
// until they end.
class JournalAbbreviations
{
public:
    using NameFolder = std::function<void(const JournalRecord &folder)>;
    // Sets how record holds its paths and what it leaves out; a folder its run
    // has not named yet is named first, by the record handed to nameFolder.
    void abbreviate(JournalRecord &record, const NameFolder &nameFolder);
    // Forgets the run.
    void forget(quint64 run);
    void clear() { m_runs.clear(); }

private:
    struct Planned
    {
        QString target;
        MoveJournal::Identity identity;
    };
    struct Run
    {
        quint64 id = 0;
        QList<QString> folders; // the folder numbered n is folders[n - 1]
        QHash<QString, quint32> numbers;
        // Where the last source and the last target lay: a tidy's paths take
        // turns between two folders.
        quint32 lastSourceFolder = 0;
        quint32 lastTargetFolder = 0;
        // By seq - 1: the intents written here, as they come, numbered in turn.
        std::vector<Planned> planned;
    };
    Run &run(quint64 id);
    // The number of the folder path lies in, named first if need be; 0 when
    // the path is written whole.
    quint32 folderOf(Run &run, const QString &path, quint32 &last, const NameFolder &nameFolder);

    std::vector<Run> m_runs; // the few runs written to at once
};
