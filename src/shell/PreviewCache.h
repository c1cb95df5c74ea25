#pragma once

#include <QCache>
#include <QDateTime>
#include <QImage>
#include <QString>

#include <functional>
#include <mutex>

// Small pictures of image files for menu rows. Each is decoded at the size it is
// drawn (the reader scales while it decodes) and kept, within a memory bound,
// while the file's modification time stays the same. Safe to use from any
// thread; meant for workers, as decoding takes long.
class PreviewCache
{
public:
    static constexpr int kMaxKilobytes = 16 * 1024;
    // Told of each decode, on the thread that decodes.
    using DecodeObserver = std::function<void(const QString &path)>;

    explicit PreviewCache(int maxKilobytes = kMaxKilobytes) { m_cache.setMaxCost(maxKilobytes); }

    // The picture scaled to fit pixels x pixels; null for a file that is not a
    // readable image.
    QImage preview(const QString &path, int pixels);
    void setDecodeObserver(DecodeObserver observer);

private:
    struct Entry
    {
        QDateTime modified;
        QImage image;
    };
    QImage decode(const QString &path, int pixels);

    std::mutex m_mutex;
    QCache<QString, Entry> m_cache;
    DecodeObserver m_observer;
};
