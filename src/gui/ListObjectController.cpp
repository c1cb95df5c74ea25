#include "ListObjectController.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

ListObjectController::ListObjectController(const QString &name, QWidget *parent)
    : QWidget(parent), m_table(new QTableView(this)),
      m_buttonAdd(new QPushButton(QStringLiteral("+"), this)),
      m_buttonRemove(new QPushButton(QStringLiteral("\u2212"), this))
{
    m_table->setObjectName(QStringLiteral("tableView"));
    m_table->setAccessibleName(name);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(22);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setShowGrid(false);
    m_table->setAlternatingRowColors(true);
    m_table->setTabKeyNavigation(false);

    m_buttonAdd->setObjectName(QStringLiteral("buttonAdd"));
    // Several lists share a window: each button says which list it is for.
    m_buttonAdd->setAccessibleName(QStringLiteral("Add to %1").arg(name));
    m_buttonAdd->setToolTip(QStringLiteral("Add"));
    m_buttonAdd->setAutoDefault(false);
    m_buttonRemove->setObjectName(QStringLiteral("buttonRemove"));
    m_buttonRemove->setAccessibleName(QStringLiteral("Remove from %1").arg(name));
    m_buttonRemove->setToolTip(QStringLiteral("Remove"));
    m_buttonRemove->setAutoDefault(false);
    for (QPushButton *button : {m_buttonAdd, m_buttonRemove})
        button->setFixedWidth(button->sizeHint().height() * 3 / 2);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    buttons->addWidget(m_buttonAdd);
    buttons->addWidget(m_buttonRemove);
    buttons->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(m_table);
    layout->addLayout(buttons);

    connect(m_buttonAdd, &QPushButton::clicked, this, [this] { pressedAdd(); });
    connect(m_buttonRemove, &QPushButton::clicked, this, [this] { pressedRemove(); });
    connect(m_table, &QTableView::doubleClicked, this,
            [this](const QModelIndex &index) { doubleClickedRow(index.row()); });
    m_buttonRemove->setEnabled(false);
}

void ListObjectController::setModel(QAbstractItemModel *model)
{
    m_table->setModel(model);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { updateButtons(); });
    updateButtons();
}

QList<int> ListObjectController::selectedRows() const
{
    QList<int> rows;
    if (!m_table->selectionModel())
        return rows;
    for (const QModelIndex &index : m_table->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

int ListObjectController::selectedRow() const
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty())
        return -1;
    const int current = m_table->currentIndex().row();
    return rows.contains(current) ? current : rows.first();
}

void ListObjectController::updateButtons()
{
    m_buttonRemove->setEnabled(!selectedRows().isEmpty());
}
