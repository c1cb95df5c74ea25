#include "FilterListObjectController.h"

#include "FilterWindowController.h"
#include "RowListModel.h"

#include <QPushButton>
#include <QTableView>

FilterListObjectController::FilterListObjectController(QWidget *parent)
    : ListObjectController(QStringLiteral("Filters"), parent)
{
    buttonAdd()->setToolTip(QStringLiteral("New filter"));
    buttonRemove()->setToolTip(QStringLiteral("Filters cannot be removed in this version"));
    auto *model = new RowListModel(QStringLiteral("Filter"), this);
    model->setInertDropTypes({DropType});
    model->enableDragAndDrop(tableView());
    setModel(model);
}

void FilterListObjectController::pressedAdd()
{
    FilterWindowController::runModal(this);
}
