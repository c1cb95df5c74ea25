#pragma once

#include "QuickFilterItem.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

class ItemInfo;

// Lists a folder of the Shadow Desktop off the main thread for one view: all
// browsable folders first, then everything else, each in the file system's
// order. Partial lists arrive at most every half second, the final list once;
// both are delivered on the thread that made the builder, and never after the
// builder is gone. Packages and links are files; nothing is sorted. A
// flattened listing reads its folders on every core, yet gives the order of a
// single depth-first walk.
class BackgroundFileListBuilder : public QObject
{
    Q_OBJECT
public:
    using MonotonicClock = std::function<qint64()>; // milliseconds
    static constexpr qint64 kUpdateIntervalMs = 500;

    // filter may be null (plain browsing of path). Folder style 1 lists every
    // file under shadowDesktopRoot instead of path.
    BackgroundFileListBuilder(const QString &path, std::shared_ptr<const QuickFilterItem> filter,
                              const QString &searchPhrase, const QString &shadowDesktopRoot,
                              const ItemInfo &itemInfo, QObject *parent = nullptr);
    ~BackgroundFileListBuilder() override;

    void setClockForTesting(MonotonicClock clock);
    // Test hook: called with an entry's path before it is looked at, on
    // whichever listing thread looks at it (several at once in a flattened
    // listing); set it before starting.
    void setEntryHookForTesting(std::function<void(const QString &path)> hook);
    void startBackgroundTask();
    // Asks the worker to stop at its next entry; returns at once.
    void stopBackgroundTask();
    bool isRunning() const;
    QString searchPhrase() const { return m_searchPhrase; }

    static bool isDirButNotPackage(quint32 flags);
    // Listing threads still running, of every builder, the helpers of a
    // flattened listing included (a builder's threads may outlive it).
    static int runningWorkers();
    // At quit, after stopping them: waits up to timeout for every listing thread
    // to end (they read through services that go next). False if some still run.
    static bool waitForWorkers(std::chrono::milliseconds timeout);

signals:
    void fileListUpdated(const QStringList &paths, BackgroundFileListBuilder *task);
    void fileListCompleted(const QStringList &paths, BackgroundFileListBuilder *task);

private:
    Q_INVOKABLE void takeDeliveries();

    struct Shared;
    QString m_searchPhrase;
    std::shared_ptr<Shared> m_shared;
};
