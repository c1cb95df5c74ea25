#include "VirtualScheduler.h"

Scheduler::TaskId VirtualScheduler::start(std::chrono::milliseconds delay, bool repeating,
                                          Task task)
{
    const TaskId id = m_nextId++;
    m_tasks.emplace(id, Entry{m_now.addMSecs(delay.count()), delay, repeating, std::move(task)});
    return id;
}

void VirtualScheduler::cancel(TaskId id)
{
    m_tasks.erase(id);
}

void VirtualScheduler::advance(std::chrono::milliseconds duration)
{
    const QDateTime end = m_now.addMSecs(duration.count());
    for (;;) {
        // The earliest due task; ties go to the one scheduled first.
        auto next = m_tasks.end();
        for (auto it = m_tasks.begin(); it != m_tasks.end(); ++it) {
            if (it->second.due <= end &&
                (next == m_tasks.end() || it->second.due < next->second.due))
                next = it;
        }
        if (next == m_tasks.end())
            break;
        m_now = next->second.due;
        Task task = next->second.task;
        if (next->second.repeating)
            next->second.due = m_now.addMSecs(std::max<qint64>(1, next->second.interval.count()));
        else
            m_tasks.erase(next);
        task();
    }
    m_now = end;
}
