#include "QtScheduler.h"
#include "VirtualScheduler.h"

#include <QtTest>

using namespace std::chrono_literals;

class tst_Scheduler : public QObject
{
    Q_OBJECT
private slots:
    void virtualTimeRunsTasksInOrder();
    void qtSchedulerContract();
};

void tst_Scheduler::virtualTimeRunsTasksInOrder()
{
    VirtualScheduler scheduler;
    const QDateTime start = scheduler.now();
    QStringList log;
    const auto at = [&](const char *what) {
        log.append(
            QStringLiteral("%1@%2").arg(QLatin1String(what)).arg(start.msecsTo(scheduler.now())));
    };
    scheduler.schedule(10s, [&] { at("ten"); });
    const auto repeating = scheduler.scheduleRepeating(4s, [&] { at("tick"); });
    const auto cancelled = scheduler.schedule(5s, [&] { at("never"); });
    scheduler.schedule(0ms, [&] {
        at("zero");
        scheduler.schedule(1s, [&] { at("nested"); }); // scheduled from a task
    });
    scheduler.cancel(cancelled);
    scheduler.advance(0ms);
    QCOMPARE(log, QStringList{"zero@0"});
    scheduler.advance(12s);
    QCOMPARE(log, (QStringList{"zero@0", "nested@1000", "tick@4000", "tick@8000", "ten@10000",
                               "tick@12000"}));
    QCOMPARE(start.msecsTo(scheduler.now()), 12000);
    scheduler.cancel(repeating);
    scheduler.cancel(repeating); // twice is harmless
    scheduler.advance(60s);
    QCOMPARE(log.size(), 6);
    QCOMPARE(scheduler.pendingCount(), 0);
}

// The production scheduler keeps the same promises on a real event loop; short
// intervals only, and every wait is for a task to have run, never for a time.
void tst_Scheduler::qtSchedulerContract()
{
    QtScheduler scheduler;
    int once = 0, repeated = 0, cancelled = 0;
    scheduler.schedule(0ms, [&] { ++once; });
    const auto stopMe = scheduler.schedule(1ms, [&] { ++cancelled; });
    scheduler.cancel(stopMe);
    Scheduler::TaskId repeating = 0;
    repeating = scheduler.scheduleRepeating(1ms, [&] {
        if (++repeated == 3)
            scheduler.cancel(repeating); // cancelling from inside the task itself
    });
    QTRY_COMPARE(repeated, 3);
    QCOMPARE(once, 1);
    QCOMPARE(cancelled, 0);
    // Timers fire in the order they fall due: once a later marker has run, a
    // cancelled task that was still armed would have run before it.
    bool marker = false;
    scheduler.schedule(5ms, [&] { marker = true; });
    QTRY_VERIFY(marker);
    QCOMPARE(repeated, 3);
    QCOMPARE(once, 1);
    QVERIFY(qAbs(scheduler.now().msecsTo(QDateTime::currentDateTimeUtc())) < 1000);
}

QTEST_GUILESS_MAIN(tst_Scheduler)
#include "tst_Scheduler.moc"
