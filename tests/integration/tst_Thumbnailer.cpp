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

// The desktop's own thumbnailer (tumbler), started by a private session bus.
class tst_Thumbnailer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        QVERIFY(bus.isConnected());
        const QDBusReply<QStringList> activatable = bus.call(
            QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "ListActivatableNames"));
        if (!activatable.value().contains(FreedesktopThumbnailService::Service))
            QSKIP("No thumbnailer on this system (package tumbler)");
    }

    void aPictureGetsItsThumbnailInTheSharedCache()
    {
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
        const QImage picture = service.imageWithPreviewOfFileAtPath(photo, 100, true);
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
        QCOMPARE(colourOf(cacheOnly.imageWithPreviewOfFileAtPath(photo, 100, true)),
                 QColor(Qt::blue));
    }
};

QTEST_MAIN(tst_Thumbnailer)
#include "tst_Thumbnailer.moc"
