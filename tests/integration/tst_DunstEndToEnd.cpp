#include "EngineFixture.h"
#include "FreedesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace std::chrono_literals;

// The engine with the real notification client against dunst, a real
// notification server, on a private display and bus. The schedule runs in
// virtual time; only dunst and the clicks are real.
class tst_DunstEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void clickingTheAnnouncementPostpones();

private:
    static QString dunstctl(const QStringList &args)
    {
        QProcess process;
        process.start(QStringLiteral("dunstctl"), args);
        process.waitForFinished(10000);
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    QProcess m_dunst;
    QTemporaryDir m_config;
};

void tst_DunstEndToEnd::initTestCase()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") ||
        qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        QSKIP("needs a display and a session bus (run under with-display.sh)");
    if (QStandardPaths::findExecutable("dunst").isEmpty())
        QSKIP("dunst is not installed");
    // dunst's left click only closes by default; a click should act.
    QFile rc(m_config.filePath("dunstrc"));
    QVERIFY(rc.open(QIODevice::WriteOnly));
    rc.write("[global]\nmouse_left_click = do_action, close_current\nshow_indicators = no\n");
    rc.close();
    m_dunst.start("dunst", {"-config", rc.fileName()});
    QVERIFY(m_dunst.waitForStarted());
    QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    QTRY_VERIFY_WITH_TIMEOUT(bus->isServiceRegistered(FreedesktopNotifier::Service), 10000);
}

void tst_DunstEndToEnd::cleanupTestCase()
{
    m_dunst.terminate();
    m_dunst.waitForFinished(5000);
}

void tst_DunstEndToEnd::clickingTheAnnouncementPostpones()
{
    FreedesktopNotifier notifier;
    EngineFixture f(&notifier);
    f.announceScheduledTidyOf("a.txt");
    QTRY_COMPARE_WITH_TIMEOUT(dunstctl({"count", "displayed"}), QStringLiteral("1"), 10000);
    f.scheduler.advance(9s);
    dunstctl({"action", "0"}); // "Click here to postpone", within the ten seconds
    QTRY_VERIFY_WITH_TIMEOUT(!f.engine.hasPendingTidy(), 10000);
    f.scheduler.advance(2s);
    QCOMPARE(f.desktopEntries(), QStringList{"a.txt"});

    // Left alone, the announced tidy runs after ten seconds, and only the newest
    // notification stays listed.
    f.engine.performTidyFromRequest(Brevano::TidyRequestScheduled);
    f.scheduler.advance(10s);
    QVERIFY(f.desktopEntries().isEmpty());
    QCOMPARE(f.shadowEntries(), QStringList{"a.txt"});
    QTRY_COMPARE_WITH_TIMEOUT(dunstctl({"count", "displayed"}), QStringLiteral("1"), 10000);
}

QTEST_GUILESS_MAIN(tst_DunstEndToEnd)
#include "tst_DunstEndToEnd.moc"
