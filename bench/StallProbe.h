#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

// How long the main thread's event loop went without a turn: the longest gap
// between the ticks of a 1 ms timer since start().
class StallProbe
{
public:
    StallProbe()
    {
        m_tick.setTimerType(Qt::PreciseTimer);
        m_tick.setInterval(1);
        QObject::connect(&m_tick, &QTimer::timeout, [this] {
            const qint64 now = m_clock.nsecsElapsed();
            m_longest = std::max(m_longest, now - m_last);
            m_last = now;
        });
    }

    void start()
    {
        m_last = m_longest = 0;
        m_clock.start();
        m_tick.start();
    }
    // Since start(), and the longest gap so far.
    double elapsedSeconds() const { return double(m_clock.nsecsElapsed()) / 1e9; }
    double longestSeconds() const { return double(m_longest) / 1e9; }

private:
    QTimer m_tick;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
};
