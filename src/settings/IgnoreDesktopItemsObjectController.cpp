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
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace {
enum Column
{
    CheckboxColumn,
    FilenameColumn,
    ColumnCount
};
} // namespace

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
      m_itemInfo(itemInfo), m_model(new Model(*this))
{
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
    static_cast<QVBoxLayout *>(layout())->addLayout(checks);
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

IgnoreDesktopItemsObjectController::~IgnoreDesktopItemsObjectController() = default;

void IgnoreDesktopItemsObjectController::rebuildData()
{
    m_desktop = AppFolders::desktopFolder();
    m_sortedFilenames.clear();
    m_checkStatus.clear();
    const qsizetype prefix = m_desktop.size() + 1;
    DirectoryListing::forEach(m_desktop, [&](QString &&path, unsigned char) {
        const QString name = path.mid(prefix);
        m_checkStatus.insert(name, m_data.shouldIgnoreFile(path));
        if (!(m_itemInfo.flags(path, ItemInfo::Invisible) & ItemInfo::Invisible))
            m_sortedFilenames.append(name);
        return true;
    });
    std::sort(m_sortedFilenames.begin(), m_sortedFilenames.end());
    m_model->reload();
}

void IgnoreDesktopItemsObjectController::saveSettings()
{
    QStringList checked;
    QStringList unchecked;
    for (auto it = m_checkStatus.cbegin(); it != m_checkStatus.cend(); ++it)
        (it.value() ? checked : unchecked).append(m_desktop + u'/' + it.key());
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
