#include "BackgroundFileListBuilder.h"

#include "DirectoryListing.h"
#include "ItemInfo.h"
#include "OrderedFolderWalk.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QPointer>
#include <QThread>

#include <chrono>
#include <ctime>
#include <dirent.h>
#include <mutex>
#include <thread>
#include <vector>

// Listing threads alive, helpers included, of every builder.
static std::atomic<int> g_runningWorkers{0};

// What the worker thread owns together with the builder, so that it can finish
// its listing safely after the builder is gone.
struct BackgroundFileListBuilder::Shared
{
    QString rootPath;
    std::shared_ptr<const QuickFilterItem> filter;
    QString shadowDesktopRoot;
    const ItemInfo *itemInfo = nullptr;
    MonotonicClock clock;
    std::function<void(const QString &path)> entryHook;
    std::atomic<bool> requestTermination{false};
    std::atomic<bool> taskRunning{false};

    // Worker-thread state.
    QStringList folders;
    QStringList files;
    qint64 lastUpdate = 0;
    bool firstUpdate = true;
    bool filterPassesAll = true;

    void run();
    bool isBrowsableFolder(const QString &path, unsigned char type) const;
    OrderedFolderWalk::Entry lookAt(const QString &path, unsigned char type) const;
    void listFolder(const QString &folder);
    void listTree(const QString &root);
    void append(QString &&path, bool isFolder);
    bool passesFilter(const QString &path) const;
    void update();
    // Lists on their way to the builder's thread, under our own lock; only a
    // notice to collect them, carrying nothing, goes through the event queue.
    struct Delivery
    {
        QStringList paths;
        bool completed = false;
    };
    std::mutex deliveriesLock;
    std::vector<Delivery> deliveries;
    BackgroundFileListBuilder *builder = nullptr; // under deliveriesLock; none once it is gone
    void deliver(QStringList paths, bool completed);
};

// The clock is read at every entry. A coarse one (a few milliseconds' grain) is
// plenty for a half-second rule and costs a fraction of the precise one.
static qint64 coarseMonotonicMilliseconds()
{
#ifdef CLOCK_MONOTONIC_COARSE
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
#else
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
#endif
}

// The worker's strings share no data with the caller's, whose last reference
// may then be dropped inside Qt on another thread: safe, but a hand-over that
// ThreadSanitizer cannot see.
static QString ownCopy(const QString &text)
{
    return QString(text.constData(), text.size());
}

BackgroundFileListBuilder::BackgroundFileListBuilder(const QString &path,
                                                     std::shared_ptr<const QuickFilterItem> filter,
                                                     const QString &searchPhrase,
                                                     const QString &shadowDesktopRoot,
                                                     const ItemInfo &itemInfo, QObject *parent)
    : QObject(parent), m_searchPhrase(searchPhrase), m_shared(std::make_shared<Shared>())
{
    m_shared->rootPath = ownCopy(path);
    m_shared->filter = std::move(filter);
    m_shared->shadowDesktopRoot = ownCopy(shadowDesktopRoot);
    m_shared->itemInfo = &itemInfo;
    m_shared->clock = &coarseMonotonicMilliseconds;
    m_shared->builder = this;
}

BackgroundFileListBuilder::~BackgroundFileListBuilder()
{
    stopBackgroundTask();
    // From here on the worker posts nothing; what it posted goes with the object.
    const std::lock_guard lock(m_shared->deliveriesLock);
    m_shared->builder = nullptr;
}

void BackgroundFileListBuilder::setClockForTesting(MonotonicClock clock)
{
    m_shared->clock = std::move(clock);
}

void BackgroundFileListBuilder::setEntryHookForTesting(std::function<void(const QString &)> hook)
{
    m_shared->entryHook = std::move(hook);
}

int BackgroundFileListBuilder::runningWorkers()
{
    return g_runningWorkers;
}

bool BackgroundFileListBuilder::waitForWorkers(std::chrono::milliseconds timeout)
{
    // A stopped listing ends within one entry per folder level: a few milliseconds.
    const auto until = std::chrono::steady_clock::now() + timeout;
    while (g_runningWorkers > 0 && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return g_runningWorkers == 0;
}

bool BackgroundFileListBuilder::isDirButNotPackage(quint32 flags)
{
    return (flags & (ItemInfo::Container | ItemInfo::Package)) == ItemInfo::Container;
}

void BackgroundFileListBuilder::startBackgroundTask()
{
    ++g_runningWorkers;
    std::thread([shared = m_shared] {
        shared->run();
        --g_runningWorkers;
    }).detach();
}

void BackgroundFileListBuilder::stopBackgroundTask()
{
    m_shared->requestTermination = true;
}

bool BackgroundFileListBuilder::isRunning() const
{
    return m_shared->taskRunning;
}

void BackgroundFileListBuilder::Shared::run()
{
    taskRunning = true;
    folders.clear();
    files.clear();
    firstUpdate = true; // the first push is never held back: it clears the view
    // A view without extensions or date condition lets everything through.
    filterPassesAll =
        !filter ||
        (filter->getDateMode() == QuickFilterItem::DateModeNone &&
         filter->tempDictionary().value(QStringLiteral("FileExtensions")).toArray().isEmpty());
    update();
    const quint32 folderStyle = filter ? filter->getFolderStyle() : 0;
    if (folderStyle == 0)
        listFolder(rootPath);
    else if (folderStyle == 1)
        listTree(shadowDesktopRoot);
    taskRunning = false;
    requestTermination = false; // a cancelled listing still reports its completion
    // Handed over whole: the worker keeps no reference to a path it delivered.
    QStringList all = std::move(folders);
    if (all.isEmpty())
        all = std::move(files);
    else
        all.append(std::move(files));
    folders = {};
    files = {};
    deliver(std::move(all), true);
}

// The entry type the file system reports decides what is a folder; only
// folders (or entries of unknown type) are asked about further, for the
// package test.
bool BackgroundFileListBuilder::Shared::isBrowsableFolder(const QString &path,
                                                          unsigned char type) const
{
    if (type == DT_DIR)
        return !itemInfo->isPackageFolder(path);
    return type == DT_UNKNOWN &&
           isDirButNotPackage(itemInfo->flags(path, ItemInfo::Container | ItemInfo::Package));
}

// Looks at one entry, on whichever listing thread reads its folder: Folder for
// a browsable one, File for anything else that passes the filter.
OrderedFolderWalk::Entry BackgroundFileListBuilder::Shared::lookAt(const QString &path,
                                                                   unsigned char type) const
{
    if (entryHook)
        entryHook(path);
    if (requestTermination)
        return OrderedFolderWalk::Entry::Stop;
    if (isBrowsableFolder(path, type))
        return OrderedFolderWalk::Entry::Folder;
    return passesFilter(path) ? OrderedFolderWalk::Entry::File : OrderedFolderWalk::Entry::Skip;
}

// One folder, its folders (put to the filter too) and files in the file
// system's order.
void BackgroundFileListBuilder::Shared::listFolder(const QString &folder)
{
    DirectoryListing::forEach(folder, [this](QString &&path, unsigned char type) {
        const OrderedFolderWalk::Entry entry = lookAt(path, type);
        if (entry == OrderedFolderWalk::Entry::Stop)
            return false;
        if (entry == OrderedFolderWalk::Entry::File)
            append(std::move(path), false);
        else if (entry == OrderedFolderWalk::Entry::Folder && passesFilter(path))
            append(std::move(path), true);
        return true;
    });
}

// Every file under root, depth first. The folders are read on several threads
// (each entry looked at, and put to the filter, by the thread reading it); the
// files are added here one by one in the order of a plain recursive walk.
void BackgroundFileListBuilder::Shared::listTree(const QString &root)
{
    OrderedFolderWalk walk(
        [this](const QString &path, unsigned char type) { return lookAt(path, type); },
        requestTermination, g_runningWorkers);
    walk.run(
        root,
        [this](QString &&path) {
            append(std::move(path), false);
            return true;
        },
        OrderedFolderWalk::helperThreadsFor(QThread::idealThreadCount()));
}

bool BackgroundFileListBuilder::Shared::passesFilter(const QString &path) const
{
    if (requestTermination)
        return false;
    return filterPassesAll || filter->filePassesFilter(path, QDateTime::currentDateTimeUtc());
}

// For an entry that passed the filter.
void BackgroundFileListBuilder::Shared::append(QString &&path, bool isFolder)
{
    if (requestTermination)
        return;
    (isFolder ? folders : files).append(std::move(path));
    update();
}

void BackgroundFileListBuilder::Shared::update()
{
    if (requestTermination)
        return;
    const qint64 now = clock();
    if (!firstUpdate && now - lastUpdate < kUpdateIntervalMs)
        return;
    firstUpdate = false;
    deliver(folders + files, false);
    lastUpdate = now;
}

void BackgroundFileListBuilder::Shared::deliver(QStringList paths, bool completed)
{
    const std::lock_guard lock(deliveriesLock);
    if (!builder || !QCoreApplication::instance())
        return;
    const bool noticePending = !deliveries.empty();
    deliveries.push_back({std::move(paths), completed});
    if (!noticePending)
        QMetaObject::invokeMethod(builder, "takeDeliveries", Qt::QueuedConnection);
}

// On the builder's thread. A receiver may delete the builder on the way.
void BackgroundFileListBuilder::takeDeliveries()
{
    std::vector<Shared::Delivery> taken;
    {
        const std::lock_guard lock(m_shared->deliveriesLock);
        taken.swap(m_shared->deliveries);
    }
    const QPointer<BackgroundFileListBuilder> alive(this);
    for (const Shared::Delivery &delivery : taken) {
        if (!alive)
            return;
        if (delivery.completed)
            emit fileListCompleted(delivery.paths, this);
        else
            emit fileListUpdated(delivery.paths, this);
    }
}
