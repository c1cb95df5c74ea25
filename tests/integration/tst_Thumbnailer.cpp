#include "FreedesktopThumbnailService.h"
#include "SandboxHome.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QtTest>

using namespace std::chrono_literals;

static QColor colourOf(const QImage &image)
{
    return image.isNull() ? QColor() : image.pixelColor(image.rect().center());
}

// A thumbnailer that takes every call and answers none.
class HungThumbnailer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.thumbnails.Thumbnailer1")
public:
    int m_calls = 0;
public slots:
    QStringList GetFlavors(const QDBusMessage &message)
    {
        ++m_calls;
        message.setDelayedReply(true);
        return {};
    }
};

// The desktop's thumbnailer on a private session bus: a hung one, then the
// real one (tumbler) where it is installed.
class tst_Thumbnailer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(QDBusConnection::sessionBus().isConnected()); }

    // Before tumbler is started: the name is free for the stand-in.
    void aHungThumbnailerIsLeftAloneForAWhile()
    {
        SandboxHome home;
        QDBusConnection bus = QDBusConnection::sessionBus();
        HungThumbnailer hung;
        QVERIFY(bus.registerObject(FreedesktopThumbnailService::Path, &hung,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(FreedesktopThumbnailService::Service));
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::green);
        const QString first = home.home() + "/first.png";
        const QString second = home.home() + "/second.png";
        QVERIFY(image.save(first, "PNG") && image.save(second, "PNG"));

        // The calls wait here, where the stand-in cannot answer them: each
        // times out, and the pictures are decoded instead.
        FreedesktopThumbnailService service(FreedesktopThumbnailService::Thumbnailer::SessionBus,
                                            300ms);
        QCOMPARE(colourOf(service.imageWithPreviewOfFileAtPath(first, 32, true)),
                 QColor(Qt::green));
        QCOMPARE(colourOf(service.imageWithPreviewOfFileAtPath(second, 32, true)),
                 QColor(Qt::green));
        QTRY_COMPARE(hung.m_calls, 1); // the second picture did not ask
        QCoreApplication::processEvents();
        QCOMPARE(hung.m_calls, 1);
        bus.unregisterService(FreedesktopThumbnailService::Service);
        bus.unregisterObject(FreedesktopThumbnailService::Path);
    }

    void aPictureGetsItsThumbnailInTheSharedCache()
    {
        const QDBusReply<QStringList> activatable = QDBusConnection::sessionBus().call(
            QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "ListActivatableNames"));
        if (!activatable.value().contains(FreedesktopThumbnailService::Service))
            QSKIP("No thumbnailer on this system (package tumbler)");
        SandboxHome home;
        // The thumbnailer starts in the bus's environment: it must write to the sandbox.
        qDBusRegisterMetaType<QMap<QString, QString>>();
        QDBusMessage update =
            QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "UpdateActivationEnvironment");
        update << QVariant::fromValue(QMap<QString, QString>{
            {"HOME", home.home()}, {"XDG_CACHE_HOME", home.home() + "/.cache"}});
        QCOMPARE(QDBusConnection::sessionBus().call(update).type(), QDBusMessage::ReplyMessage);

        // A name with what GLib escapes and what it leaves.
        const QString photo = home.home() + "/Ferien & Meer #1;2.png";
        QImage image(640, 480, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(photo, "PNG"));

        FreedesktopThumbnailService service(FreedesktopThumbnailService::Thumbnailer::SessionBus,
                                            60s);
        const QImage picture = service.imageWithPreviewOfFileAtPath(photo, 100, false);
        const QString cached = home.home() + "/.cache/thumbnails/normal/" +
                               FreedesktopThumbnailService::cacheFileName(photo);
        QVERIFY2(QFile::exists(cached), qPrintable(cached));
        QImage thumbnail(cached);
        QCOMPARE(thumbnail.text("Thumb::URI"),
                 QString::fromLatin1(FreedesktopThumbnailService::uriOf(photo)));
        QCOMPARE(picture.size(), QSize(100, 75));
        QCOMPARE(colourOf(picture), QColor(Qt::red));

        // Its stamp is taken as the file's: painted over, it is what comes back.
        thumbnail.fill(Qt::blue);
        QVERIFY(thumbnail.save(cached, "PNG"));
        FreedesktopThumbnailService cacheOnly(FreedesktopThumbnailService::Thumbnailer::None);
        QCOMPARE(colourOf(cacheOnly.imageWithPreviewOfFileAtPath(photo, 100, false)),
                 QColor(Qt::blue));
    }
};

QTEST_MAIN(tst_Thumbnailer)
#include "tst_Thumbnailer.moc"
