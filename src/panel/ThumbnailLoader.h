#pragma once

#include "PreviewCache.h"

#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>
#include <QThreadPool>

class ThumbnailService;

// The panel's thumbnails: made by the service on worker threads, kept in
// memory (bounded, keyed by path, size and modification time) and handed to the
// main thread. A caller shows the type icon until thumbnailReady brings the picture.
// Main thread only, but for the workers it starts.
class ThumbnailLoader : public QObject
{
    Q_OBJECT
public:
    static constexpr int kWorkers = 2;
    static constexpr int kMaxKilobytes = 48 * 1024;

    explicit ThumbnailLoader(ThumbnailService &service, QObject *parent = nullptr,
                             int workers = kWorkers);
    // Waits for the pictures being made (the service bounds how long one takes).
    ~ThumbnailLoader() override;

    // The picture when it is in memory; otherwise a null image, and the picture
    // is made and announced by thumbnailReady (or nothing, if the file has none).
    // Asking again while it is being made starts nothing more.
    QImage thumbnail(const QString &path, int size);
    // Forgets the pictures asked for and not made yet (their rows are gone);
    // those being made are kept in memory but not announced.
    void clear();

signals:
    void thumbnailReady(const QString &path, int size, const QImage &image);

private:
    void deliver(quint64 generation, const QString &path, int size, const QImage &image);

    PreviewCache m_pictures;
    QThreadPool m_workers;
    QSet<QString> m_asked; // path and size of the pictures being made
    quint64 m_generation = 0;
};
