#pragma once

#include "FileMover.h"
#include "MoveJournal.h"

#include <QDateTime>
#include <QHash>
#include <QString>

#include <functional>

// One run of moves as the journal sees it, begun when made and ended when
// gone: each move is announced, the announcement made durable, the move made
// with its steps across file systems recorded, and its outcome noted. With no
// journal every call just does the move.
class JournaledRun
{
public:
    JournaledRun(MoveJournal *journal, MoveJournal::RunKind kind, const QString &detail,
                 const QDateTime &time);
    ~JournaledRun();
    JournaledRun(const JournaledRun &) = delete;
    JournaledRun &operator=(const JournaledRun &) = delete;

    MoveJournal::RunKind kind() const { return m_kind; }
    void setEndTime(const QDateTime &time) { m_endTime = time; }

    struct Move
    {
        QString source;
        QString target; // empty where not known before (the Trash picks it)
    };
    // Announces the moves to come at once, durably: moveOne() then takes
    // each as announced, for one sync in all.
    void prepare(const QList<Move> &moves);
    // Announces a move (buffered); sync() makes the announcements durable
    // before the moves start.
    quint32 announce(const QString &source, const QString &target);
    // The same, with what the source is already known.
    quint32 announce(const QString &source, const QString &target,
                     const MoveJournal::Identity &sourceIdentity);
    void sync();
    // Makes an announced move: move runs with the journal watching, and what
    // it answers is noted (target: where the item went, or was meant to go).
    struct Outcome
    {
        MoveJournal::ItemStatus status = MoveJournal::ItemStatus::Failed;
        QString target;
        QString message;
    };
    Outcome perform(quint32 seq, const std::function<Outcome()> &move);
    // announce, sync and perform, for a run of single moves.
    Outcome moveOne(const QString &source, const QString &target,
                    const std::function<Outcome()> &move);
    void noteDeferred(const QString &source);

    static Outcome outcomeOf(const FileMover::Result &result, const QString &target);

private:
    quint64 run();

    MoveJournal *m_journal;
    MoveJournal::RunKind m_kind;
    QString m_detail;
    QDateTime m_startTime;
    bool m_begun = false;
    quint64 m_run = 0;
    QDateTime m_endTime;
    QHash<QString, quint32> m_prepared;              // announced sources not moved yet
    QHash<quint32, MoveJournal::Identity> m_sources; // what each announced source is
};
