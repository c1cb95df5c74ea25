#pragma once

#include "PropertyValue.h"

#include <QStringList>

// Desktop items a tidy must never move: full paths in the root's "IgnoreFiles"
// dictionary, each mapped to true. Paths are compared as text, exactly.
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
    // Every listed path, whatever its value, in code-unit order.
    QStringList paths() const;

    static QString skippedAlertTitle(qsizetype skipped);

private:
    PropertyDictionary m_root;
    QString m_desktopFolder;
};
