#pragma once

#include <QAbstractTableModel>

class BrevanoData;

// The store's quick filters, one row each in store order, with their names and
// extensions. Rows are reordered by dragging them within the table: the drag
// carries the dragged row numbers under the "KVQuickFilter" type.
class QuickFiltersTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        NameColumn,
        ExtensionsColumn,
        ColumnCount
    };
    // The header answers a column's identifier under this role.
    static constexpr int ColumnIdentifierRole = Qt::UserRole;
    static inline const QString DragType = QStringLiteral("KVQuickFilter");

    explicit QuickFiltersTableModel(BrevanoData &data, QObject *parent = nullptr);

    // Shows the store's filters afresh.
    void reload();
    // Moves filter from to to in the live list and in the stored array alike,
    // then reloads. Nothing is saved or announced.
    void moveFilter(int from, int to);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;

private:
    BrevanoData &m_data;
};
