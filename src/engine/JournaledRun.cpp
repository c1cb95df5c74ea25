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
    return m_journal->addIntent(m_run, source, target, MoveJournal::Identity::of(source));
}

void JournaledRun::sync()
{
    if (m_journal)
        m_journal->sync();
}

JournaledRun::Outcome JournaledRun::perform(quint32 seq, const std::function<Outcome()> &move)
{
    Outcome outcome;
    {
        const JournalObserver observer(m_journal, m_run, seq);
        outcome = move();
    }
    if (m_journal)
        m_journal->noteOutcome(m_run, seq, outcome.status, outcome.target,
                               outcome.status == MoveJournal::ItemStatus::Moved ||
                                       outcome.status == MoveJournal::ItemStatus::Incomplete
                                   ? MoveJournal::Identity::of(outcome.target)
                                   : MoveJournal::Identity(),
                               outcome.message);
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
