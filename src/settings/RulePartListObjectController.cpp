#include "RulePartListObjectController.h"

#include "RowListModel.h"

#include <QPushButton>
#include <QTableView>

RulePartListObjectController::RulePartListObjectController(const QString &noun,
                                                           const QString &dropType, QWidget *parent)
    : ListObjectController(noun + u's', parent)
{
    buttonAdd()->setToolTip(QStringLiteral("Add a %1").arg(noun.toLower()));
    buttonRemove()->setToolTip(QStringLiteral("%1s cannot be removed in this version").arg(noun));
    auto *model = new RowListModel(noun, this);
    model->setInertDropTypes({dropType});
    model->enableDragAndDrop(tableView());
    setModel(model);
}
