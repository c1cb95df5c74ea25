#include "DroppedItemsMover.h"

namespace {

// The mover's thread gets strings that share no data with the caller's: their
// last reference may then go on either thread without a hand-over that
// ThreadSanitizer cannot see.
QString ownCopy(const QString &text)
{
    return QString(text.constData(), text.size());
}

} // namespace

DroppedItemsMover::DroppedItemsMover(MoveFunction move, QObject *parent)
    : QObject(parent), m_move(std::move(move))
{
}

DroppedItemsMover::~DroppedItemsMover()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_moves.clear();
    }
    m_wake.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

void DroppedItemsMover::setMoveHookForTesting(std::function<void(const QString &)> hook)
{
    m_hook = std::move(hook);
}

void DroppedItemsMover::add(const QList<Move> &moves, MoveJournal *journal)
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_drops;
        for (const Move &move : moves) {
            if (m_pending.contains(move.source))
                continue;
            m_pending.insert(move.source);
            m_moves.push_back({{ownCopy(move.source), ownCopy(move.target)}, m_drops, journal});
        }
        // One thread, started with the first drop, moves everything.
        if (!m_worker.joinable() && !m_moves.empty())
            m_worker = std::thread([this] { work(); });
    }
    m_wake.notify_one();
}

void DroppedItemsMover::work()
{
    // The steps travel under the lock; the queued call only wakes the main
    // thread, and goes with this object.
    const auto report = [this](Step &&done) {
        m_steps.push_back(std::move(done));
        if (m_steps.size() == 1)
            QMetaObject::invokeMethod(this, &DroppedItemsMover::takeSteps, Qt::QueuedConnection);
    };
    // The run of the drop under way: it ends with the drop's last move (the
    // moves of a drop were queued together).
    std::unique_ptr<JournaledRun> run;
    quint64 runDrop = 0;
    const auto endRun = [&run] {
        if (run)
            run->setEndTime(QDateTime::currentDateTimeUtc());
        run.reset();
    };
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !m_moves.empty(); });
        if (m_stopping)
            break;
        Step step;
        step.move = std::move(m_moves.front().move);
        const quint64 drop = m_moves.front().drop;
        MoveJournal *const journal = m_moves.front().journal;
        m_moves.pop_front();
        Step started;
        started.move = {ownCopy(step.move.source), ownCopy(step.move.target)};
        report(std::move(started));
        const bool lastOfDrop = m_moves.empty() || m_moves.front().drop != drop;
        lock.unlock();
        if (!run || runDrop != drop) {
            endRun();
            run = std::make_unique<JournaledRun>(journal, MoveJournal::RunKind::Drop, QString(),
                                                 QDateTime::currentDateTimeUtc());
            runDrop = drop;
        }
        if (m_hook)
            m_hook(step.move.source);
        step.result = m_move(step.move.source, step.move.target, *run);
        step.ended = true;
        if (lastOfDrop)
            endRun();
        lock.lock();
        report(std::move(step));
    }
    lock.unlock();
    endRun();
}

void DroppedItemsMover::takeSteps()
{
    std::vector<Step> steps;
    {
        const std::lock_guard lock(m_mutex);
        steps.swap(m_steps);
    }
    for (const Step &step : steps) {
        if (!step.ended) {
            emit moveStarted(step.move.source, step.move.target);
            continue;
        }
        m_pending.remove(step.move.source);
        emit moveEnded(step.move.source, step.move.target, step.result);
        if (m_pending.isEmpty())
            emit finished();
    }
}
