#include "IgnoreDesktopItemsObjectController.h"

#include "AppFolders.h"
#include "BrevanoData.h"
#include "DirectoryListing.h"
#include "FileNames.h"
#include "FileTypeIcons.h"
#include "ItemInfo.h"
#include "KeyPressAction.h"

#include <QAbstractTableModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>

namespace {
enum Column
{
    CheckboxColumn,
    FilenameColumn,
    ColumnCount
};
// The worker's strings share no data with the main thread's.
QString ownCopy(const QString &text)
{
    return QString(text.constData(), text.size());
}
} // namespace

// What a reading of the Desktop found.
struct IgnoreDesktopItemsObjectController::Listing
{
    std::shared_ptr<const Run> run;
    QStringList visible;           // sorted
    QHash<QString, bool> verdicts; // every entry, hidden ones too
};

// Listings on their way to the checklist, under a lock of their own; only a
// notice to collect them goes through the event queue, and none once the
// checklist is gone.
struct IgnoreDesktopItemsObjectController::Mailbox
{
    std::mutex lock;
    IgnoreDesktopItemsObjectController *owner = nullptr; // under lock
    std::vector<Listing> listings;

    void deliver(Listing &&listing)
    {
        const std::lock_guard guard(lock);
        if (!owner)
            return;
        const bool noticePending = !listings.empty();
        listings.push_back(std::move(listing));
        if (!noticePending)
            QMetaObject::invokeMethod(owner, "takeDeliveries", Qt::QueuedConnection);
    }
};

// One reading of the Desktop: what the worker needs, taken on the main thread
// before it starts; the worker never sees the store or a widget.
struct IgnoreDesktopItemsObjectController::Run
{
    QString desktop;
    QSet<QString> ignored; // the paths the store ignored then
    const ItemInfo *itemInfo = nullptr;
    std::atomic<bool> cancelled{false};

    // On the worker. A cancelled run stops at its next entry and hands nothing over.
    static void read(const std::shared_ptr<const Run> &run, Mailbox &mailbox)
    {
        Listing listing{run, {}, {}};
        const qsizetype prefix = run->desktop.size() + 1;
        DirectoryListing::forEach(run->desktop, [&](QString &&path, unsigned char) {
            if (run->cancelled)
                return false;
            QString name = path.mid(prefix);
            listing.verdicts.insert(name, run->ignored.contains(path));
            if (!(run->itemInfo->flags(path, ItemInfo::Invisible) & ItemInfo::Invisible))
                listing.visible.append(std::move(name));
            return true;
        });
        if (run->cancelled)
            return;
        std::sort(listing.visible.begin(), listing.visible.end());
        mailbox.deliver(std::move(listing));
    }
};

// The visible names with their ticks, as the controller holds them.
class IgnoreDesktopItemsObjectController::Model : public QAbstractTableModel
{
public:
    explicit Model(IgnoreDesktopItemsObjectController &owner)
        : QAbstractTableModel(&owner), m_owner(owner)
    {
    }

    void reload()
    {
        beginResetModel();
        endResetModel();
    }
    // Ticks changed; the rows and the selection stay.
    void ticksChanged(int first, int last)
    {
        if (first <= last)
            emit dataChanged(index(first, CheckboxColumn), index(last, CheckboxColumn));
    }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_owner.m_sortedFilenames.size());
    }
    int columnCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : ColumnCount;
    }
    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        Qt::ItemFlags flags = QAbstractTableModel::flags(index);
        if (index.column() == CheckboxColumn)
            flags |= Qt::ItemIsUserCheckable;
        return flags;
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid() || index.row() >= rowCount())
            return {};
        const QString &name = m_owner.m_sortedFilenames.at(index.row());
        if (index.column() == CheckboxColumn) {
            if (role == Qt::CheckStateRole)
                return m_owner.ignoreFile(name) ? Qt::Checked : Qt::Unchecked;
            if (role == Qt::AccessibleTextRole || role == Qt::ToolTipRole)
                return QStringLiteral("Ignore %1").arg(FileNames::display(name));
            return {};
        }
        switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return FileNames::display(name);
        case Qt::DecorationRole:
            return FileTypeIcons::shared().forPath(m_owner.m_desktop + u'/' + name);
        default:
            return {};
        }
    }
    bool setData(const QModelIndex &index, const QVariant &value, int role) override
    {
        if (!index.isValid() || index.column() != CheckboxColumn || role != Qt::CheckStateRole)
            return false;
        m_owner.setIgnoreFileAtRow(index.row(), value.toInt() == Qt::Checked);
        return true;
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return QAbstractTableModel::headerData(section, orientation, role);
        return section == CheckboxColumn ? QStringLiteral("Ignore") : QStringLiteral("Filename");
    }

private:
    IgnoreDesktopItemsObjectController &m_owner;
};

IgnoreDesktopItemsObjectController::IgnoreDesktopItemsObjectController(BrevanoData &store,
                                                                       const ItemInfo &itemInfo,
                                                                       QWidget *parent)
    : ListObjectController(QStringLiteral("Desktop items to ignore"), parent), m_data(store),
      m_itemInfo(itemInfo), m_model(new Model(*this)),
      m_readingNote(new QLabel(QStringLiteral("Reading the Desktop\u2026"), this)),
      m_mailbox(std::make_shared<Mailbox>()),
      m_startWorker([this](std::function<void()> job) { startThread(std::move(job)); })
{
    m_mailbox->owner = this;
    // Items are ticked here, not added or removed.
    buttonAdd()->hide();
    buttonRemove()->hide();
    auto *checkAll = new QPushButton(QStringLiteral("Check All"), this);
    auto *uncheckAll = new QPushButton(QStringLiteral("Uncheck All"), this);
    checkAll->setObjectName(QStringLiteral("checkAllButton"));
    uncheckAll->setObjectName(QStringLiteral("uncheckAllButton"));
    checkAll->setToolTip(QStringLiteral("Ignore every item on the Desktop, hidden ones too"));
    uncheckAll->setToolTip(QStringLiteral("Ignore no item on the Desktop, hidden ones included"));
    auto *checks = new QHBoxLayout;
    for (QPushButton *button : {checkAll, uncheckAll}) {
        button->setAccessibleName(button->text());
        button->setAutoDefault(false);
        checks->addWidget(button);
    }
    checks->addStretch();
    auto *column = static_cast<QVBoxLayout *>(layout());
    m_readingNote->setObjectName(QStringLiteral("readingNote"));
    m_readingNote->hide();
    column->insertWidget(column->indexOf(tableView()) + 1, m_readingNote);
    column->addLayout(checks);
    connect(checkAll, &QPushButton::clicked, this,
            &IgnoreDesktopItemsObjectController::pressedCheckAll);
    connect(uncheckAll, &QPushButton::clicked, this,
            &IgnoreDesktopItemsObjectController::pressedUncheckAll);

    QTableView *table = tableView();
    table->setIconSize(QSize(16, 16));
    setModel(m_model);
    table->horizontalHeader()->setSectionResizeMode(CheckboxColumn, QHeaderView::ResizeToContents);
    // Space ticks the selected rows, whichever column has the focus (the check
    // box's own delegate answers Space in its column only).
    new KeyPressAction(table, Qt::Key_Space, [this, table] {
        const int current = table->currentIndex().row();
        if (current < 0)
            return;
        const bool ignore = !ignoreFileAtRow(current);
        QList<int> rows = selectedRows();
        if (!rows.contains(current))
            rows = {current};
        for (const int row : rows)
            setIgnoreFileAtRow(row, ignore);
    });
    rebuildData();
}

IgnoreDesktopItemsObjectController::~IgnoreDesktopItemsObjectController()
{
    if (m_run)
        m_run->cancelled = true;
    {
        const std::lock_guard guard(m_mailbox->lock);
        m_mailbox->owner = nullptr;
    }
    // Workers read through the engine's item facts, which may go next: each
    // stops at its next entry, and is waited for here.
    m_workers.clear();
}

void IgnoreDesktopItemsObjectController::startThread(std::function<void()> job)
{
    std::erase_if(m_workers, [](const std::future<void> &worker) {
        return worker.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    m_workers.push_back(std::async(std::launch::async, std::move(job)));
}

// The rows go at once; the ticks of the last listing stay known (for
// saveSettings, and to carry the user's changes over) until the new one is in.
void IgnoreDesktopItemsObjectController::rebuildData()
{
    if (m_run)
        m_run->cancelled = true;
    auto run = std::make_shared<Run>();
    run->desktop = ownCopy(AppFolders::desktopFolder());
    for (const QString &path : m_data.ignoreList().paths()) {
        if (m_data.shouldIgnoreFile(path))
            run->ignored.insert(ownCopy(path));
    }
    run->itemInfo = &m_itemInfo;
    m_run = run;
    m_sortedFilenames.clear();
    m_model->reload();
    m_readingNote->show();
    m_startWorker(
        [run = std::shared_ptr<const Run>(run), mailbox = m_mailbox] { Run::read(run, *mailbox); });
}

// On the main thread. A receiver of dataRebuilt() may delete the checklist.
void IgnoreDesktopItemsObjectController::takeDeliveries()
{
    std::vector<Listing> listings;
    {
        const std::lock_guard guard(m_mailbox->lock);
        listings.swap(m_mailbox->listings);
    }
    for (Listing &listing : listings) {
        if (listing.run == m_run) {
            take(std::move(listing));
            return;
        }
    }
}

// The user's changes (ticks that differ from the verdict their listing found)
// carry over into the new listing; where the store changed the same item
// since, it changed it the same way. Check All or Uncheck All pressed while
// reading decides alone.
void IgnoreDesktopItemsObjectController::take(Listing &&listing)
{
    QHash<QString, bool> ticks = listing.verdicts;
    if (m_pendingAll) {
        for (bool &tick : ticks)
            tick = *m_pendingAll;
    } else if (listing.run->desktop == m_desktop) {
        for (auto it = m_checkStatus.cbegin(); it != m_checkStatus.cend(); ++it) {
            if (it.value() != m_verdicts.value(it.key()) && ticks.contains(it.key()))
                ticks.insert(it.key(), it.value());
        }
    }
    m_desktop = listing.run->desktop;
    m_sortedFilenames = std::move(listing.visible);
    m_verdicts = std::move(listing.verdicts);
    m_checkStatus = std::move(ticks);
    m_pendingAll.reset();
    m_run.reset();
    m_readingNote->hide();
    m_model->reload();
    emit dataRebuilt();
}

void IgnoreDesktopItemsObjectController::saveSettings()
{
    QStringList checked;
    QStringList unchecked;
    for (auto it = m_checkStatus.cbegin(); it != m_checkStatus.cend(); ++it) {
        // While the Desktop is read again the store may know better than the
        // last listing (the rebuild may be for its change): only the ticks the
        // user changed are written. Before the first listing nothing is known,
        // and nothing is written.
        if (m_run && it.value() == m_verdicts.value(it.key()))
            continue;
        (it.value() ? checked : unchecked).append(m_desktop + u'/' + it.key());
    }
    m_data.addIgnoreFiles(checked);
    m_data.removeIgnoreFiles(unchecked);
}

void IgnoreDesktopItemsObjectController::pressedCheckAll()
{
    setAll(true);
}

void IgnoreDesktopItemsObjectController::pressedUncheckAll()
{
    setAll(false);
}

void IgnoreDesktopItemsObjectController::setAll(bool ignore)
{
    for (bool &value : m_checkStatus)
        value = ignore;
    if (m_run)
        m_pendingAll = ignore;
    m_model->ticksChanged(0, int(m_sortedFilenames.size()) - 1);
}

bool IgnoreDesktopItemsObjectController::ignoreFile(const QString &name) const
{
    return m_checkStatus.value(name, false);
}

bool IgnoreDesktopItemsObjectController::ignoreFileAtRow(int row) const
{
    return row >= 0 && row < m_sortedFilenames.size() && ignoreFile(m_sortedFilenames.at(row));
}

void IgnoreDesktopItemsObjectController::setIgnoreFileAtRow(int row, bool ignore)
{
    if (row < 0 || row >= m_sortedFilenames.size())
        return;
    m_checkStatus.insert(m_sortedFilenames.at(row), ignore);
    m_model->ticksChanged(row, row);
}
