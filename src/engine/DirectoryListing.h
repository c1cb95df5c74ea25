#pragma once

#include <QStringList>

#include <functional>

// The entries directly in a folder, as full paths, in the order the file system
// gives them, hidden ones included. An unreadable folder has none.
class DirectoryListing
{
public:
    enum class Links
    {
        Follow,      // the folder may be reached through a symbolic link
        DoNotFollow, // a folder that is a symbolic link lists as empty
    };
    static QStringList entries(const QString &folder);
    // Calls visit(path, type) for each entry, type being the dirent d_type the
    // file system reports (DT_UNKNOWN where it reports none); visit returns
    // false to stop.
    static void forEach(const QString &folder,
                        const std::function<bool(QString &&path, unsigned char type)> &visit,
                        Links links = Links::Follow);
    // prefix + a file name from the file system, in one allocation.
    static QString joinedPath(const QString &prefix, const char *name);
};
