#pragma once

#include "Scheduler.h"

#include <QTimeZone>

#include <map>

// Scheduler for tests: time stands still until advance() moves it, and then
// every task falls due in order, each seeing now() at its own due time.
class VirtualScheduler : public Scheduler
{
public:
    explicit VirtualScheduler(const QDateTime &start = QDateTime(QDate(2026, 3, 14), QTime(9, 0),
                                                                 QTimeZone::utc()))
        : m_now(start)
    {
    }

    QDateTime now() const override { return m_now; }
    void cancel(TaskId id) override;

    void advance(std::chrono::milliseconds duration);
    void setNow(const QDateTime &now) { m_now = now; }
    qsizetype pendingCount() const { return qsizetype(m_tasks.size()); }

private:
    struct Entry
    {
        QDateTime due;
        std::chrono::milliseconds interval{0};
        bool repeating = false;
        Task task;
    };

    TaskId start(std::chrono::milliseconds delay, bool repeating, Task task) override;

    QDateTime m_now;
    TaskId m_nextId = 1;
    std::map<TaskId, Entry> m_tasks;
};
