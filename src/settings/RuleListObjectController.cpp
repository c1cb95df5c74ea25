#include "RuleListObjectController.h"

#include "EditRuleWindowController.h"
#include "RowListModel.h"

#include <QComboBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

RuleListObjectController::RuleListObjectController(NotificationCenter &notifications,
                                                   QWidget *parent)
    : ListObjectController(QStringLiteral("Rules"), parent), m_notifications(notifications),
      m_comboBox(new QComboBox(this))
{
    m_comboBox->setObjectName(QStringLiteral("myComboBox"));
    m_comboBox->setAccessibleName(QStringLiteral("Rules of location"));
    m_comboBox->addItem(QStringLiteral("Common to all locations"));
    m_comboBox->setCurrentIndex(0);
    static_cast<QVBoxLayout *>(layout())->insertWidget(0, m_comboBox);
    tableView()->verticalHeader()->setDefaultSectionSize(64);
    buttonAdd()->setToolTip(QStringLiteral("New rule"));
    buttonRemove()->setToolTip(QStringLiteral("Rules cannot be removed in this version"));
    auto *model = new RowListModel(QStringLiteral("Rule"), this);
    model->setDragType(DragType);
    model->enableDragAndDrop(tableView());
    setModel(model);
}

void RuleListObjectController::pressedAdd()
{
    EditRuleWindowController::runModal(m_notifications, this);
}
