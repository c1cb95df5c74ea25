#include "FileStat.h"

#include "FileNames.h"

#include <QTimeZone>

#include <sys/stat.h>

static bool lstatPath(const QString &path, struct stat &info)
{
    return !path.isEmpty() && ::lstat(FileNames::encode(path).constData(), &info) == 0;
}

bool FileStat::exists(const QString &path)
{
    struct stat info;
    return lstatPath(path, info);
}

std::optional<QDateTime> FileStat::modificationDate(const QString &path)
{
    struct stat info;
    if (!lstatPath(path, info))
        return std::nullopt;
#ifdef __APPLE__
    const auto &time = info.st_mtimespec;
#else
    const auto &time = info.st_mtim;
#endif
    return QDateTime::fromMSecsSinceEpoch(qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000,
                                          QTimeZone::utc());
}
