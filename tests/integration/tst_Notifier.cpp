#include "EngineFixture.h"
#include "FreedesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QThread>
#include <QtTest>

using namespace std::chrono_literals;

// A notification server on the private session bus, on a thread of its own.
class FakeNotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    struct Received
    {
        uint replacesId;
        QString summary;
        QString body;
        QStringList actions;
    };

    QList<Received> received() const
    {
        QMutexLocker lock(&m_mutex);
        return m_received;
    }
    QList<uint> listed() const
    {
        QMutexLocker lock(&m_mutex);
        return m_listed;
    }
    int capabilityQueries() const
    {
        QMutexLocker lock(&m_mutex);
        return m_capabilityQueries;
    }
    void setCapabilities(const QStringList &capabilities)
    {
        QMutexLocker lock(&m_mutex);
        m_capabilities = capabilities;
    }

public slots:
    Q_SCRIPTABLE QStringList GetCapabilities()
    {
        QMutexLocker lock(&m_mutex);
        ++m_capabilityQueries;
        return m_capabilities;
    }
    Q_SCRIPTABLE uint Notify(const QString &, uint replacesId, const QString &,
                             const QString &summary, const QString &body,
                             const QStringList &actions, const QVariantMap &, int)
    {
        QMutexLocker lock(&m_mutex);
        m_received.append({replacesId, summary, body, actions});
        const uint id = replacesId != 0 && m_listed.contains(replacesId) ? replacesId : m_nextId++;
        if (!m_listed.contains(id))
            m_listed.append(id);
        return id;
    }
    Q_SCRIPTABLE void CloseNotification(uint id)
    {
        QMutexLocker lock(&m_mutex);
        m_listed.removeAll(id);
    }
    void click(uint id) { emit ActionInvoked(id, QStringLiteral("default")); }

signals:
    Q_SCRIPTABLE void ActionInvoked(uint id, const QString &actionKey);

private:
    mutable QMutex m_mutex;
    QList<Received> m_received;
    QList<uint> m_listed;
    uint m_nextId = 41; // ids do not start at 1
    QStringList m_capabilities{"actions", "body", "body-markup"};
    int m_capabilityQueries = 0;
};

class tst_Notifier : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void replacesAndCarriesTheAction();
    void clickRunsTheEngineAction();
    void clickWithoutActionDoesNothing();
    void withoutAServerNothingHappens();
    void otherThreadIsLogged();
    void bodyIsEscapedWhereTheServerReadsMarkup();

private:
    void clickOnServer(uint id)
    {
        QMetaObject::invokeMethod(
            m_server, [this, id] { m_server->click(id); }, Qt::BlockingQueuedConnection);
    }
    // Exports server on a connection of its own, made on the server thread, and
    // takes the service name for it (or, with take false, gives the name up).
    bool serve(FakeNotificationServer *server, const QString &connection, bool take = true)
    {
        bool done = false;
        QMetaObject::invokeMethod(
            server,
            [&] {
                QDBusConnection bus =
                    QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection);
                if (!take) {
                    done = bus.unregisterService(FreedesktopNotifier::Service);
                    return;
                }
                bus.registerObject(FreedesktopNotifier::Path, server,
                                   QDBusConnection::ExportScriptableSlots |
                                       QDBusConnection::ExportScriptableSignals);
                done = bus.registerService(FreedesktopNotifier::Service);
            },
            Qt::BlockingQueuedConnection);
        return done;
    }

    QThread m_serverThread;
    FakeNotificationServer *m_server = nullptr;
};

void tst_Notifier::initTestCase()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        QSKIP("needs a session bus (run under dbus-run-session)");
    m_server = new FakeNotificationServer;
    m_server->moveToThread(&m_serverThread);
    m_serverThread.start();
    // Registered from the server's own thread, where QtDBus makes its helpers.
    QVERIFY(serve(m_server, "fake-server"));
}

void tst_Notifier::cleanupTestCase()
{
    QMetaObject::invokeMethod(
        m_server, [] { QDBusConnection::disconnectFromBus("fake-server"); },
        Qt::BlockingQueuedConnection);
    m_serverThread.quit();
    m_serverThread.wait();
    delete m_server;
}

void tst_Notifier::replacesAndCarriesTheAction()
{
    FreedesktopNotifier notifier;
    notifier.deliver({"First", "one", "ManualStart", {}});
    notifier.deliver({"Second",
                      "two",
                      "ScheduledStart",
                      {{"ActionSelector", "userNotificationActionCancelTidy:"}}});
    const auto received = m_server->received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received.at(0).replacesId, 0u);
    QVERIFY(received.at(1).replacesId != 0); // the first one's id
    QCOMPARE(m_server->listed().size(), 1);  // only the newest is listed
    QCOMPARE(received.at(1).summary, QStringLiteral("Second"));
    QCOMPARE(received.at(0).actions, QStringList{});
    QCOMPARE(received.at(1).actions.first(), QStringLiteral("default"));
}

void tst_Notifier::clickRunsTheEngineAction()
{
    FreedesktopNotifier notifier;
    EngineFixture f(&notifier);
    Brevano &engine = f.engine;
    f.announceScheduledTidyOf("a.txt");
    QVERIFY(engine.hasPendingTidy());
    const uint announcement = m_server->listed().last();
    QCOMPARE(m_server->received().last().summary, QStringLiteral("Scheduled Tidy Will Start"));
    clickOnServer(announcement + 1000); // some other notification: nothing
    clickOnServer(announcement);
    QTRY_VERIFY(!engine.hasPendingTidy()); // the click reached the engine
    f.scheduler.advance(11s);
    QCOMPARE(f.desktopEntries(), QStringList{"a.txt"});
}

// Clicks arrive in order, so a click on a later notification with an action
// proves that the earlier click on one without an action was handled, and did nothing.
void tst_Notifier::clickWithoutActionDoesNothing()
{
    FreedesktopNotifier notifier;
    QList<QVariantMap> handled;
    notifier.setActivationHandler([&](const QVariantMap &info) { handled.append(info); });
    notifier.deliver({"Plain", "no action", "Plain", {}});
    clickOnServer(m_server->listed().last());
    notifier.deliver({"Later", "with action", "Later", {{"ActionSelector", "sentinel:"}}});
    clickOnServer(m_server->listed().last());
    QTRY_COMPARE(handled.size(), 1);
    QCOMPARE(handled.first().value("ActionSelector").toString(), QStringLiteral("sentinel:"));
}

void tst_Notifier::withoutAServerNothingHappens()
{
    // No bus at all: nothing is shown, nothing reported, nothing waits.
    FreedesktopNotifier disconnected(QDBusConnection(QStringLiteral("never-connected")));
    QElapsedTimer timer;
    timer.start();
    disconnected.deliver({"Title", "text", "Id", {}});
    QVERIFY(timer.elapsed() < 1000);
}

void tst_Notifier::otherThreadIsLogged()
{
    FreedesktopNotifier notifier;
    QTest::ignoreMessage(QtWarningMsg, "Trying to register notification from other thread");
    QThread *thread = QThread::create([&] {
        notifier.deliver({"From a thread", "text", "Id", {}});
    });
    thread->start();
    thread->wait();
    delete thread;
    QCOMPARE(m_server->received().last().summary,
             QStringLiteral("From a thread")); // and carried on
}

// File names are text, never markup: escaped for a server that reads markup in
// the body, as they are for one that does not. Each server is asked once.
void tst_Notifier::bodyIsEscapedWhereTheServerReadsMarkup()
{
    const QString text = "File 'Tom & \"Jerry\" <1>.txt' could not be moved to Shadow Desktop";
    const int asked = m_server->capabilityQueries();
    FreedesktopNotifier notifier;
    notifier.deliver({"Move File Failed", text, "MoveFailed", {}});
    notifier.deliver({"a<b>c.txt", "Moved file 'a<b>c.txt' to Shadow Desktop", "MovedFile", {}});
    QCOMPARE(m_server->received().at(m_server->received().size() - 2).body,
             QStringLiteral("File &#39;Tom &amp; &quot;Jerry&quot; &lt;1&gt;.txt&#39; could not "
                            "be moved to Shadow Desktop"));
    QCOMPARE(m_server->received().last().summary, QStringLiteral("a<b>c.txt")); // plain text
    QCOMPARE(m_server->capabilityQueries(), asked + 1);

    // Another server takes the name over; it reads no markup.
    auto *plain = new FakeNotificationServer;
    plain->setCapabilities({"actions", "body"});
    plain->moveToThread(&m_serverThread);
    QVERIFY(serve(m_server, "fake-server", false));
    QVERIFY(serve(plain, "plain-server"));
    QTRY_COMPARE(plain->capabilityQueries(), 1); // asked when it took the name
    notifier.deliver({"Move File Failed", text, "MoveFailed", {}});
    notifier.deliver({"Moved File", text, "MovedFile", {}});
    QCOMPARE(plain->received().size(), 2);
    QCOMPARE(plain->received().last().body, text);
    QCOMPARE(plain->capabilityQueries(), 1);
    QCOMPARE(m_server->capabilityQueries(), asked + 1);

    QVERIFY(serve(plain, "plain-server", false));
    QMetaObject::invokeMethod(
        plain,
        [plain] {
            QDBusConnection::disconnectFromBus("plain-server");
            delete plain;
        },
        Qt::BlockingQueuedConnection);
    QVERIFY(serve(m_server, "fake-server"));
}

QTEST_GUILESS_MAIN(tst_Notifier)
#include "tst_Notifier.moc"
