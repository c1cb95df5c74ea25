#include "OrderedFolderWalk.h"

#include "DirectoryListing.h"

#include <algorithm>
#include <system_error>

OrderedFolderWalk::OrderedFolderWalk(Classify classify, const std::atomic<bool> &stop,
                                     std::atomic<int> &liveThreads)
    : m_classify(std::move(classify)), m_stop(stop), m_liveThreads(liveThreads)
{
}

OrderedFolderWalk::~OrderedFolderWalk()
{
    endHelpers();
}

int OrderedFolderWalk::helperThreadsFor(int processors)
{
    // Beyond a few readers the folders' own locks, not the processors, set the pace.
    return std::clamp(processors, 1, 8) - 1;
}

// The walking thread reads the root itself; helpers start only when it holds
// folders to read ahead, so a tree without subfolders costs no thread.
void OrderedFolderWalk::run(const QString &root, const Visit &visit, int helperThreads)
{
    m_readAhead = helperThreads > 0;
    Folder top(root);
    top.state = Folder::State::Reading;
    read(top, true);
    if (m_readAhead && !m_unread.empty())
        startHelpers(helperThreads);
    walk(top, visit);
    endHelpers();
}

// In the order of a recursive walk.
bool OrderedFolderWalk::walk(Folder &folder, const Visit &visit)
{
    if (!obtain(folder))
        return false;
    for (Item &item : folder.items) {
        if (m_stop)
            return false;
        if (item.folder) {
            const std::shared_ptr<Folder> subfolder = std::move(item.folder);
            if (!walk(*subfolder, visit))
                return false;
        } else if (!visit(std::move(item.file))) {
            return false;
        }
    }
    folder.items = {};
    return true;
}

// Sees to it that folder is read: here and now if nobody has begun it. While a
// helper reads it, the walking thread reads other folders rather than idle (a
// helper may lose its processor for a while). False once the walk is stopped.
bool OrderedFolderWalk::obtain(Folder &folder)
{
    std::unique_lock lock(m_lock);
    while (folder.state != Folder::State::Read) {
        if (m_stop)
            return false;
        std::shared_ptr<Folder> other;
        Folder *next = &folder;
        if (folder.state == Folder::State::Unread) {
            folder.state = Folder::State::Reading;
        } else if ((other = claimNext())) {
            next = other.get();
        } else {
            m_folderRead.wait(lock);
            continue;
        }
        lock.unlock();
        read(*next, false);
        lock.lock();
    }
    return true;
}

// With m_lock held: the next queued folder nobody reads yet, now the caller's.
std::shared_ptr<OrderedFolderWalk::Folder> OrderedFolderWalk::claimNext()
{
    while (!m_unread.empty()) {
        std::shared_ptr<Folder> folder = std::move(m_unread.front());
        m_unread.pop_front();
        if (folder->state == Folder::State::Unread) {
            folder->state = Folder::State::Reading;
            return folder;
        }
    }
    return nullptr;
}

// On any thread, for a folder whose state it has set to Reading.
void OrderedFolderWalk::read(Folder &folder, bool followLink)
{
    std::vector<std::shared_ptr<Folder>> subfolders;
    DirectoryListing::forEach(
        folder.path,
        [this, &folder, &subfolders](QString &&path, unsigned char type) {
            switch (m_classify(path, type)) {
            case Entry::Stop:
                return false;
            case Entry::Skip:
                break;
            case Entry::File:
                folder.items.push_back({std::move(path), nullptr});
                break;
            case Entry::Folder:
                subfolders.push_back(std::make_shared<Folder>(std::move(path)));
                folder.items.push_back({QString(), subfolders.back()});
                break;
            }
            return true;
        },
        followLink ? DirectoryListing::Links::Follow : DirectoryListing::Links::DoNotFollow);
    {
        const std::lock_guard lock(m_lock);
        folder.state = Folder::State::Read;
        // The subfolders go first, in their order: the walk needs them before
        // anything queued earlier.
        if (m_readAhead)
            m_unread.insert(m_unread.begin(), subfolders.begin(), subfolders.end());
    }
    // The walking thread waits for one folder, or for one to read meanwhile.
    m_folderRead.notify_all();
    if (m_readAhead && !subfolders.empty())
        m_workChanged.notify_all();
}

// A helper thread: reads queued folders until the walk ends or is stopped.
void OrderedFolderWalk::help()
{
    std::unique_lock lock(m_lock);
    while (!m_finished && !m_stop) {
        if (const std::shared_ptr<Folder> folder = claimNext()) {
            lock.unlock();
            read(*folder, false);
            lock.lock();
        } else {
            m_workChanged.wait(lock);
        }
    }
}

void OrderedFolderWalk::startHelpers(int count)
{
    for (int i = 0; i < count; ++i) {
        ++m_liveThreads;
        try {
            m_helpers.emplace_back([this] {
                help();
                --m_liveThreads;
            });
        } catch (const std::system_error &) {
            --m_liveThreads; // fewer helpers; the walking thread reads what is left
            break;
        }
    }
}

void OrderedFolderWalk::endHelpers()
{
    {
        const std::lock_guard lock(m_lock);
        m_finished = true;
        m_unread.clear();
    }
    m_workChanged.notify_all();
    for (std::thread &helper : m_helpers)
        helper.join();
    m_helpers.clear();
}
