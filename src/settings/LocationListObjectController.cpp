#include "LocationListObjectController.h"

#include "Brevano.h"
#include "RowListModel.h"

#include <QPushButton>
#include <QTableView>

LocationListObjectController::LocationListObjectController(Brevano &engine, QWidget *parent)
    : ListObjectController(QStringLiteral("Locations"), parent),
      m_model(new RowListModel(QStringLiteral("Location"), this))
{
    QStringList paths;
    for (const PropertyValue &location : engine.getLocations())
        if (location.isString())
            paths.append(location.toString());
    m_model->setPaths(paths);
    m_model->setDragType(DragType);
    m_model->setInertDropTypes({DragType, QStringLiteral("text/uri-list")});
    m_model->enableDragAndDrop(tableView());
    tableView()->setIconSize(QSize(16, 16));
    const QString unchangeable = QStringLiteral("Locations cannot be changed in this version");
    buttonAdd()->setToolTip(unchangeable);
    buttonRemove()->setToolTip(unchangeable);
    setModel(m_model);
}
