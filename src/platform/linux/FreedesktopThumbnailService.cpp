#include "FreedesktopThumbnailService.h"

#include "FileNames.h"
#include "PreviewCache.h"

#include <QCryptographicHash>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QImageReader>
#include <QMimeDatabase>
#include <QPainter>
#include <QStandardPaths>
#include <QTimer>

#include <atomic>

#include <sys/stat.h>

namespace {

struct Flavour
{
    QString name;
    int pixels;
};

// Smallest first.
const Flavour kFlavours[] = {
    {QStringLiteral("normal"), 128},
    {QStringLiteral("large"), 256},
    {QStringLiteral("x-large"), 512},
    {QStringLiteral("xx-large"), 1024},
};

QString cacheFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/thumbnails");
}

// The flavours to look in for a picture of size pixels, best first: the
// smallest large enough, then larger ones, then the smaller ones from the largest.
QList<Flavour> flavoursFor(int size, const QStringList &available)
{
    QList<Flavour> larger;
    QList<Flavour> smaller;
    for (const Flavour &flavour : kFlavours) {
        if (!available.contains(flavour.name))
            continue;
        if (flavour.pixels >= size)
            larger.append(flavour);
        else
            smaller.prepend(flavour);
    }
    return larger + smaller;
}

QStringList allFlavours()
{
    QStringList names;
    for (const Flavour &flavour : kFlavours)
        names.append(flavour.name);
    return names;
}

int remainingMs(const QDeadlineTimer &deadline)
{
    return int(std::max<qint64>(deadline.remainingTime(), 1));
}

QImage fitted(const QImage &image, int size)
{
    if (image.width() <= size && image.height() <= size)
        return image;
    return image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// Receives the thumbnailer's signals on the thread that waits for them.
class ThumbnailerRequest : public QObject
{
    Q_OBJECT
public:
    explicit ThumbnailerRequest(QDBusConnection &bus)
    {
        using Thumbnailer = FreedesktopThumbnailService;
        bus.connect(Thumbnailer::Service, Thumbnailer::Path, Thumbnailer::Service,
                    QStringLiteral("Finished"), this, SLOT(onFinished(uint)));
        bus.connect(Thumbnailer::Service, Thumbnailer::Path, Thumbnailer::Service,
                    QStringLiteral("Error"), this, SLOT(onError(uint, QStringList, int, QString)));
    }

    // Waits until the request of handle is over or the deadline has passed;
    // false when the deadline came first. The signals wait as queued calls
    // until the loop runs, so none is missed.
    bool waitFor(uint handle, const QDeadlineTimer &deadline)
    {
        m_handle = handle;
        QTimer timer;
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, &m_loop, &QEventLoop::quit);
        timer.start(remainingMs(deadline));
        m_loop.exec();
        return m_over;
    }

private slots:
    void onFinished(uint handle) { over(handle); }
    // The thumbnailer could not make them; the picture then comes from elsewhere.
    void onError(uint handle, const QStringList &, int, const QString &) { over(handle); }

private:
    void over(uint handle)
    {
        if (handle != m_handle)
            return;
        m_over = true;
        m_loop.quit();
    }

    QEventLoop m_loop;
    uint m_handle = 0;
    bool m_over = false;
};

// A connection of the calling thread's own, closed when it goes.
class PrivateBus
{
public:
    PrivateBus()
        : m_name(QStringLiteral("brevano-thumbnailer-") + QString::number(++s_count)),
          m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name))
    {
    }
    ~PrivateBus() { QDBusConnection::disconnectFromBus(m_name); }
    QDBusConnection &bus() { return m_bus; }

private:
    static inline std::atomic<quint64> s_count{0};
    QString m_name;
    QDBusConnection m_bus;
};

} // namespace

// The file behind path (through links, as it is read).
struct FreedesktopThumbnailService::Stamp
{
    qint64 seconds = 0;
    qint64 nanoseconds = 0;
    qint64 size = 0;
    bool regular = false;

    static Stamp of(const QString &path)
    {
        struct stat status = {};
        if (::stat(FileNames::encode(path).constData(), &status) != 0)
            return {};
        return {qint64(status.st_mtim.tv_sec), qint64(status.st_mtim.tv_nsec),
                qint64(status.st_size), S_ISREG(status.st_mode)};
    }

    // Whether a thumbnail's Thumb::MTime is this time: whole seconds, or (as
    // tumbler writes it) seconds with a fraction, compared to its last digit.
    bool isTime(const QString &text) const
    {
        const qsizetype point = text.indexOf(u'.');
        bool valid = false;
        if (text.left(point).toLongLong(&valid) != seconds || !valid)
            return false;
        if (point < 0)
            return true;
        const QString fraction = text.mid(point + 1, 9);
        const qint64 digits = fraction.toLongLong(&valid);
        qint64 unit = 1;
        for (qsizetype i = fraction.size(); i < 9; ++i)
            unit *= 10;
        return valid && !fraction.isEmpty() && digits == nanoseconds / unit;
    }
};

FreedesktopThumbnailService::FreedesktopThumbnailService(Thumbnailer thumbnailer,
                                                         std::chrono::milliseconds wait)
    : m_thumbnailer(thumbnailer), m_wait(wait)
{
}

QByteArray FreedesktopThumbnailService::uriOf(const QString &path)
{
    // Besides letters, digits and "-._~", GLib leaves these as they are in a path.
    return "file://" + FileNames::encode(QDir::cleanPath(path)).toPercentEncoding("!$&'()*+,=:@/");
}

QString FreedesktopThumbnailService::cacheFileName(const QString &path)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(uriOf(path), QCryptographicHash::Md5).toHex() + ".png");
}

QImage FreedesktopThumbnailService::imageWithPreviewOfFileAtPath(const QString &path, int size,
                                                                 bool asIcon)
{
    const Stamp stamp = Stamp::of(path);
    if (!stamp.regular || size <= 0)
        return {};
    QImage image = cachedThumbnail(path, stamp, size);
    if (image.isNull() && askThumbnailer(path, size))
        image = cachedThumbnail(path, Stamp::of(path), size);
    if (image.isNull())
        image = PreviewCache::decode(path, size);
    return asIcon && !image.isNull() ? iconOf(image, size) : image;
}

QImage FreedesktopThumbnailService::iconOf(const QImage &picture, int size)
{
    const int mount = std::max(1, size / 32);
    const int room = size - 2 * (mount + 1);
    if (room < 1)
        return fitted(picture, size);
    const QImage inner = picture.scaled(room, room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QImage icon(size, size, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    const QRect place(QPoint((size - inner.width()) / 2, (size - inner.height()) / 2),
                      inner.size());
    const QRect frame = place.adjusted(-mount - 1, -mount - 1, mount + 1, mount + 1);
    painter.fillRect(frame, QColor(0, 0, 0, 70)); // the outline
    painter.fillRect(frame.adjusted(1, 1, -1, -1), Qt::white);
    painter.drawImage(place, inner);
    return icon;
}

QImage FreedesktopThumbnailService::cachedThumbnail(const QString &path, const Stamp &stamp,
                                                    int size) const
{
    const QString folder = cacheFolder();
    const QString name = cacheFileName(path);
    for (const Flavour &flavour : flavoursFor(size, allFlavours())) {
        QImageReader reader(folder + u'/' + flavour.name + u'/' + name, "png");
        const QImage thumbnail = reader.read();
        if (thumbnail.isNull())
            continue;
        if (!stamp.isTime(thumbnail.text(QStringLiteral("Thumb::MTime"))))
            continue; // made of an older state of the file
        const QString bytes = thumbnail.text(QStringLiteral("Thumb::Size"));
        if (!bytes.isEmpty() && bytes.toLongLong() != stamp.size)
            continue;
        return fitted(thumbnail, size);
    }
    return {};
}

QStringList FreedesktopThumbnailService::thumbnailerFlavours(QDBusConnection &bus, int timeoutMs)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_flavours.isEmpty())
            return m_flavours;
    }
    // Starts the thumbnailer when the bus only knows how to.
    const QDBusReply<QStringList> reply = bus.call(
        QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("GetFlavors")),
        QDBus::Block, timeoutMs);
    if (!reply.isValid())
        return {};
    const std::lock_guard lock(m_mutex);
    m_flavours = reply.value();
    return m_flavours;
}

bool FreedesktopThumbnailService::thumbnailerResting()
{
    const std::lock_guard lock(m_mutex);
    return !m_restUntil.hasExpired();
}

// A thumbnailer that hangs would cost every row its whole wait, one after the
// other: it is left alone for a while.
void FreedesktopThumbnailService::restThumbnailer()
{
    const std::lock_guard lock(m_mutex);
    m_restUntil.setRemainingTime(kThumbnailerRest);
}

bool FreedesktopThumbnailService::askThumbnailer(const QString &path, int size)
{
    if (m_thumbnailer == Thumbnailer::None || thumbnailerResting())
        return false;
    const QDeadlineTimer deadline(m_wait);
    PrivateBus connection;
    QDBusConnection &bus = connection.bus();
    if (!bus.isConnected())
        return false;
    const QStringList offered = thumbnailerFlavours(bus, remainingMs(deadline));
    if (offered.isEmpty()) {
        restThumbnailer();
        return false;
    }
    const QList<Flavour> flavours = flavoursFor(size, offered);
    if (flavours.isEmpty())
        return false;

    QFile file;
    if (!FileNames::openForReading(file, path))
        return false;
    const QString mimeType =
        QMimeDatabase().mimeTypeForFileNameAndData(FileNames::display(path), &file).name();
    file.close();

    ThumbnailerRequest request(bus);
    QDBusMessage queue =
        QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("Queue"));
    queue << QStringList{QString::fromLatin1(uriOf(path))} << QStringList{mimeType}
          << flavours.first().name << QStringLiteral("default") << 0u;
    const QDBusReply<uint> handle = bus.call(queue, QDBus::Block, remainingMs(deadline));
    if (!handle.isValid()) {
        restThumbnailer();
        return false;
    }
    if (!request.waitFor(handle.value(), deadline)) {
        restThumbnailer();
        // Not wanted any more; the picture is decoded here where it can be.
        bus.call(QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("Dequeue"))
                     << handle.value(),
                 QDBus::Block, 500);
    }
    return true;
}

#include "FreedesktopThumbnailService.moc"
