#pragma once

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <functional>

// Runs the main thread's event loop for a benchmark, as an application would
// between the steps it times.
class BenchEventLoop
{
public:
    // Runs the event loop, sleeping while it has nothing to do, until done or
    // the time is up; answers done.
    static bool waitUntil(const std::function<bool()> &done, int timeoutMs = 30000)
    {
        bool expired = false;
        QTimer timer;
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, [&] { expired = true; });
        timer.start(timeoutMs);
        while (!done() && !expired)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return done();
    }

    // Runs whatever is ready to run until nothing is (two seconds at most).
    static void runUntilIdle()
    {
        QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
        QElapsedTimer limit;
        limit.start();
        while (dispatcher->processEvents(QEventLoop::AllEvents) && limit.elapsed() < 2000) {
        }
    }
};
