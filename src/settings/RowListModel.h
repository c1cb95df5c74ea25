#pragma once

#include <QAbstractTableModel>
#include <QStringList>

class QAbstractItemView;

// One column of paths, each shown with its file icon, under a header. Rows may
// be dragged as the set of their row numbers under a private type, and drops of
// chosen types may be welcomed without anything moving (the lists built for
// rules and locations keep their data as it is).
class RowListModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit RowListModel(const QString &header, QObject *parent = nullptr);

    void setPaths(const QStringList &paths);
    const QStringList &paths() const { return m_paths; }
    // Rows dragged carry their numbers under type; none when type is empty.
    void setDragType(const QString &type) { m_dragType = type; }
    // Drops of these types are taken as done; they change nothing.
    void setInertDropTypes(const QStringList &types) { m_dropTypes = types; }
    // Lets view start drags and take drops as this model allows.
    void enableDragAndDrop(QAbstractItemView *view) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

private:
    QString m_header;
    QStringList m_paths;
    QString m_dragType;
    QStringList m_dropTypes;
};
