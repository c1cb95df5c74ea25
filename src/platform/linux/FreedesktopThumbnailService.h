#pragma once

#include "ThumbnailService.h"

#include <QDeadlineTimer>

#include <QByteArray>
#include <QStringList>

#include <chrono>
#include <mutex>

class QDBusConnection;

// Thumbnails as the freedesktop thumbnail specification keeps them: PNG files
// in $XDG_CACHE_HOME/thumbnails/{normal,large,x-large,xx-large} (128 to 1024
// pixels), named by the MD5 of the file's URI, valid while their Thumb::MTime
// (and Thumb::Size, when written) still match the file. The smallest flavour
// that is large enough serves, else the largest there is. A missing one is
// asked of the desktop's thumbnailer (org.freedesktop.thumbnails.Thumbnailer1,
// tumbler) when the session bus has one, waiting a few seconds at most;
// after that an image file is decoded at the size asked, and anything else has
// no picture.
//
// Every call blocks: it is meant for workers, and any number of them may ask
// at once. Each request to the thumbnailer uses a connection of its own, made
// and closed on the calling thread, and waits for the thumbnailer's signals in
// a local event loop there: the connection's messages are handled on QtDBus's
// own thread and reach the waiting thread as queued calls, the thumbnailer's
// answers (sent to the connection that asked) reach no one else, and nothing
// of the main thread's connection is touched.
//
// In icon mode the picture is framed as a file manager shows a thumbnail: on a
// white mount with a fine outline, centred in a clear square of the size asked.
// Without it, the bare picture at its own proportions.
class FreedesktopThumbnailService : public ThumbnailService
{
public:
    enum class Thumbnailer
    {
        SessionBus, // ask the session bus's thumbnailer for missing thumbnails
        None,       // use the cache and decode images only
    };
    static constexpr std::chrono::milliseconds kThumbnailerWait{5000};
    // After a thumbnailer failed to answer, or was not there, how long the
    // service leaves it alone and decodes images itself.
    static constexpr std::chrono::seconds kThumbnailerRest{120};

    explicit FreedesktopThumbnailService(Thumbnailer thumbnailer = Thumbnailer::SessionBus,
                                         std::chrono::milliseconds wait = kThumbnailerWait);

    QImage imageWithPreviewOfFileAtPath(const QString &path, int size, bool asIcon) override;

    // The file URI of an absolute path, its bytes escaped as GLib escapes them
    // (the thumbnailers that fill the cache name their files by this form).
    static QByteArray uriOf(const QString &path);
    // The name of path's thumbnail in each flavour's folder: the MD5 of its URI
    // in hexadecimal, then ".png".
    static QString cacheFileName(const QString &path);
    // A picture framed as an icon, in a square of size pixels.
    static QImage iconOf(const QImage &picture, int size);

    static inline const QString Service = QStringLiteral("org.freedesktop.thumbnails.Thumbnailer1");
    static inline const QString Path = QStringLiteral("/org/freedesktop/thumbnails/Thumbnailer1");

private:
    struct Stamp;
    QImage cachedThumbnail(const QString &path, const Stamp &stamp, int size) const;
    // Asks the thumbnailer for path's thumbnail for size and waits until it is
    // done or the wait is over; false when there is no thumbnailer.
    bool askThumbnailer(const QString &path, int size);
    QStringList thumbnailerFlavours(QDBusConnection &bus, int timeoutMs);
    bool thumbnailerResting();
    void restThumbnailer();

    const Thumbnailer m_thumbnailer;
    const std::chrono::milliseconds m_wait;
    std::mutex m_mutex;
    QStringList m_flavours; // the thumbnailer's, asked once it answers
    QDeadlineTimer m_restUntil{0};
};
