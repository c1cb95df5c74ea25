#include "FreedesktopTrash.h"

#include "FileMover.h"
#include "FileNames.h"

#include <QDir>
#include <QStandardPaths>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray bytes(const QString &path)
{
    return FileNames::encode(path);
}

bool lstatPath(const QString &path, struct stat &info)
{
    return ::lstat(bytes(path).constData(), &info) == 0;
}

QString parentOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

// path with the folder that holds it at its real place, links resolved; the
// item itself is not followed.
QString withRealFolder(const QString &path)
{
    char *real = ::realpath(bytes(parentOf(path)).constData(), nullptr);
    if (!real)
        return path;
    const QString folder = FileNames::decode(real);
    ::free(real);
    return (folder == u"/" ? QString() : folder) + path.mid(path.lastIndexOf(u'/'));
}

// A folder we may use: a real folder (not a link) that we can write.
bool usableFolder(const QString &path, bool mustBeOwn)
{
    struct stat info;
    return lstatPath(path, info) && S_ISDIR(info.st_mode) &&
           (!mustBeOwn || info.st_uid == ::getuid()) &&
           ::access(bytes(path).constData(), W_OK | X_OK) == 0;
}

bool makeFolder(const QString &path)
{
    return ::mkdir(bytes(path).constData(), 0700) == 0 || errno == EEXIST;
}

struct TrashFolder
{
    QString base;   // holds files/ and info/
    QString topdir; // empty for the home trash: Path= is absolute there
};

std::optional<TrashFolder> trashFor(const QString &path, const struct stat &item)
{
    const QString home = FreedesktopTrash::homeTrash();
    QDir().mkpath(parentOf(home));
    makeFolder(home);
    struct stat homeInfo;
    const bool homeReadable = lstatPath(home, homeInfo);
    // Items on the home trash's file system go there or nowhere.
    if (homeReadable && homeInfo.st_dev == item.st_dev)
        return usableFolder(home, true) ? std::optional(TrashFolder{home, QString()})
                                        : std::nullopt;

    const QString topdir = FreedesktopTrash::mountTopdir(path);
    const QString uid = QString::number(::getuid());
    const QString shared = (topdir == u"/" ? QString() : topdir) + QStringLiteral("/.Trash");
    struct stat sharedInfo;
    // The shared folder counts only when it is a real, sticky folder.
    if (lstatPath(shared, sharedInfo) && S_ISDIR(sharedInfo.st_mode) &&
        (sharedInfo.st_mode & S_ISVTX)) {
        const QString mine = shared + u'/' + uid;
        makeFolder(mine);
        if (usableFolder(mine, true))
            return TrashFolder{mine, topdir};
    }
    const QString own = (topdir == u"/" ? QString() : topdir) + QStringLiteral("/.Trash-") + uid;
    makeFolder(own);
    if (usableFolder(own, true))
        return TrashFolder{own, topdir};
    return std::nullopt;
}

// "name", then "name 2.ext", "name 3.ext", ...
QString candidateName(const QString &name, int attempt)
{
    if (attempt == 0)
        return name;
    const qsizetype dot = name.lastIndexOf(u'.');
    const bool hasExtension = dot > 0 && dot < name.size() - 1;
    const QString number = QStringLiteral(" %1").arg(attempt + 1);
    return hasExtension ? name.left(dot) + number + name.mid(dot) : name + number;
}

// Path= holds the name's bytes, percent-encoded: they need not be UTF-8.
bool writeInfo(int file, const QString &pathText)
{
    const QByteArray text =
        "[Trash Info]\nPath=" + bytes(pathText).toPercentEncoding("/") + "\nDeletionDate=" +
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() +
        "\n";
    return ::write(file, text.constData(), size_t(text.size())) == text.size() &&
           ::fsync(file) == 0;
}

} // namespace

QString FreedesktopTrash::homeTrash()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Trash");
}

QString FreedesktopTrash::mountTopdir(const QString &path)
{
    struct stat info;
    if (!lstatPath(path, info))
        return QString();
    // The parents that count are the real ones, not those of a linked folder.
    QString topdir = withRealFolder(path);
    for (QString parent = parentOf(topdir); topdir != u"/"; parent = parentOf(topdir)) {
        struct stat parentInfo;
        if (!lstatPath(parent, parentInfo) || parentInfo.st_dev != info.st_dev)
            break;
        topdir = parent;
    }
    return topdir;
}

Trash::Result FreedesktopTrash::trashAs(const QString &path, const QString &originalPath)
{
    struct stat item;
    if (!QDir::isAbsolutePath(path) || !lstatPath(path, item))
        return {false, QString(),
                QStringLiteral("%1 does not exist").arg(FileNames::display(path))};
    const auto folder = trashFor(path, item);
    if (!folder)
        return {false, QString(),
                QStringLiteral("no usable trash on the file system of %1")
                    .arg(FileNames::display(path))};
    const QString files = folder->base + QStringLiteral("/files");
    const QString info = folder->base + QStringLiteral("/info");
    if (!makeFolder(files) || !makeFolder(info))
        return {false, QString(),
                QStringLiteral("cannot create %1: %2")
                    .arg(folder->base, QString::fromLocal8Bit(std::strerror(errno)))};
    const QString pathText =
        folder->topdir.isEmpty()
            ? originalPath
            : QDir(folder->topdir).relativeFilePath(withRealFolder(originalPath));
    const QString name = originalPath.mid(originalPath.lastIndexOf(u'/') + 1);

    for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
        const QString trashName = candidateName(name, attempt);
        const QString infoPath = info + u'/' + trashName + QStringLiteral(".trashinfo");
        const int file =
            ::open(bytes(infoPath).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (file < 0) {
            if (errno == EEXIST)
                continue;
            return {false, QString(),
                    QStringLiteral("cannot write %1: %2")
                        .arg(FileNames::display(infoPath),
                             QString::fromLocal8Bit(std::strerror(errno)))};
        }
        const bool written = writeInfo(file, pathText);
        ::close(file);
        if (!written) {
            ::unlink(bytes(infoPath).constData());
            return {false, QString(),
                    QStringLiteral("cannot write %1").arg(FileNames::display(infoPath))};
        }
        const QString target = files + u'/' + trashName;
        const FileMover::Result moved = FileMover::move(path, target);
        if (moved.moved())
            return {true, target, QString()};
        // A copy that landed keeps its info file; what stayed is still where it was.
        if (moved.status == FileMover::Status::Incomplete)
            return {false, target, moved.message};
        ::unlink(bytes(infoPath).constData());
        if (moved.status != FileMover::Status::TargetExists)
            return {false, QString(), moved.message};
    }
    return {false, QString(),
            QStringLiteral("no free name in the trash for %1").arg(FileNames::display(name))};
}
