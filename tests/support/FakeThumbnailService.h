#pragma once

#include "ThumbnailService.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <mutex>

// Pictures as a test wants them: a red square of the size asked for each
// ".png", nothing for anything else. It records every call; while the test
// holds it closed, calls wait until it opens (for half a minute at most, so
// that a test that forgets fails instead of hanging).
class FakeThumbnailService : public ThumbnailService
{
public:
    struct Call
    {
        QString path;
        int size;
        bool onMainThread;
        bool asIcon;
    };

    QImage imageWithPreviewOfFileAtPath(const QString &path, int size, bool asIcon) override
    {
        std::unique_lock lock(m_mutex);
        m_calls.append({path, size, QThread::currentThread() == qApp->thread(), asIcon});
        m_changed.notify_all();
        m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_open; });
        ++m_returned;
        if (!path.endsWith(".png"))
            return {};
        QImage picture(size, size, QImage::Format_RGB32);
        picture.fill(Qt::red);
        return picture;
    }

    void setOpen(bool open)
    {
        const std::lock_guard lock(m_mutex);
        m_open = open;
        m_changed.notify_all();
    }
    QList<Call> calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    qsizetype returned() const
    {
        const std::lock_guard lock(m_mutex);
        return m_returned;
    }
    // Until count calls have come in.
    bool waitForCalls(qsizetype count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30),
                                  [&] { return m_calls.size() >= count; });
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = true;
    QList<Call> m_calls;
    qsizetype m_returned = 0;
};
