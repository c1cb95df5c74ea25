#include "RowListModel.h"

#include "FileNames.h"
#include "FileTypeIcons.h"

#include <QAbstractItemView>
#include <QDataStream>
#include <QIODevice>
#include <QMimeData>

#include <algorithm>

RowListModel::RowListModel(const QString &header, QObject *parent)
    : QAbstractTableModel(parent), m_header(header)
{
}

void RowListModel::setPaths(const QStringList &paths)
{
    beginResetModel();
    m_paths = paths;
    endResetModel();
}

void RowListModel::enableDragAndDrop(QAbstractItemView *view) const
{
    view->setDragEnabled(!m_dragType.isEmpty());
    view->setAcceptDrops(!m_dropTypes.isEmpty());
    view->setDropIndicatorShown(!m_dropTypes.isEmpty());
    if (m_dragType.isEmpty() && m_dropTypes.isEmpty())
        view->setDragDropMode(QAbstractItemView::NoDragDrop);
    else if (m_dropTypes.isEmpty())
        view->setDragDropMode(QAbstractItemView::DragOnly);
    else if (m_dragType.isEmpty())
        view->setDragDropMode(QAbstractItemView::DropOnly);
    else
        view->setDragDropMode(QAbstractItemView::DragDrop);
}

int RowListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_paths.size());
}

int RowListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 1;
}

QVariant RowListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_paths.size())
        return {};
    const QString &path = m_paths.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return FileNames::display(path);
    case Qt::DecorationRole:
        return FileTypeIcons::shared().forPath(path);
    default:
        return {};
    }
}

QVariant RowListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return m_header;
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags RowListModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.isValid() && !m_dragType.isEmpty())
        flags |= Qt::ItemIsDragEnabled;
    if (!m_dropTypes.isEmpty())
        flags |= Qt::ItemIsDropEnabled;
    return flags;
}

QStringList RowListModel::mimeTypes() const
{
    QStringList types = m_dropTypes;
    if (!m_dragType.isEmpty() && !types.contains(m_dragType))
        types.append(m_dragType);
    return types;
}

QMimeData *RowListModel::mimeData(const QModelIndexList &indexes) const
{
    if (m_dragType.isEmpty())
        return nullptr;
    QList<int> rows;
    for (const QModelIndex &index : indexes)
        if (index.isValid() && !rows.contains(index.row()))
            rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QByteArray payload;
    QDataStream stream(&payload, QIODevice::WriteOnly);
    stream << rows;
    auto *data = new QMimeData;
    data->setData(m_dragType, payload);
    return data;
}

// Only copies: a file manager deletes what it moved once a drop says it took it,
// and these lists keep nothing that is dropped on them.
Qt::DropActions RowListModel::supportedDropActions() const
{
    return Qt::CopyAction;
}

bool RowListModel::canDropMimeData(const QMimeData *data, Qt::DropAction action, int, int,
                                   const QModelIndex &) const
{
    return data && action == Qt::CopyAction &&
           std::any_of(m_dropTypes.cbegin(), m_dropTypes.cend(),
                       [data](const QString &type) { return data->hasFormat(type); });
}

bool RowListModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                const QModelIndex &parent)
{
    // Welcomed, and nothing moves: neither the rows nor the dropped items.
    return canDropMimeData(data, action, row, column, parent);
}
