#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

// Facts about an item itself, never about what a symbolic link points to.
class FileStat
{
public:
    // True for anything at the path, a dangling link included.
    static bool exists(const QString &path);
    static std::optional<QDateTime> modificationDate(const QString &path);
};
