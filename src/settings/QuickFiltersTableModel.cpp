#include "QuickFiltersTableModel.h"

#include "ArrayMove.h"
#include "BrevanoData.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>

#include <algorithm>

namespace {

const QString kFileNamesType = QStringLiteral("text/uri-list");

QByteArray encodeRows(const QList<int> &rows)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << rows;
    return bytes;
}

QList<int> decodeRows(const QByteArray &bytes)
{
    QList<int> rows;
    QDataStream stream(bytes);
    stream >> rows;
    if (stream.status() != QDataStream::Ok)
        return {};
    std::sort(rows.begin(), rows.end());
    return rows;
}

} // namespace

QuickFiltersTableModel::QuickFiltersTableModel(BrevanoData &data, QObject *parent)
    : QAbstractTableModel(parent), m_data(data)
{
}

void QuickFiltersTableModel::reload()
{
    beginResetModel();
    endResetModel();
}

void QuickFiltersTableModel::moveFilter(int from, int to)
{
    QList<QuickFilterList::ItemPointer> items = m_data.filterItems();
    moveObjectFromIndex(items, from, to);
    m_data.setFilterItems(items);
    moveObjectFromIndex(m_data.getQuickFilters(), from, to);
    reload();
}

int QuickFiltersTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_data.filterItems().size());
}

int QuickFiltersTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant QuickFiltersTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const QuickFilterItem &filter = *m_data.filterItems().at(index.row());
    switch (index.column()) {
    case NameColumn:
        return filter.getName();
    case ExtensionsColumn:
        return filter.getExtensionsText();
    default:
        return QString();
    }
}

QVariant QuickFiltersTableModel::headerData(int section, Qt::Orientation orientation,
                                            int role) const
{
    if (orientation != Qt::Horizontal || (role != Qt::DisplayRole && role != ColumnIdentifierRole))
        return {};
    switch (section) {
    case NameColumn:
        return QStringLiteral("Name");
    case ExtensionsColumn:
        return QStringLiteral("Extensions");
    default:
        return {};
    }
}

Qt::ItemFlags QuickFiltersTableModel::flags(const QModelIndex &index) const
{
    // Every row, and the space below the last one, takes a drop.
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
}

QStringList QuickFiltersTableModel::mimeTypes() const
{
    // File names are taken too, and leave the order as it is.
    return {DragType, kFileNamesType};
}

QMimeData *QuickFiltersTableModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes)
        if (index.isValid() && !rows.contains(index.row()))
            rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    auto *mime = new QMimeData;
    mime->setData(DragType, encodeRows(rows));
    return mime;
}

bool QuickFiltersTableModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                             const QModelIndex &) const
{
    return data && (data->hasFormat(DragType) || data->hasFormat(kFileNamesType));
}

bool QuickFiltersTableModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row,
                                          int, const QModelIndex &parent)
{
    if (action == Qt::IgnoreAction)
        return true;
    // File names and other drops carry no rows: they change nothing.
    const QList<int> rows = data ? decodeRows(data->data(DragType)) : QList<int>();
    if (rows.isEmpty())
        return false;
    // A drop between rows names the row below it; one on a row names that row;
    // one below the last row appends.
    const int to = row >= 0 ? row : parent.isValid() ? parent.row() : rowCount();
    moveFilter(rows.first(), to);
    return true;
}

Qt::DropActions QuickFiltersTableModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
}

// After a move the view asks the model to remove the dragged rows; this model
// has already moved them and keeps QAbstractItemModel's removeRows, which
// refuses. Do not give it one that removes.
Qt::DropActions QuickFiltersTableModel::supportedDragActions() const
{
    return Qt::MoveAction;
}
