#pragma once

#include <QHash>
#include <QIcon>
#include <QString>

// The desktop theme's icon for a file's type, looked up once per type (the
// theme lookup is slow and lists hold thousands of rows). Main thread only.
class FileTypeIcons
{
public:
    // By extension alone, without touching the file.
    QIcon forExtension(const QString &extension);
    // For an item on disk: folders, packages, links and files by name; the
    // item's kind is read once per path and remembered.
    QIcon forPath(const QString &path);

    static FileTypeIcons &shared();

private:
    // The icon for a MIME type's name or one of the kinds without a type.
    QIcon iconForKey(const QString &key);

    QHash<QString, QIcon> m_byType;
    QHash<QString, QString> m_typeOfPath;
};
