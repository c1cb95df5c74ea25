#include "QuickFiltersListObjectController.h"

#include "BrevanoData.h"
#include "EditQuickFilterWindowController.h"
#include "NotificationCenter.h"
#include "QuickFiltersTableModel.h"

#include <QAction>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPointer>
#include <QPushButton>
#include <QTableView>

QuickFiltersListObjectController::QuickFiltersListObjectController(
    BrevanoData &store, NotificationCenter &notifications, QWidget *parent)
    : ListObjectController(QStringLiteral("Quick filters"), parent), m_data(store),
      m_notifications(notifications), m_model(new QuickFiltersTableModel(store, this))
{
    setObjectName(QStringLiteral("quickFiltersList"));
    QTableView *table = tableView();
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setToolTip(QStringLiteral("Double-click or press F2 to edit a filter; drag, or press "
                                     "Alt+Up and Alt+Down, to change the order"));
    // Rows are dragged out, and rows and file names dropped in.
    table->setDragDropMode(QAbstractItemView::DragDrop);
    table->setDragDropOverwriteMode(false);
    table->setDefaultDropAction(Qt::MoveAction);
    table->setDropIndicatorShown(true);
    setModel(m_model);
    table->horizontalHeader()->resizeSection(QuickFiltersTableModel::NameColumn, 140);

    const auto addKey = [this, table](const QKeySequence &key, auto handler) {
        auto *action = new QAction(table);
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, handler);
        table->addAction(action);
    };
    addKey(QKeySequence(Qt::ALT | Qt::Key_Up), [this] { moveSelectedFilter(-1); });
    addKey(QKeySequence(Qt::ALT | Qt::Key_Down), [this] { moveSelectedFilter(+1); });
    addKey(QKeySequence(Qt::Key_F2), [this] {
        if (selectedRow() >= 0)
            doubleClickedRow(selectedRow());
    });

    m_notifications.observe(NotificationCenter::QuickFilterChanged, this,
                            [this](const QVariant &) { reload(); });
}

void QuickFiltersListObjectController::reload()
{
    m_model->reload();
    updateButtons();
}

void QuickFiltersListObjectController::updateButtons()
{
    const int row = selectedRow();
    const auto &filters = m_data.filterItems();
    buttonRemove()->setEnabled(row >= 0 && row < filters.size() &&
                               !m_data.isDefaultFilter(*filters.at(row)));
    buttonAdd()->setEnabled(true);
}

void QuickFiltersListObjectController::pressedAdd()
{
    editQuickFilter(-1);
}

void QuickFiltersListObjectController::doubleClickedRow(int row)
{
    if (EditQuickFilterWindowController::isOpen() ||
        (row >= 0 && row < m_data.filterItems().size()))
        editQuickFilter(row);
}

void QuickFiltersListObjectController::editQuickFilter(int row)
{
    if (EditQuickFilterWindowController::isOpen()) {
        EditQuickFilterWindowController::bringToFront();
        return;
    }
    QPointer<EditQuickFilterWindowController> editor =
        row < 0 ? new EditQuickFilterWindowController(m_data, m_notifications, this)
                : new EditQuickFilterWindowController(m_data, m_notifications,
                                                      m_data.filterItems().at(row), this);
    editor->exec();
    delete editor;
    // Extensions edited on a filter stay edited after Cancel: show them.
    reload();
    m_notifications.post(NotificationCenter::UpdateQuickLayouts);
}

void QuickFiltersListObjectController::pressedRemove()
{
    const int row = selectedRow();
    if (row < 0 || !buttonRemove()->isEnabled())
        return;
    m_data.removeQuickFilter(row);
    reload();
    m_notifications.post(NotificationCenter::UpdateQuickLayouts);
}

void QuickFiltersListObjectController::moveSelectedFilter(int step)
{
    const int row = selectedRow();
    const int to = row + step;
    if (row < 0 || to < 0 || to >= m_model->rowCount())
        return;
    m_model->moveFilter(row, to);
    tableView()->selectRow(to);
}
