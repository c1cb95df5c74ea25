#include "PreviewCache.h"

#include "FileNames.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

QImage PreviewCache::preview(const QString &path, int pixels)
{
    const QString key = path + u'\n' + QString::number(pixels);
    // The picture is read through a link, so the date is the target's.
    const QDateTime modified = QFileInfo(path).lastModified();
    {
        const std::lock_guard lock(m_mutex);
        if (const Entry *entry = m_cache.object(key); entry && entry->modified == modified)
            return entry->image;
    }
    QImage image = decode(path, pixels);
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
    DecodeObserver observer;
    {
        const std::lock_guard lock(m_mutex);
        observer = m_observer;
    }
    if (observer)
        observer(path);
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
