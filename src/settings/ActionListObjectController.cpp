#include "ActionListObjectController.h"

#include "RowListModel.h"
#include "SelectActionWindowController.h"

#include <QPushButton>
#include <QTableView>

ActionListObjectController::ActionListObjectController(QWidget *parent)
    : ListObjectController(QStringLiteral("Actions"), parent)
{
    buttonAdd()->setToolTip(QStringLiteral("Choose an action"));
    buttonRemove()->setToolTip(QStringLiteral("Actions cannot be removed in this version"));
    auto *model = new RowListModel(QStringLiteral("Action"), this);
    model->setInertDropTypes({DropType});
    model->enableDragAndDrop(tableView());
    setModel(model);
}

void ActionListObjectController::pressedAdd()
{
    SelectActionWindowController::runModal(this);
}
