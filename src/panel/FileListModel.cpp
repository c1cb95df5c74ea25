#include "FileListModel.h"

#include "FileNames.h"
#include "FileTypeIcons.h"

#include <QIcon>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace {

QStringView lastComponent(QStringView path)
{
    qsizetype start = path.size();
    while (start > 0 && path[start - 1] != u'/')
        --start;
    return path.sliced(start);
}

// Whether name holds phrase, unit for unit as a case-sensitive contains, without
// its set-up for every call: the names are short and there are many.
bool holds(QStringView name, QStringView phrase)
{
    return std::search(name.begin(), name.end(), phrase.begin(), phrase.end()) != name.end();
}

// Whether list begins with all of head, in order. A grown partial listing
// shares its entries with the last one, so most compare by address alone.
bool beginsWith(const QStringList &list, const QStringList &head)
{
    if (list.size() < head.size())
        return false;
    for (qsizetype i = 0; i < head.size(); ++i) {
        const QString &entry = list.at(i);
        if (entry.constData() != head.at(i).constData() && entry != head.at(i))
            return false;
    }
    return true;
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
    appendMatches(kept, paths, 0, phrase);
    return kept;
}

void FileListModel::appendMatches(QStringList &kept, const QStringList &paths, qsizetype from,
                                  const QString &phrase)
{
    const qsizetype before = kept.size();
    kept.reserve(before + paths.size() - from);
    for (qsizetype i = from; i < paths.size(); ++i)
        if (holds(lastComponent(paths.at(i)), phrase))
            kept.append(paths.at(i));
    // A few rows of a long listing do not keep its length in memory.
    if (kept.size() - before < (paths.size() - from) / 2)
        kept.squeeze();
}

void FileListModel::storeFilteredArray(const QStringList &paths)
{
    if (!beginsWith(paths, m_dirContents)) {
        beginResetModel();
        m_dirContents = paths;
        m_filtered = filterDirContents(m_dirContents, m_phrase);
        endResetModel();
        return;
    }
    const qsizetype known = m_dirContents.size();
    m_dirContents = paths;
    QStringList added;
    if (!m_phrase.isEmpty())
        appendMatches(added, m_dirContents, known, m_phrase);
    const qsizetype count = m_phrase.isEmpty() ? m_dirContents.size() - known : added.size();
    if (count == 0)
        return;
    const int first = int(m_filtered.size());
    beginInsertRows(QModelIndex(), first, first + int(count) - 1);
    // Without a phrase the rows are the listing itself, shared rather than copied.
    if (m_phrase.isEmpty())
        m_filtered = m_dirContents;
    else
        m_filtered.append(added);
    endInsertRows();
}

void FileListModel::setSearchPhrase(const QString &phrase)
{
    if (phrase == m_phrase)
        return;
    // A name holding the new phrase holds the old one too when the new one
    // holds it: only the rows shown can stay. Either way one list of rows is
    // then part of the other, in order, and the same count means the same rows.
    const bool narrows = phrase.contains(m_phrase);
    const bool widens = m_phrase.contains(phrase);
    QStringList filtered = filterDirContents(narrows ? m_filtered : m_dirContents, phrase);
    m_phrase = phrase;
    if ((narrows || widens) && filtered.size() == m_filtered.size())
        return;
    beginResetModel();
    m_filtered = std::move(filtered);
    endResetModel();
}

QString FileListModel::pathAt(int row) const
{
    return row >= 0 && row < m_filtered.size() ? m_filtered.at(row) : QString();
}

int FileListModel::rowOfPath(const QString &path) const
{
    return int(m_filtered.indexOf(path));
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

void FileListModel::removePath(const QString &path)
{
    removeRowAt(rowOfPath(path));
}

QModelIndex FileListModel::index(int row, int column, const QModelIndex &parent) const
{
    return row >= 0 && row < m_filtered.size() && column == 0 && !parent.isValid()
               ? createIndex(row, column)
               : QModelIndex();
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

QStringList FileListModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

QMimeData *FileListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes)
        if (index.isValid() && index.model() == this)
            rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QList<QUrl> urls;
    for (const int row : rows)
        urls.append(FileNames::toUrl(m_filtered.at(row)));
    auto *mime = new QMimeData;
    mime->setUrls(urls);
    return mime;
}

Qt::DropActions FileListModel::supportedDragActions() const
{
    return Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
}
