#pragma once

#include <QObject>

#include <functional>
#include <mutex>
#include <thread>

// Runs one job at a time on a thread of its own, for work that may take long
// (moving many items, reading whole files) while the thread that made it goes
// on. The job returns what is to be done with its result; that is done on the
// thread that made this object, by a queued call. Destroyed while a job runs,
// it waits for the job to end (moves are never cut short), and what the job
// returned is dropped. A job touches nothing another thread changes; what it
// needs is handed to it by value.
class BackgroundJob : public QObject
{
    Q_OBJECT
public:
    using Then = std::function<void()>;
    using Job = std::function<Then()>;

    explicit BackgroundJob(QObject *parent = nullptr);
    ~BackgroundJob() override;

    // False (and nothing started) while a job is under way.
    bool start(Job job);
    // From start() until what the job returned has been done.
    bool isBusy() const { return m_busy; }

signals:
    void finished();

private:
    void takeResult();

    bool m_busy = false;
    std::thread m_thread;
    // The job's answer travels under our own lock; the queued call only wakes
    // this thread, in a way ThreadSanitizer can follow.
    std::mutex m_mutex;
    Then m_then;
};
