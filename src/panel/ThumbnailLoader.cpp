#include "ThumbnailLoader.h"

#include "ThumbnailService.h"

namespace {

QString keyOf(const QString &path, int size)
{
    return path + u'\n' + QString::number(size);
}

} // namespace

ThumbnailLoader::ThumbnailLoader(ThumbnailService &service, QObject *parent, int workers)
    : QObject(parent), m_pictures(kMaxKilobytes, [&service](const QString &path, int size) {
          return service.imageWithPreviewOfFileAtPath(path, size, true);
      })
{
    m_workers.setMaxThreadCount(workers);
}

// The workers use the service, the memory and this object (their results are
// posted to it): none may run after this. What they posted goes with the object.
ThumbnailLoader::~ThumbnailLoader()
{
    m_workers.clear();
    m_workers.waitForDone();
}

QImage ThumbnailLoader::thumbnail(const QString &path, int size)
{
    if (std::optional<QImage> picture = m_pictures.cached(path, size))
        return *picture;
    const QString key = keyOf(path, size);
    if (m_asked.contains(key))
        return {};
    m_asked.insert(key);
    m_workers.start([this, generation = m_generation, path, size] {
        const QImage image = m_pictures.preview(path, size);
        QMetaObject::invokeMethod(
            this, [this, generation, path, size, image] { deliver(generation, path, size, image); },
            Qt::QueuedConnection);
    });
    return {};
}

void ThumbnailLoader::clear()
{
    m_workers.clear();
    m_asked.clear();
    ++m_generation;
}

void ThumbnailLoader::deliver(quint64 generation, const QString &path, int size,
                              const QImage &image)
{
    if (generation != m_generation)
        return; // asked before clear: the next look at its row asks again
    m_asked.remove(keyOf(path, size));
    if (!image.isNull())
        emit thumbnailReady(path, size, image);
}
