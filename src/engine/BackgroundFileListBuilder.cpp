#include "BackgroundFileListBuilder.h"

#include "DirectoryListing.h"
#include "ItemInfo.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QPointer>

#include <chrono>
#include <dirent.h>
#include <mutex>
#include <thread>
#include <vector>

// What the worker thread owns together with the builder, so that it can finish
// its listing safely after the builder is gone.
struct BackgroundFileListBuilder::Shared : std::enable_shared_from_this<Shared>
{
    QString rootPath;
    std::shared_ptr<const QuickFilterItem> filter;
    QString shadowDesktopRoot;
    const ItemInfo *itemInfo = nullptr;
    MonotonicClock clock;
    std::function<void()> entryHook;
    QPointer<BackgroundFileListBuilder> builder; // read on the builder's thread only
    std::atomic<bool> requestTermination{false};
    std::atomic<bool> taskRunning{false};

    // Worker-thread state.
    QStringList folders;
    QStringList files;
    qint64 lastUpdate = 0;
    bool firstUpdate = true;
    bool filterPassesAll = true;

    void run();
    void listFolder(const QString &folder, bool recursive);
    void add(QString &&path, bool isFolder);
    bool passesFilter(const QString &path) const;
    void update();
    // Lists on their way to the builder's thread, under our own lock; only a
    // notice to collect them goes through the event queue.
    struct Delivery
    {
        QStringList paths;
        bool completed = false;
    };
    std::mutex deliveriesLock;
    std::vector<Delivery> deliveries;
    void deliver(QStringList paths, bool completed);
    void takeDeliveries();
};

BackgroundFileListBuilder::BackgroundFileListBuilder(const QString &path,
                                                     std::shared_ptr<const QuickFilterItem> filter,
                                                     const QString &searchPhrase,
                                                     const QString &shadowDesktopRoot,
                                                     const ItemInfo &itemInfo, QObject *parent)
    : QObject(parent), m_searchPhrase(searchPhrase), m_shared(std::make_shared<Shared>())
{
    m_shared->rootPath = path;
    m_shared->filter = std::move(filter);
    m_shared->shadowDesktopRoot = shadowDesktopRoot;
    m_shared->itemInfo = &itemInfo;
    m_shared->clock = [] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    };
    m_shared->builder = this;
}

BackgroundFileListBuilder::~BackgroundFileListBuilder()
{
    stopBackgroundTask();
}

void BackgroundFileListBuilder::setClockForTesting(MonotonicClock clock)
{
    m_shared->clock = std::move(clock);
}

void BackgroundFileListBuilder::setEntryHookForTesting(std::function<void()> hook)
{
    m_shared->entryHook = std::move(hook);
}

static std::atomic<int> g_runningWorkers{0};

int BackgroundFileListBuilder::runningWorkers()
{
    return g_runningWorkers;
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
        listFolder(rootPath, false);
    else if (folderStyle == 1)
        listFolder(shadowDesktopRoot, true);
    taskRunning = false;
    requestTermination = false; // a cancelled listing still reports its completion
    deliver(folders.isEmpty() ? std::move(files) : folders + files, true);
    folders.clear();
    files.clear();
}

// The entry type the file system reports decides what is a folder; only
// folders (or entries of unknown type) are asked about further, for the
// package test.
void BackgroundFileListBuilder::Shared::listFolder(const QString &folder, bool recursive)
{
    DirectoryListing::forEach(folder, [this, recursive](QString &&path, unsigned char type) {
        if (entryHook)
            entryHook();
        if (requestTermination)
            return false;
        // A reported folder needs only the package test; an unknown type is looked up.
        const bool folderEntry =
            type == DT_DIR ? !itemInfo->isPackageFolder(path)
            : type == DT_UNKNOWN
                ? isDirButNotPackage(itemInfo->flags(path, ItemInfo::Container | ItemInfo::Package))
                : false;
        if (folderEntry && recursive)
            listFolder(path, true);
        else
            add(std::move(path), folderEntry);
        return true;
    });
}

bool BackgroundFileListBuilder::Shared::passesFilter(const QString &path) const
{
    if (requestTermination)
        return false;
    return filterPassesAll || filter->filePassesFilter(path, QDateTime::currentDateTimeUtc());
}

void BackgroundFileListBuilder::Shared::add(QString &&path, bool isFolder)
{
    if (requestTermination || !passesFilter(path))
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
    QCoreApplication *app = QCoreApplication::instance();
    if (!app)
        return;
    bool noticePending = false;
    {
        const std::lock_guard lock(deliveriesLock);
        noticePending = !deliveries.empty();
        deliveries.push_back({std::move(paths), completed});
    }
    if (!noticePending)
        QMetaObject::invokeMethod(
            app, [self = shared_from_this()] { self->takeDeliveries(); }, Qt::QueuedConnection);
}

// On the builder's thread; a builder deleted meanwhile gets nothing.
void BackgroundFileListBuilder::Shared::takeDeliveries()
{
    std::vector<Delivery> taken;
    {
        const std::lock_guard lock(deliveriesLock);
        taken.swap(deliveries);
    }
    for (Delivery &delivery : taken) {
        if (!builder)
            return;
        if (delivery.completed)
            emit builder->fileListCompleted(delivery.paths, builder.data());
        else
            emit builder->fileListUpdated(delivery.paths, builder.data());
    }
}
