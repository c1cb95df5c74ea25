#include "LocalItemInfo.h"

#include <QFile>
#include <QMimeDatabase>

#include <sys/stat.h>

static QString lastComponent(const QString &path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(u'/'))
        trimmed.chop(1);
    return trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

// File managers hide the names listed one a line in a folder's ".hidden" file.
static bool listedInHiddenFile(const QString &path)
{
    const QString name = lastComponent(path);
    const QString folder = path.left(path.size() - name.size());
    QFile hidden(folder + QStringLiteral(".hidden"));
    if (hidden.size() > 1024 * 1024 || !hidden.open(QIODevice::ReadOnly))
        return false;
    while (!hidden.atEnd()) {
        if (QString::fromUtf8(hidden.readLine()).trimmed() == name)
            return true;
    }
    return false;
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

quint32 LocalItemInfo::flags(const QString &path, quint32 wanted) const
{
    struct stat info;
    if (path.isEmpty() || ::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return 0;
    quint32 bits = 0;
    const QString name = lastComponent(path);
    if (S_ISDIR(info.st_mode)) {
        bits |= Container;
        if (isPackageExtension(name))
            bits |= Package;
    } else if (S_ISLNK(info.st_mode)) {
        bits |= AliasFile;
    }
    if ((wanted & Invisible) && (name.startsWith(u'.') || listedInHiddenFile(path)))
        bits |= Invisible;
    return bits & wanted;
}

QString LocalItemInfo::kindText(const QString &path) const
{
    static const QMimeDatabase database;
    const QMimeType type = database.mimeTypeForFile(path, QMimeDatabase::MatchDefault);
    return type.isValid() ? type.comment() : QString();
}
