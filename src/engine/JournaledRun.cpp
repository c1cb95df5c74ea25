#include "JournaledRun.h"

#include "JournalObserver.h"

JournaledRun::JournaledRun(MoveJournal *journal, MoveJournal::RunKind kind, const QString &detail,
                           const QDateTime &time)
    : m_journal(journal), m_kind(kind), m_detail(detail), m_startTime(time), m_endTime(time)
{
}

JournaledRun::~JournaledRun()
{
    if (m_begun)
        m_journal->endRun(m_run, m_endTime);
}

// A run that moves nothing leaves no record: it begins with its first item.
quint64 JournaledRun::run()
{
    if (!m_begun) {
        m_begun = true;
        m_run = m_journal->beginRun(m_kind, m_detail, m_startTime);
    }
    return m_run;
}

void JournaledRun::prepare(const QList<Move> &moves)
{
    if (!m_journal || moves.isEmpty())
        return;
    for (const Move &move : moves)
        m_prepared.insert(move.source, announce(move.source, move.target));
    sync();
}

quint32 JournaledRun::announce(const QString &source, const QString &target)
{
    if (!m_journal)
        return 0;
    return announce(source, target, MoveJournal::Identity::of(source));
}

quint32 JournaledRun::announce(const QString &source, const QString &target,
                               const MoveJournal::Identity &sourceIdentity)
{
    if (!m_journal)
        return 0;
    const quint32 seq = m_journal->addIntent(run(), source, target, sourceIdentity);
    m_sources.insert(seq, sourceIdentity);
    return seq;
}

void JournaledRun::sync()
{
    if (m_journal)
        m_journal->sync();
}

JournaledRun::Outcome JournaledRun::perform(quint32 seq, const std::function<Outcome()> &move)
{
    Outcome outcome;
    bool copied = false;
    {
        const JournalObserver observer(m_journal, m_run, seq);
        outcome = move();
        copied = observer.copied();
    }
    if (!m_journal)
        return outcome;
    // A rename keeps what the item is; a copy is a new item.
    MoveJournal::Identity arrived;
    if (outcome.status == MoveJournal::ItemStatus::Moved ||
        outcome.status == MoveJournal::ItemStatus::Incomplete)
        arrived = copied ? MoveJournal::Identity::of(outcome.target) : m_sources.value(seq);
    m_sources.remove(seq);
    m_journal->noteOutcome(m_run, seq, outcome.status, outcome.target, arrived, outcome.message);
    return outcome;
}

JournaledRun::Outcome JournaledRun::moveOne(const QString &source, const QString &target,
                                            const std::function<Outcome()> &move)
{
    if (const auto prepared = m_prepared.constFind(source); prepared != m_prepared.constEnd()) {
        const quint32 seq = *prepared;
        m_prepared.erase(prepared);
        return perform(seq, move);
    }
    const quint32 seq = announce(source, target);
    sync();
    return perform(seq, move);
}

void JournaledRun::noteDeferred(const QString &source)
{
    if (m_journal)
        m_journal->noteDeferred(run(), source);
}

JournaledRun::Outcome JournaledRun::outcomeOf(const FileMover::Result &result,
                                              const QString &target)
{
    using Status = MoveJournal::ItemStatus;
    switch (result.status) {
    case FileMover::Status::Moved:
        return {Status::Moved, target, result.message};
    case FileMover::Status::Incomplete:
        return {Status::Incomplete, target, result.message};
    default:
        return {Status::Failed, target, result.message};
    }
}
