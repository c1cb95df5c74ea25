#include "FolderSize.h"

#include <QFile>

#include <dirent.h>
#include <sys/stat.h>

quint64 FolderSize::getFolderSize(const QString &path, const std::optional<QDateTime> &start) const
{
    struct stat info;
    const QByteArray bytes = QFile::encodeName(path);
    if (::lstat(bytes.constData(), &info) != 0)
        return 0;
    if (!S_ISDIR(info.st_mode))
        return quint64(info.st_size);
    bool aborted = false;
    const quint64 size = walk(bytes, start, aborted);
    return aborted ? 0 : size;
}

// The time limit is looked at once per folder, as the folder is entered.
quint64 FolderSize::walk(const QByteArray &folderPath, const std::optional<QDateTime> &start,
                         bool &aborted) const
{
    if (start && start->msecsTo(m_now()) > kTimeLimitMs) {
        aborted = true;
        return 0;
    }
    DIR *folder = ::opendir(folderPath.constData());
    if (!folder)
        return 0;
    quint64 total = 0;
    while (const dirent *entry = ::readdir(folder)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        const QByteArray path = folderPath + '/' + name;
        struct stat info;
        if (::lstat(path.constData(), &info) != 0)
            continue;
        total += S_ISDIR(info.st_mode) ? walk(path, start, aborted) : quint64(info.st_size);
    }
    ::closedir(folder);
    return total;
}
