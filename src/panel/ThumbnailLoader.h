#pragma once

#include "PreviewCache.h"

#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

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
    static constexpr int kMaxPictureKilobytes = 8 * 1024;
    // Rows show pictures framed as icons; a preview shows the bare picture.
    enum class Mode
    {
        Icon,
        Picture
    };
    Q_ENUM(Mode)

    explicit ThumbnailLoader(ThumbnailService &service, QObject *parent = nullptr,
                             int workers = kWorkers);
    // Stops, and waits for the pictures being made (the service bounds how
    // long one takes).
    ~ThumbnailLoader() override;
    // Takes no more work: the pictures asked for and not started are
    // forgotten, those being made are finished and not announced.
    void stop();

    // The picture when it is in memory; otherwise a null image, and the picture
    // is made and announced by thumbnailReady (or nothing, if the file has none).
    // Asking again while it is being made starts nothing more. The pictures
    // asked for last are made first (the rows painted last are those in sight),
    // and asking again for a waiting one puts it first.
    QImage thumbnail(const QString &path, int size, Mode mode = Mode::Icon);
    // Forgets the pictures asked for and not made yet (their rows are gone);
    // those being made are kept in memory but not announced.
    void clear();

signals:
    void thumbnailReady(const QString &path, int size, ThumbnailLoader::Mode mode,
                        const QImage &image);

private slots:
    void takeResults();

private:
    struct Job
    {
        quint64 generation;
        QString path;
        int size;
        Mode mode;
        QImage image; // once made
    };
    void work();
    PreviewCache &cacheFor(Mode mode);

    PreviewCache m_icons;
    PreviewCache m_pictures;
    const std::size_t m_maxWorkers;
    QSet<QString> m_asked; // path and size of the pictures being made
    quint64 m_generation = 0;

    // Shared with the workers: what to make and what they made.
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;
    std::vector<Job> m_results;
    bool m_stopping = false;
    std::vector<std::thread> m_workers;
};
