#include "FileListModel.h"

#include "FileNames.h"
#include "FileTypeIcons.h"

#include <QIcon>

namespace {

QStringView lastComponent(QStringView path)
{
    return path.sliced(path.lastIndexOf(u'/') + 1);
}

} // namespace

FileListModel::FileListModel(FileTypeIcons &icons, QObject *parent)
    : QAbstractListModel(parent), m_icons(icons)
{
}

QStringList FileListModel::filterDirContents(const QStringList &paths, const QString &phrase)
{
    if (phrase.isEmpty())
        return paths;
    QStringList kept;
    kept.reserve(paths.size());
    for (const QString &path : paths)
        if (lastComponent(path).contains(phrase, Qt::CaseSensitive))
            kept.append(path);
    return kept;
}

void FileListModel::storeFilteredArray(const QStringList &paths)
{
    beginResetModel();
    m_dirContents = paths;
    m_filtered = filterDirContents(m_dirContents, m_phrase);
    endResetModel();
}

void FileListModel::setSearchPhrase(const QString &phrase)
{
    beginResetModel();
    m_phrase = phrase;
    m_filtered = filterDirContents(m_dirContents, m_phrase);
    endResetModel();
}

QString FileListModel::pathAt(int row) const
{
    return row >= 0 && row < m_filtered.size() ? m_filtered.at(row) : QString();
}

void FileListModel::removeRowAt(int row)
{
    if (row < 0 || row >= m_filtered.size())
        return;
    beginRemoveRows(QModelIndex(), row, row);
    // Out of the listing too, so that a new search phrase does not bring it back.
    m_dirContents.removeOne(m_filtered.takeAt(row));
    endRemoveRows();
}

int FileListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_filtered.size());
}

QVariant FileListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return QVariant();
    const QString &path = m_filtered.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return FileNames::display(lastComponent(path).toString());
    case Qt::DecorationRole:
        return m_icons.forPath(path);
    case PathRole:
        return path;
    default:
        return QVariant();
    }
}

Qt::ItemFlags FileListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled;
}
