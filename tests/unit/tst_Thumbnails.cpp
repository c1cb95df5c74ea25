#include "FakeThumbnailService.h"
#include "FileNames.h"
#include "FreedesktopThumbnailService.h"
#include "SandboxHome.h"
#include "ThumbnailLoader.h"

#include <QImageWriter>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// By the name's bytes, which need not be UTF-8.
QString writeImage(const QString &path, QSize size, const QColor &colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    const int fd =
        ::open(FileNames::encode(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    QFile file;
    if (fd < 0 || !file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle) ||
        !image.save(&file, "PNG"))
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

// What a thumbnailer leaves in the cache for path: a picture of colour in the
// flavour's size, stamped with the modification time and (unless empty) size given.
void writeThumbnail(const QString &path, const QString &flavour, int pixels, const QColor &colour,
                    const QString &modified, const QString &bytes = {})
{
    QImage thumbnail(pixels, pixels * 2 / 3, QImage::Format_RGB32);
    thumbnail.fill(colour);
    thumbnail.setText("Thumb::URI", FreedesktopThumbnailService::uriOf(path));
    thumbnail.setText("Thumb::MTime", modified);
    if (!bytes.isEmpty())
        thumbnail.setText("Thumb::Size", bytes);
    const QString folder = qEnvironmentVariable("XDG_CACHE_HOME") + "/thumbnails/" + flavour;
    QDir().mkpath(folder);
    QImageWriter writer(folder + '/' + FreedesktopThumbnailService::cacheFileName(path), "png");
    QVERIFY(writer.write(thumbnail));
}

QColor colourOf(const QImage &image)
{
    return image.isNull() ? QColor() : image.pixelColor(image.rect().center());
}

} // namespace

class tst_Thumbnails : public QObject
{
    Q_OBJECT

private slots:
    void cacheNamesAreTheDesktopsOwn()
    {
        using Service = FreedesktopThumbnailService;
        QCOMPARE(Service::cacheFileName("/home/jens/photos/me.png"),
                 "c6ee772d9e49320e97ec29a7eb5b1697.png");
        // Escaped as GLib escapes paths, by which tumbler and the file managers name them.
        const QString odd = "/home/jens/Bilder/Ferien & Meer (2)/Strand;Abend #1.jpg";
        QCOMPARE(Service::uriOf(odd),
                 "file:///home/jens/Bilder/Ferien%20&%20Meer%20(2)/Strand%3BAbend%20%231.jpg");
        QCOMPARE(Service::cacheFileName(odd), "30b83e080e381b57fd55f432e5417d48.png");
        QCOMPARE(Service::cacheFileName("/home/jens/Café/ü.png"),
                 "d8f47285c3937892e0fb63fd5526301c.png");
        // A name that is not UTF-8 by its bytes.
        QCOMPARE(Service::cacheFileName(FileNames::decode("/home/jens/\xff\xfe.png")),
                 "33a64533488cfda6e4bf67746881ed2d.png");
    }

    // The cache serves while its stamp matches the file, the smallest flavour
    // large enough first; otherwise the image itself is decoded.
    void validCachedThumbnailsServeAndStaleOnesDoNot()
    {
        SandboxHome home;
        FreedesktopThumbnailService service(FreedesktopThumbnailService::Thumbnailer::None);
        const QString photo = writeImage(home.home() + "/photo.png", {600, 400}, Qt::red);
        const struct timespec times[2] = {{1700000000, 90892600}, {1700000000, 90892600}};
        QCOMPARE(::utimensat(AT_FDCWD, FileNames::encode(photo).constData(), times, 0), 0);
        const QString size = QString::number(QFileInfo(photo).size());
        // As tumbler writes it (microseconds, no size), and in whole seconds with the size.
        writeThumbnail(photo, "normal", 128, Qt::blue, "1700000000.090892");
        writeThumbnail(photo, "large", 256, Qt::green, "1700000000", size);

        QImage picture = service.imageWithPreviewOfFileAtPath(photo, 100, false);
        QCOMPARE(colourOf(picture), QColor(Qt::blue));
        QCOMPARE(picture.size(), QSize(100, 66));
        QCOMPARE(colourOf(service.imageWithPreviewOfFileAtPath(photo, 200, true)),
                 QColor(Qt::green));
        // Larger than any: the largest there is, as it is.
        picture = service.imageWithPreviewOfFileAtPath(photo, 1000, false);
        QCOMPARE(colourOf(picture), QColor(Qt::green));
        QCOMPARE(picture.width(), 256);

        // Made of an older state of the file: the next best serves.
        writeThumbnail(photo, "large", 256, Qt::green, "1699999999", size);
        QCOMPARE(colourOf(service.imageWithPreviewOfFileAtPath(photo, 200, true)),
                 QColor(Qt::blue));
        // A microsecond off is older too; then the image itself is read.
        writeThumbnail(photo, "normal", 128, Qt::blue, "1700000000.090891");
        picture = service.imageWithPreviewOfFileAtPath(photo, 200, false);
        QCOMPARE(colourOf(picture), QColor(Qt::red));
        QCOMPARE(picture.size(), QSize(200, 133));
        // A size that differs says so too.
        writeThumbnail(photo, "large", 256, Qt::green, "1700000000", size + "1");
        QCOMPARE(colourOf(service.imageWithPreviewOfFileAtPath(photo, 200, true)), QColor(Qt::red));
    }

    void imagesAreDecodedAtTheSizeAskedAndOtherFilesHaveNone()
    {
        SandboxHome home;
        FreedesktopThumbnailService service(FreedesktopThumbnailService::Thumbnailer::None);
        const QString wide = writeImage(home.home() + "/wide.png", {400, 200}, Qt::red);
        QImage picture = service.imageWithPreviewOfFileAtPath(wide, 100, false);
        QCOMPARE(picture.size(), QSize(100, 50));
        QCOMPARE(colourOf(picture), QColor(Qt::red));
        // As an icon: framed in a clear square, the picture in its middle.
        const QImage icon = service.imageWithPreviewOfFileAtPath(wide, 100, true);
        QCOMPARE(icon.size(), QSize(100, 100));
        QCOMPARE(colourOf(icon), QColor(Qt::red));
        QCOMPARE(icon.pixelColor(50, 5).alpha(), 0);
        QCOMPARE(icon.pixelColor(50, 24), QColor(Qt::white));
        const QString unnamed = writeImage(
            FileNames::decode(QFile::encodeName(home.home()) + "/\xff.png"), {40, 40}, Qt::green);
        QCOMPARE(colourOf(service.imageWithPreviewOfFileAtPath(unnamed, 100, true)),
                 QColor(Qt::green));
        ::unlink(FileNames::encode(unnamed).constData()); // QTemporaryDir could not

        // The panel shows these with their type icons.
        const QString notes = home.write("notes.txt", "not a picture");
        QVERIFY(service.imageWithPreviewOfFileAtPath(notes, 100, true).isNull());
        QDir().mkpath(home.home() + "/folder.png");
        QVERIFY(
            service.imageWithPreviewOfFileAtPath(home.home() + "/folder.png", 100, true).isNull());
        QVERIFY(
            service.imageWithPreviewOfFileAtPath(home.home() + "/gone.png", 100, true).isNull());
    }

    void theLoaderMakesEachPictureOnceOffTheMainThread()
    {
        SandboxHome home;
        const QString photo = home.write("photo.png", "p");
        FakeThumbnailService service;
        service.setOpen(false);
        ThumbnailLoader loader(service);
        QSignalSpy ready(&loader, &ThumbnailLoader::thumbnailReady);
        bool announcedOnMainThread = true;
        connect(&loader, &ThumbnailLoader::thumbnailReady, this,
                [&] { announcedOnMainThread &= QThread::currentThread() == thread(); });

        QVERIFY(loader.thumbnail(photo, 44).isNull());
        QVERIFY(loader.thumbnail(photo, 44).isNull()); // asked again while being made
        QVERIFY(loader.thumbnail(photo, 88).isNull()); // another size is another picture
        // and so is the bare picture, which a preview shows
        QVERIFY(loader.thumbnail(photo, 44, ThumbnailLoader::Mode::Picture).isNull());
        service.setOpen(true);
        QTRY_COMPARE(ready.count(), 3);
        QVERIFY(announcedOnMainThread);
        QCOMPARE(service.calls().size(), 3);
        QSet<QString> asked;
        for (const FakeThumbnailService::Call &call : service.calls()) {
            QVERIFY(!call.onMainThread);
            asked.insert(QString::number(call.size) + (call.asIcon ? " icon" : " picture"));
        }
        QCOMPARE(asked, (QSet<QString>{"44 icon", "88 icon", "44 picture"}));
        for (const QList<QVariant> &arguments : ready) {
            QCOMPARE(arguments.at(0).toString(), photo);
            QCOMPARE(arguments.at(3).value<QImage>().width(), arguments.at(1).toInt());
        }
        // From memory now.
        QCOMPARE(colourOf(loader.thumbnail(photo, 44)), QColor(Qt::red));
        QCOMPARE(colourOf(loader.thumbnail(photo, 44, ThumbnailLoader::Mode::Picture)),
                 QColor(Qt::red));
        QCOMPARE(service.calls().size(), 3);
    }

    void filesWithoutPicturesAndClearedRequestsAreNotAnnounced()
    {
        SandboxHome home;
        const QString notes = home.write("notes.txt", "x");
        const QString b = home.write("b.png", "x");
        const QString c = home.write("c.png", "x");
        const QString d = home.write("d.png", "x");
        const QString e = home.write("e.png", "x");
        const QString f = home.write("f.png", "x");
        FakeThumbnailService service;
        // One worker, each asked once the last is being made: the calls come
        // in the order asked.
        ThumbnailLoader loader(service, nullptr, 1);
        QSignalSpy ready(&loader, &ThumbnailLoader::thumbnailReady);

        loader.thumbnail(notes, 44);
        QVERIFY(service.waitForCalls(1));
        loader.thumbnail(b, 44);
        QVERIFY(ready.wait());
        QCOMPARE(ready.takeFirst().at(0).toString(), b);
        // Known to have none: not asked again (what is asked next would wait
        // behind it), until the file changes.
        QVERIFY(loader.thumbnail(notes, 44).isNull());
        loader.thumbnail(f, 44);
        QVERIFY(ready.wait());
        QCOMPARE(ready.takeFirst().at(0).toString(), f);
        QCOMPARE(service.calls().size(), 3);
        const struct timespec times[2] = {{1000, 0}, {1000, 0}};
        QCOMPARE(::utimensat(AT_FDCWD, FileNames::encode(notes).constData(), times, 0), 0);
        loader.thumbnail(notes, 44);
        QVERIFY(service.waitForCalls(4));

        // Cleared while c is being made and d waits: c is kept but not
        // announced, d is not made.
        service.setOpen(false);
        loader.thumbnail(c, 44);
        QVERIFY(service.waitForCalls(5));
        loader.thumbnail(d, 44);
        loader.clear();
        loader.thumbnail(e, 44);
        service.setOpen(true);
        QVERIFY(ready.wait());
        QCOMPARE(ready.takeFirst().at(0).toString(), e);
        QVERIFY(ready.isEmpty());
        QStringList asked;
        for (const FakeThumbnailService::Call &call : service.calls())
            asked << call.path;
        QCOMPARE(asked, (QStringList{notes, b, f, notes, c, e}));
        QCOMPARE(colourOf(loader.thumbnail(c, 44)), QColor(Qt::red));
    }

    // The rows painted last are those in sight: their pictures come before
    // those of rows scrolled past, and a row painted again goes first.
    void theRowsAskedForLastAreMadeFirst()
    {
        SandboxHome home;
        const QString a = home.write("a.png", "x");
        const QString b = home.write("b.png", "x");
        const QString c = home.write("c.png", "x");
        const QString d = home.write("d.png", "x");
        FakeThumbnailService service;
        service.setOpen(false);
        ThumbnailLoader loader(service, nullptr, 1);
        QSignalSpy ready(&loader, &ThumbnailLoader::thumbnailReady);
        loader.thumbnail(a, 44);
        QVERIFY(service.waitForCalls(1)); // the one worker is busy with a
        loader.thumbnail(b, 44);
        loader.thumbnail(c, 44);
        loader.thumbnail(d, 44);
        loader.thumbnail(b, 44);
        service.setOpen(true);
        QTRY_COMPARE(ready.count(), 4);
        QStringList made;
        for (const FakeThumbnailService::Call &call : service.calls())
            made << call.path;
        QCOMPARE(made, (QStringList{a, b, d, c}));
    }

    void theLoaderGoesOnlyOnceItsWorkersAreDone()
    {
        SandboxHome home;
        FakeThumbnailService service;
        service.setOpen(false);
        auto loader = std::make_unique<ThumbnailLoader>(service);
        for (const char *name : {"a.png", "b.png", "c.png", "d.png"})
            loader->thumbnail(home.write(name, "x"), 44);
        QVERIFY(service.waitForCalls(ThumbnailLoader::kWorkers));
        loader->stop();
        service.setOpen(true); // its workers go on only once it stopped
        loader.reset();
        // Those being made were finished before it went; the others never started.
        QCOMPARE(service.returned(), ThumbnailLoader::kWorkers);
        QCOMPARE(service.calls().size(), ThumbnailLoader::kWorkers);
        QCoreApplication::processEvents(); // nothing posted to it arrives
    }
};

QTEST_MAIN(tst_Thumbnails)
#include "tst_Thumbnails.moc"
