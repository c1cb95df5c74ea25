#pragma once

#include <QImage>
#include <QObject>
#include <QString>

class ThumbnailService;

// The panel's thumbnails: made by the service on worker threads, kept in
// memory (bounded, keyed by path, size and modification time) and handed to the
// main thread. A caller shows the type icon until thumbnailReady brings the picture.
class ThumbnailLoader : public QObject
{
    Q_OBJECT
public:
    explicit ThumbnailLoader(ThumbnailService &service, QObject *parent = nullptr);
    ~ThumbnailLoader() override;

    // The picture when it is in memory; otherwise a null image, and the picture
    // is made and announced by thumbnailReady (or nothing, if the file has none).
    QImage thumbnail(const QString &path, int size);

signals:
    void thumbnailReady(const QString &path, int size, const QImage &image);
};
