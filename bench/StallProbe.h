#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

#include <time.h>

// How long the main thread's event loop went without a turn: the longest gap
// between the ticks of a 1 ms timer since start(), and how much of that gap the
// thread spent running (the rest it waited: for a lock, the disk, or a core on
// a busy machine).
class StallProbe
{
public:
    StallProbe()
    {
        m_tick.setTimerType(Qt::PreciseTimer);
        m_tick.setInterval(1);
        QObject::connect(&m_tick, &QTimer::timeout, [this] {
            const qint64 now = m_clock.nsecsElapsed();
            const qint64 running = threadNanoseconds();
            if (now - m_last > m_longest) {
                m_longest = now - m_last;
                m_longestRunning = running - m_lastRunning;
            }
            m_last = now;
            m_lastRunning = running;
        });
    }

    void start()
    {
        m_last = m_longest = m_longestRunning = 0;
        m_lastRunning = threadNanoseconds();
        m_clock.start();
        m_tick.start();
    }
    // Since start(), and the longest gap so far.
    double elapsedSeconds() const { return double(m_clock.nsecsElapsed()) / 1e9; }
    double longestSeconds() const { return double(m_longest) / 1e9; }
    double longestRunningSeconds() const { return double(m_longestRunning) / 1e9; }

private:
    static qint64 threadNanoseconds()
    {
        timespec now = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
    }

    QTimer m_tick;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
    qint64 m_lastRunning = 0;
    qint64 m_longestRunning = 0;
};
