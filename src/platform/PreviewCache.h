#pragma once

#include <QCache>
#include <QImage>
#include <QString>

#include <functional>
#include <mutex>
#include <optional>

// Small pictures of files, kept within a memory bound while the file's
// modification time stays the same. By default each picture is the file itself
// decoded at the size it is drawn (the reader scales while it decodes); another
// maker (a thumbnail service, say) may be given instead. Safe to use from any
// thread; preview is meant for workers, as making a picture takes long.
class PreviewCache
{
public:
    static constexpr int kMaxKilobytes = 16 * 1024;
    // Makes the picture of path fitting pixels x pixels, or a null image.
    using Maker = std::function<QImage(const QString &path, int pixels)>;
    // Told of each picture made, on the thread that makes it.
    using DecodeObserver = std::function<void(const QString &path)>;

    explicit PreviewCache(int maxKilobytes = kMaxKilobytes, Maker maker = decode);

    // The picture scaled to fit pixels x pixels, made now unless it is kept;
    // null for a file that has none.
    QImage preview(const QString &path, int pixels);
    // The kept picture (null when the file has none), without making one: no
    // value when it was never made or the file has changed since.
    std::optional<QImage> cached(const QString &path, int pixels);
    void setDecodeObserver(DecodeObserver observer);

    // An image file's picture: decoded at the size that fits pixels x pixels,
    // keeping its proportions; null for what is not a readable image.
    static QImage decode(const QString &path, int pixels);

private:
    struct Entry
    {
        qint64 modified;
        QImage image;
    };
    static QString keyOf(const QString &path, int pixels);

    const Maker m_maker;
    std::mutex m_mutex;
    QCache<QString, Entry> m_cache;
    DecodeObserver m_observer;
};
