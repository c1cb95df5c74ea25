#pragma once

#include <QAbstractListModel>
#include <QStringList>

class FileTypeIcons;

// The panel's rows: the last listing received (dirContents) narrowed by the
// search phrase (dirContentsFiltered). A row shows the entry's name and its
// type icon; the full path is under PathRole. Listings of a hundred thousand
// entries are usual, so the rows change as little as they can: a listing that
// extends the last one appends rows, and a phrase that leaves the same rows
// changes nothing (the selection and the scroll position stay).
class FileListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role
    {
        PathRole = Qt::UserRole + 1,
    };

    explicit FileListModel(FileTypeIcons &icons, QObject *parent = nullptr);

    // storeFilteredArray: replaces dirContents and filters it again; a listing
    // that begins with the whole of the last one (a partial list grown) adds
    // its new rows at the end instead.
    void storeFilteredArray(const QStringList &paths);
    // Narrows the current listing by phrase; never starts a listing. A longer
    // phrase holding the last one searches only the rows shown.
    void setSearchPhrase(const QString &phrase);
    QString searchPhrase() const { return m_phrase; }
    const QStringList &dirContents() const { return m_dirContents; }
    const QStringList &dirContentsFiltered() const { return m_filtered; }
    QString pathAt(int row) const;            // empty outside the rows
    int rowOfPath(const QString &path) const; // -1 when no row shows it
    // Removes one row (after a restore or trash) without a new listing; the
    // path leaves dirContents too, so a later search does not bring it back.
    void removeRowAt(int row);
    // The same for the row of path, wherever it is now; nothing when it is gone.
    void removePath(const QString &path);

    // Keeps the paths whose last component contains phrase (literal,
    // case-sensitive); an empty phrase keeps all.
    static QStringList filterDirContents(const QStringList &paths, const QString &phrase);

    // The views ask for every row's index at each layout: no virtual calls.
    QModelIndex index(int row, int column = 0,
                      const QModelIndex &parent = QModelIndex()) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // Dragged rows go out as file URLs (text/uri-list), in row order
    // whatever the order of indexes, for a target to copy, move or link.
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;

private:
    // Appends to kept the paths from index from on whose name holds phrase.
    static void appendMatches(QStringList &kept, const QStringList &paths, qsizetype from,
                              const QString &phrase);

    FileTypeIcons &m_icons;
    QStringList m_dirContents;
    QStringList m_filtered;
    QString m_phrase;
};
