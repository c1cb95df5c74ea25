#pragma once

#include "PropertyValue.h"

#include <QStringList>

// Desktop items a tidy must never move: full paths in the root's "IgnoreFiles"
// dictionary, each mapped to true. Paths are compared as text, exactly. A path
// whose name is not UTF-8 is kept as a file URI of its bytes, since the data
// file's text could not hold it.
class IgnoreList
{
public:
    static inline const QString Key = QStringLiteral("IgnoreFiles");

    IgnoreList(const PropertyDictionary &root, const QString &desktopFolder)
        : m_root(root), m_desktopFolder(desktopFolder)
    {
    }

    // The root's dictionary, created empty when absent.
    PropertyDictionary getIgnoreFilesDictionary();
    bool shouldIgnoreFile(const QString &path) const;
    // Adds the paths that lie directly in the Desktop folder; returns how many
    // were skipped because they do not.
    qsizetype addIgnoreFiles(const QStringList &paths);
    void removeIgnoreFile(const QString &path);
    void removeIgnoreFiles(const QStringList &paths);
    // Every listed path, whatever its value, in the order of the stored keys.
    QStringList paths() const;
    // Whether the path is listed, whatever its value.
    bool contains(const QString &path) const;

    static QString skippedAlertTitle(qsizetype skipped);

private:
    static QString keyOf(const QString &path);
    static QString pathOfKey(const QString &key);

    PropertyDictionary m_root;
    QString m_desktopFolder;
};
