#pragma once

#include <QString>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// Walks a folder tree depth first and hands over its files in exactly the order
// of a plain recursive walk (each folder's entries in the order the file system
// gives them, a subfolder's files where the subfolder was met), while helper
// threads read the folders the walk will come to next. Whichever thread reads a
// folder looks at each of its entries; only the walking thread hands files on.
// Symbolic links are never followed below the root.
class OrderedFolderWalk
{
public:
    enum class Entry
    {
        Stop,   // end the reading of this folder here
        Skip,   // leave the entry out
        File,   // hand the entry on
        Folder, // walk into it here
    };
    // Looks at one entry of a folder being read, type being its dirent d_type;
    // called on any of the walk's threads, at once on several.
    using Classify = std::function<Entry(const QString &path, unsigned char type)>;
    // Takes the next file, on the walking thread; false ends the walk.
    using Visit = std::function<bool(QString &&path)>;

    // stop is read at every entry, on every thread. liveThreads counts each
    // helper thread for as long as it runs.
    OrderedFolderWalk(Classify classify, const std::atomic<bool> &stop,
                      std::atomic<int> &liveThreads);
    ~OrderedFolderWalk();
    OrderedFolderWalk(const OrderedFolderWalk &) = delete;
    OrderedFolderWalk &operator=(const OrderedFolderWalk &) = delete;

    // Helper threads besides the walking thread: one less than the processors
    // this process may run on, so that the walk and its helpers never take
    // more than every core.
    static int helperThreadsFor(int processors);

    // Walks root on the calling thread; returns once the walk is done or
    // stopped and every helper has ended.
    void run(const QString &root, const Visit &visit, int helperThreads);

private:
    struct Folder;
    struct Item
    {
        QString file;
        std::shared_ptr<Folder> folder; // set for a subfolder to walk into
    };
    struct Folder
    {
        enum class State
        {
            Unread,
            Reading,
            Read,
        };
        explicit Folder(QString folderPath) : path(std::move(folderPath)) {}
        QString path;
        State state = State::Unread; // under m_lock
        std::vector<Item> items;     // written by its reader before it is Read
    };

    bool walk(Folder &folder, const Visit &visit);
    bool obtain(Folder &folder);
    std::shared_ptr<Folder> claimNext();
    void read(Folder &folder, bool followLink);
    void help();
    void startHelpers(int count);
    void endHelpers();

    Classify m_classify;
    const std::atomic<bool> &m_stop;
    std::atomic<int> &m_liveThreads;
    bool m_readAhead = false; // whether read folders queue their subfolders

    std::mutex m_lock;
    std::condition_variable m_folderRead;  // the walking thread waits for a folder, or one to read
    std::condition_variable m_workChanged; // helpers wait for folders to read
    std::deque<std::shared_ptr<Folder>> m_unread; // next needed first, most of the time
    bool m_finished = false;
    std::vector<std::thread> m_helpers;
};
