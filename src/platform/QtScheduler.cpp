#include "QtScheduler.h"

#include <QTimer>

QtScheduler::~QtScheduler()
{
    for (auto &[id, timer] : m_timers)
        delete timer;
}

QtScheduler &QtScheduler::instance()
{
    static QtScheduler scheduler;
    return scheduler;
}

Scheduler::TaskId QtScheduler::start(std::chrono::milliseconds interval, bool repeating, Task task)
{
    const TaskId id = m_nextId++;
    auto *timer = new QTimer(this);
    timer->setSingleShot(!repeating);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, this, [this, id, repeating, task = std::move(task)] {
        if (!repeating)
            cancel(id); // before running, so that the task may schedule again
        task();
    });
    m_timers.emplace(id, timer);
    timer->start(interval);
    return id;
}

void QtScheduler::cancel(TaskId id)
{
    const auto found = m_timers.find(id);
    if (found == m_timers.end())
        return;
    found->second->stop();
    // deleteLater: cancel may run inside this very timer's timeout.
    found->second->deleteLater();
    m_timers.erase(found);
}
