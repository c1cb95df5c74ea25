#include "ThumbnailLoader.h"

#include "ThumbnailService.h"

#include <algorithm>

namespace {

QString keyOf(const QString &path, int size, ThumbnailLoader::Mode mode)
{
    return path + u'\n' + QString::number(size) +
           (mode == ThumbnailLoader::Mode::Icon ? u'i' : u'p');
}

} // namespace

ThumbnailLoader::ThumbnailLoader(ThumbnailService &service, QObject *parent, int workers)
    : QObject(parent), m_icons(kMaxKilobytes,
                               [&service](const QString &path, int size) {
                                   return service.imageWithPreviewOfFileAtPath(path, size, true);
                               }),
      m_pictures(kMaxPictureKilobytes,
                 [&service](const QString &path, int size) {
                     return service.imageWithPreviewOfFileAtPath(path, size, false);
                 }),
      m_maxWorkers(std::size_t(std::max(workers, 1)))
{
}

// The workers use the service, the memory and this object: none may run after
// this. A wake-up they posted goes with the object.
ThumbnailLoader::~ThumbnailLoader()
{
    stop();
    for (std::thread &worker : m_workers)
        worker.join();
}

void ThumbnailLoader::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_jobs.clear();
    }
    m_wake.notify_all();
}

QImage ThumbnailLoader::thumbnail(const QString &path, int size, Mode mode)
{
    if (std::optional<QImage> picture = cacheFor(mode).cached(path, size))
        return *picture;
    const QString key = keyOf(path, size, mode);
    if (m_asked.contains(key)) {
        // Painted again while it waits: it goes ahead of those painted since.
        const std::lock_guard lock(m_mutex);
        const auto waiting = std::find_if(m_jobs.begin(), m_jobs.end(), [&](const Job &job) {
            return job.size == size && job.mode == mode && job.path == path;
        });
        if (waiting != m_jobs.end() && waiting + 1 != m_jobs.end()) {
            Job job = std::move(*waiting);
            m_jobs.erase(waiting);
            m_jobs.push_back(std::move(job));
        }
        return {};
    }
    m_asked.insert(key);
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back({m_generation, path, size, mode, {}});
        // Threads start as work comes, up to the bound, and stay until the end.
        if (m_workers.size() < m_maxWorkers)
            m_workers.emplace_back([this] { work(); });
    }
    m_wake.notify_one();
    return {};
}

PreviewCache &ThumbnailLoader::cacheFor(Mode mode)
{
    return mode == Mode::Icon ? m_icons : m_pictures;
}

void ThumbnailLoader::clear()
{
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.clear();
    }
    m_asked.clear();
    ++m_generation;
}

void ThumbnailLoader::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
        if (m_stopping)
            return;
        // The last asked first: the rows in sight now, not those scrolled past.
        Job job = std::move(m_jobs.back());
        m_jobs.pop_back();
        lock.unlock();
        job.image = cacheFor(job.mode).preview(job.path, job.size);
        lock.lock();
        // The results travel under the lock; the queued call only wakes the main thread.
        m_results.push_back(std::move(job));
        if (m_results.size() == 1)
            QMetaObject::invokeMethod(this, "takeResults", Qt::QueuedConnection);
    }
}

void ThumbnailLoader::takeResults()
{
    std::vector<Job> results;
    {
        const std::lock_guard lock(m_mutex);
        results.swap(m_results);
    }
    for (const Job &result : results) {
        if (result.generation != m_generation)
            continue; // asked before clear: the next look at its row asks again
        m_asked.remove(keyOf(result.path, result.size, result.mode));
        if (!result.image.isNull())
            emit thumbnailReady(result.path, result.size, result.mode, result.image);
    }
}
