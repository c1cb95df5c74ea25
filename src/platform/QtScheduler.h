#pragma once

#include "Scheduler.h"

#include <QObject>

#include <map>

class QTimer;

// Scheduler on the thread's Qt event loop. Its timers also fire while a menu or
// a modal dialog runs its own loop.
class QtScheduler : public QObject, public Scheduler
{
public:
    explicit QtScheduler(QObject *parent = nullptr) : QObject(parent) {}
    ~QtScheduler() override;

    static QtScheduler &instance();

    QDateTime now() const override { return QDateTime::currentDateTimeUtc(); }
    void cancel(TaskId id) override;

protected:
    TaskId start(std::chrono::milliseconds interval, bool repeating, Task task) override;

private:
    TaskId m_nextId = 1;
    std::map<TaskId, QTimer *> m_timers;
};
