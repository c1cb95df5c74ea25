#pragma once

#include <QStringList>

// The entries directly in a folder, as full paths, in the order the file system
// gives them, hidden ones included. An unreadable folder has none.
class DirectoryListing
{
public:
    static QStringList entries(const QString &folder);
};
