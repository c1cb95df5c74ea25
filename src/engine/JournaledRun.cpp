#include "JournaledRun.h"

#include "JournalObserver.h"

JournaledRun::JournaledRun(MoveJournal *journal, MoveJournal::RunKind kind, const QString &detail,
                           const QDateTime &time)
    : m_journal(journal), m_kind(kind), m_endTime(time)
{
    if (m_journal)
        m_run = m_journal->beginRun(kind, detail, time);
}

JournaledRun::~JournaledRun()
{
    if (m_journal)
        m_journal->endRun(m_run, m_endTime.isValid() ? m_endTime : QDateTime::currentDateTimeUtc());
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
    const quint32 seq = m_journal->addIntent(m_run, source, target, sourceIdentity);
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
    const quint32 seq = announce(source, target);
    sync();
    return perform(seq, move);
}

void JournaledRun::noteDeferred(const QString &source)
{
    if (m_journal)
        m_journal->noteDeferred(m_run, source);
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
