#pragma once

#include "FileMover.h"
#include "JournaledRun.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// Moves the items dropped on the panel on a thread of its own, one at a time
// in the order they came, so that a copy across file systems holds up neither
// the panel nor the program they came from. A drop made while others move
// waits behind them. What happens is reported on the thread that made the
// mover, never after it is gone. The move function is called on the mover's
// thread only: it must touch nothing another thread changes. The items of one
// drop are one run of the journal.
class DroppedItemsMover : public QObject
{
    Q_OBJECT
public:
    struct Move
    {
        QString source;
        QString target;
    };
    // Makes one move, recorded in the drop's run.
    using MoveFunction = std::function<FileMover::Result(const QString &source,
                                                         const QString &target, JournaledRun &run)>;

    explicit DroppedItemsMover(MoveFunction move, QObject *parent = nullptr);
    // Takes no more: the move under way is finished (a move is never cut
    // short, so no half copy is left) and waited for; those not begun stay
    // where they are, and nothing more is reported.
    ~DroppedItemsMover() override;

    // Queues the moves of one drop behind those before it, to be recorded as
    // one run in journal (thread-safe; null for none). An item already
    // waiting or moving is left out: it is moved once.
    void add(const QList<Move> &moves, MoveJournal *journal);
    // Moves added and not reported yet.
    bool isBusy() const { return !m_pending.isEmpty(); }
    // Test hook: called on the mover's thread with each source before it is
    // moved; set it before adding.
    void setMoveHookForTesting(std::function<void(const QString &source)> hook);

signals:
    void moveStarted(const QString &source, const QString &target);
    void moveEnded(const QString &source, const QString &target, const FileMover::Result &result);
    // Everything added has been moved, or has failed.
    void finished();

private:
    struct Step
    {
        Move move;
        bool ended = false;
        FileMover::Result result;
    };
    void work();
    void takeSteps();

    struct Queued
    {
        Move move;
        quint64 drop = 0; // which add() it came with
        MoveJournal *journal = nullptr;
    };

    const MoveFunction m_move;
    std::function<void(const QString &)> m_hook;
    QSet<QString> m_pending; // sources added and not reported as moved

    // Shared with the mover's thread: what to move and what happened.
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Queued> m_moves;
    quint64 m_drops = 0;
    std::vector<Step> m_steps;
    bool m_stopping = false;
    std::thread m_worker;
};
