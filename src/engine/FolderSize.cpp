#include "FolderSize.h"

#include "FileNames.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

// The folders still to read, shared by the walkers; the walk ends when none is
// left and no walker is reading one (which could add more).
class FolderQueue
{
public:
    explicit FolderQueue(const QByteArray &root) { m_folders.push_back(root); }

    std::optional<QByteArray> take()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_folders.empty() || m_busy == 0; });
        if (m_folders.empty())
            return std::nullopt;
        ++m_busy;
        QByteArray folder = std::move(m_folders.front());
        m_folders.pop_front();
        return folder;
    }
    void done(std::vector<QByteArray> &found)
    {
        {
            std::lock_guard lock(m_mutex);
            for (QByteArray &folder : found)
                m_folders.push_back(std::move(folder));
            --m_busy;
        }
        found.clear();
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_folders;
    int m_busy = 0;
};

} // namespace

quint64 FolderSize::estimateNow(const QString &path)
{
    const FolderSize realTime([] { return QDateTime::currentDateTimeUtc(); });
    return realTime.getFolderSize(path, QDateTime::currentDateTimeUtc());
}

quint64 FolderSize::getFolderSize(const QString &path, const std::optional<QDateTime> &start) const
{
    struct stat info;
    const QByteArray bytes = FileNames::encode(path);
    // The folder asked about is followed should it be a link (a Shadow Desktop
    // configured as one); nothing inside it ever is.
    if (::stat(bytes.constData(), &info) != 0)
        return 0;
    if (!S_ISDIR(info.st_mode))
        return quint64(info.st_size);
    bool aborted = false;
    quint64 entries = 0;
    const quint64 size = walk(bytes, start, aborted, entries);
    return aborted ? 0 : size;
}

quint64 FolderSize::entriesWithinLimit(const QString &path) const
{
    bool aborted = false;
    quint64 entries = 0;
    walk(FileNames::encode(path), m_now(), aborted, entries);
    return entries;
}

// Every processor core reads folders at once: the work is one system call per
// entry, and that is all a single walker could ever do. The time limit is
// looked at once per folder, as the folder is entered.
quint64 FolderSize::walk(const QByteArray &root, const std::optional<QDateTime> &start,
                         bool &aborted, quint64 &entries) const
{
    FolderQueue queue(root);
    std::atomic<quint64> total{0};
    std::atomic<quint64> counted{0};
    std::atomic<bool> gaveUp{false};
    const auto walker = [&] {
        quint64 size = 0;
        quint64 seen = 0;
        std::vector<QByteArray> found;
        while (const auto folder = queue.take()) {
            if (gaveUp || (start && start->msecsTo(m_now()) > kTimeLimitMs)) {
                gaveUp = true;
                queue.done(found);
                continue;
            }
            const int fd = ::open(folder->constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC |
                                                           (*folder == root ? 0 : O_NOFOLLOW));
            DIR *directory = fd < 0 ? nullptr : ::fdopendir(fd);
            if (!directory && fd >= 0)
                ::close(fd);
            while (directory) {
                const dirent *entry = ::readdir(directory);
                if (!entry)
                    break;
                const char *name = entry->d_name;
                if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
                    continue;
                struct stat info;
                if (::fstatat(fd, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
                ++seen;
                if (S_ISDIR(info.st_mode))
                    found.push_back(*folder + '/' + name);
                else
                    size += quint64(info.st_size);
            }
            if (directory)
                ::closedir(directory);
            queue.done(found);
        }
        total += size;
        counted += seen;
    };
    const unsigned helpers = std::clamp(std::thread::hardware_concurrency(), 1u, 8u) - 1;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < helpers; ++i)
        threads.emplace_back(walker);
    walker();
    for (std::thread &thread : threads)
        thread.join();
    aborted = gaveUp;
    entries = counted;
    return total;
}
