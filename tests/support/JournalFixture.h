#pragma once

#include "FileMover.h"
#include "FileNames.h"
#include "MoveJournal.h"

#include <QDateTime>
#include <QtTest>

// The move journal of the sandbox HOME made before it, open, and tidies
// recorded in it as the engine records them, with real moves.
struct JournalFixture
{
    MoveJournal journal{MoveJournal::defaultPath()};

    JournalFixture()
    {
        if (!journal.open(std::chrono::milliseconds(0)))
            qFatal("cannot open the journal: %s", qPrintable(journal.lastError()));
    }

    // Moves each item into folder under its own name.
    quint64 recordTidy(const QStringList &paths, const QString &folder,
                       const QDateTime &time = QDateTime::currentDateTimeUtc())
    {
        using Identity = MoveJournal::Identity;
        const quint64 run = journal.beginRun(MoveJournal::RunKind::Tidy, "manual", time);
        QList<quint32> seqs;
        for (const QString &path : paths)
            seqs.append(journal.addIntent(run, path, targetIn(folder, path), Identity::of(path)));
        journal.sync();
        for (qsizetype i = 0; i < paths.size(); ++i) {
            const QString target = targetIn(folder, paths.at(i));
            if (!FileMover::move(paths.at(i), target).moved())
                qFatal("cannot move %s", qPrintable(FileNames::display(paths.at(i))));
            journal.noteOutcome(run, seqs.at(i), MoveJournal::ItemStatus::Moved, target,
                                Identity::of(target), QString());
        }
        journal.endRun(run, time);
        return run;
    }

private:
    static QString targetIn(const QString &folder, const QString &path)
    {
        return folder + path.mid(path.lastIndexOf(u'/'));
    }
};
