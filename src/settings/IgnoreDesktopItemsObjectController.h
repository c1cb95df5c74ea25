#pragma once

#include "ListObjectController.h"

#include <QHash>
#include <QStringList>

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <vector>

class BrevanoData;
class ItemInfo;
class QLabel;

// Every visible item on the Desktop with a tick: ticked items are left alone by
// the tidy. Ticks are held here (hidden items included) until saveSettings(),
// which the window that shows the list calls when it is confirmed.
//
// The Desktop is read on a worker; while it reads, the table has no rows and
// says so, and the items of the last listing are still the ones known here.
// Ticks the user changed carry over into the next listing.
class IgnoreDesktopItemsObjectController : public ListObjectController
{
    Q_OBJECT
public:
    // Runs a job on a worker thread; by default a thread of its own, waited for
    // when the checklist goes.
    using WorkerStarter = std::function<void(std::function<void()> job)>;

    IgnoreDesktopItemsObjectController(BrevanoData &data, const ItemInfo &itemInfo,
                                       QWidget *parent = nullptr);
    ~IgnoreDesktopItemsObjectController() override;

    // Reads the Desktop and the ignore list afresh; dataRebuilt() follows.
    void rebuildData();
    // Ignores the ticked items and stops ignoring the others. While the Desktop
    // is being read again, only the ticks the user changed are written.
    void saveSettings();
    // While the Desktop is read, these also apply to the listing when it comes.
    void pressedCheckAll();
    void pressedUncheckAll();

    bool ignoreFile(const QString &name) const;
    bool ignoreFileAtRow(int row) const;
    void setIgnoreFileAtRow(int row, bool ignore);
    const QStringList &sortedFilenames() const { return m_sortedFilenames; }
    bool isReading() const { return m_run != nullptr; }
    // Tests run the workers' jobs themselves.
    void setWorkerStarter(WorkerStarter starter) { m_startWorker = std::move(starter); }

signals:
    // The listing of the latest rebuildData() is in.
    void dataRebuilt();

private:
    class Model;
    struct Listing;
    struct Run;
    struct Mailbox;

    // Every entry, hidden items' too.
    void setAll(bool ignore);
    void startThread(std::function<void()> job);
    Q_INVOKABLE void takeDeliveries();
    void take(Listing &&listing);

    BrevanoData &m_data;
    const ItemInfo &m_itemInfo;
    QString m_desktop;
    QStringList m_sortedFilenames;
    QHash<QString, bool> m_checkStatus; // every Desktop item by name, hidden ones too
    QHash<QString, bool> m_verdicts;    // the store's, as the listing found them
    std::optional<bool> m_pendingAll;   // Check All or Uncheck All pressed while reading
    Model *m_model;
    QLabel *m_readingNote;
    std::shared_ptr<Run> m_run; // the listing being read; results of others are dropped
    std::shared_ptr<Mailbox> m_mailbox;
    WorkerStarter m_startWorker;
    std::vector<std::future<void>> m_workers;
};
