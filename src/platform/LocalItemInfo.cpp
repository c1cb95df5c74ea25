#include "LocalItemInfo.h"

#include "FileNames.h"

#include <QDateTime>
#include <QFile>
#include <QHash>
#include <QMimeDatabase>
#include <QMutex>
#include <QSet>
#include <QTimeZone>

#include <sys/stat.h>

static QString lastComponent(const QString &path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(u'/'))
        trimmed.chop(1);
    return trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

// File managers hide the names listed one a line in a folder's ".hidden" file.
// Each folder's list is read at most once a second: a tidy asks for every item.
static bool listedInHiddenFile(const QString &path)
{
    const QString name = lastComponent(path);
    const QString folder = path.left(path.size() - name.size());
    struct Cached
    {
        qint64 readAt;
        QSet<QString> names;
    };
    static QMutex mutex;
    static QHash<QString, Cached> cache;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    QMutexLocker lock(&mutex);
    auto cached = cache.find(folder);
    if (cached == cache.end() || now - cached->readAt > 1000 || now < cached->readAt) {
        QSet<QString> names;
        QFile hidden;
        if (FileNames::openForReading(hidden, folder + QStringLiteral(".hidden")) &&
            hidden.size() <= 1024 * 1024) {
            while (!hidden.atEnd())
                names.insert(FileNames::decode(hidden.readLine()).trimmed());
        }
        if (cache.size() > 256)
            cache.clear();
        cached = cache.insert(folder, Cached{now, names});
    }
    return cached->names.contains(name);
}

bool LocalItemInfo::isPackageExtension(const QString &name)
{
    static const QStringList extensions{
        QStringLiteral("app"),           QStringLiteral("bundle"), QStringLiteral("framework"),
        QStringLiteral("plugin"),        QStringLiteral("kext"),   QStringLiteral("pkg"),
        QStringLiteral("mpkg"),          QStringLiteral("rtfd"),   QStringLiteral("xcodeproj"),
        QStringLiteral("photoslibrary"), QStringLiteral("band")};
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 && extensions.contains(name.mid(dot + 1), Qt::CaseInsensitive);
}

// The bits of an item whose lstat is known.
static quint32 flagsOf(const QString &path, const struct stat &info, quint32 wanted)
{
    quint32 bits = 0;
    const QString name = lastComponent(path);
    if (S_ISDIR(info.st_mode)) {
        bits |= ItemInfo::Container;
        if (LocalItemInfo::isPackageExtension(name))
            bits |= ItemInfo::Package;
    } else if (S_ISLNK(info.st_mode)) {
        bits |= ItemInfo::AliasFile;
    }
    if ((wanted & ItemInfo::Invisible) && (name.startsWith(u'.') || listedInHiddenFile(path)))
        bits |= ItemInfo::Invisible;
    return bits & wanted;
}

bool LocalItemInfo::isPackageFolder(const QString &path) const
{
    return isPackageExtension(lastComponent(path));
}

quint32 LocalItemInfo::flags(const QString &path, quint32 wanted) const
{
    struct stat info;
    if (path.isEmpty() || ::lstat(FileNames::encode(path).constData(), &info) != 0)
        return 0;
    return flagsOf(path, info, wanted);
}

ItemInfo::Facts LocalItemInfo::facts(const QString &path) const
{
    struct stat info;
    if (path.isEmpty() || ::lstat(FileNames::encode(path).constData(), &info) != 0)
        return {};
#ifdef __APPLE__
    const auto &time = info.st_mtimespec;
#else
    const auto &time = info.st_mtim;
#endif
    return {flagsOf(path, info, AllFlags),
            QDateTime::fromMSecsSinceEpoch(qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000,
                                           QTimeZone::utc()),
            quint64(info.st_dev), quint64(info.st_ino)};
}

QString LocalItemInfo::kindText(const QString &path) const
{
    static const QMimeDatabase database;
    const QMimeType type = database.mimeTypeForFile(path, QMimeDatabase::MatchDefault);
    return type.isValid() ? type.comment() : QString();
}
