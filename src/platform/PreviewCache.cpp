#include "PreviewCache.h"

#include "FileNames.h"

#include <QFile>
#include <QImageReader>

#include <sys/stat.h>

namespace {

// The picture is read through a link, so the date is the target's; a missing
// file has none (-1), and a file that appears later no longer matches.
qint64 modificationOf(const QString &path)
{
    struct stat status = {};
    if (::stat(FileNames::encode(path).constData(), &status) != 0)
        return -1;
    return qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
}

} // namespace

PreviewCache::PreviewCache(int maxKilobytes, Maker maker) : m_maker(std::move(maker))
{
    m_cache.setMaxCost(maxKilobytes);
}

QString PreviewCache::keyOf(const QString &path, int pixels)
{
    return path + u'\n' + QString::number(pixels);
}

std::optional<QImage> PreviewCache::cached(const QString &path, int pixels)
{
    const qint64 modified = modificationOf(path);
    const std::lock_guard lock(m_mutex);
    if (const Entry *entry = m_cache.object(keyOf(path, pixels));
        entry && entry->modified == modified)
        return entry->image;
    return std::nullopt;
}

QImage PreviewCache::preview(const QString &path, int pixels)
{
    const qint64 modified = modificationOf(path);
    const QString key = keyOf(path, pixels);
    DecodeObserver observer;
    {
        const std::lock_guard lock(m_mutex);
        if (const Entry *entry = m_cache.object(key); entry && entry->modified == modified)
            return entry->image;
        observer = m_observer;
    }
    if (observer)
        observer(path);
    QImage image = m_maker(path, pixels);
    const std::lock_guard lock(m_mutex);
    m_cache.insert(key, new Entry{modified, image}, int(image.sizeInBytes() / 1024) + 1);
    return image;
}

void PreviewCache::setDecodeObserver(DecodeObserver observer)
{
    const std::lock_guard lock(m_mutex);
    m_observer = std::move(observer);
}

QImage PreviewCache::decode(const QString &path, int pixels)
{
    // Opened by the name's bytes: QImageReader would not find a name that is not UTF-8.
    QFile file;
    if (!FileNames::openForReading(file, path))
        return {};
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    QSize size = reader.size();
    if (size.isValid()) {
        size.scale(pixels, pixels, Qt::KeepAspectRatio);
        reader.setScaledSize(size.expandedTo(QSize(1, 1)));
    }
    QImage image = reader.read();
    if (!image.isNull() && (image.width() > pixels || image.height() > pixels))
        image = image.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}
