#pragma once

#include <QDateTime>

#include <chrono>
#include <cstdint>
#include <functional>

// Every timer and delayed call goes through this, so that tests can run the
// program's schedule in virtual time.
class Scheduler
{
public:
    using TaskId = std::uint64_t;
    using Task = std::function<void()>;

    virtual ~Scheduler() = default;

    virtual QDateTime now() const = 0;
    // Runs task once after delay; a delay of zero runs it on the next pass of the loop.
    TaskId schedule(std::chrono::milliseconds delay, Task task)
    {
        return start(delay, false, std::move(task));
    }
    // Runs task every interval until cancelled.
    TaskId scheduleRepeating(std::chrono::milliseconds interval, Task task)
    {
        return start(interval, true, std::move(task));
    }
    // Cancelling an unknown or finished task does nothing.
    virtual void cancel(TaskId id) = 0;

protected:
    virtual TaskId start(std::chrono::milliseconds interval, bool repeating, Task task) = 0;
};
