#include "BackgroundJob.h"

BackgroundJob::BackgroundJob(QObject *parent) : QObject(parent) {}

BackgroundJob::~BackgroundJob()
{
    if (m_thread.joinable())
        m_thread.join();
}

bool BackgroundJob::start(Job job)
{
    if (m_busy)
        return false;
    // The last job's thread has handed its answer over: it is ending, if not gone.
    if (m_thread.joinable())
        m_thread.join();
    m_busy = true;
    m_thread = std::thread([this, job = std::move(job)] {
        Then then = job();
        {
            const std::lock_guard lock(m_mutex);
            m_then = std::move(then);
        }
        QMetaObject::invokeMethod(this, &BackgroundJob::takeResult, Qt::QueuedConnection);
    });
    return true;
}

void BackgroundJob::takeResult()
{
    Then then;
    {
        const std::lock_guard lock(m_mutex);
        then.swap(m_then);
    }
    m_busy = false;
    if (then)
        then();
    emit finished();
}
