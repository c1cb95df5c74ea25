#include "FileMover.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/fs.h>
#include <sys/syscall.h>
#endif

namespace {

FileMover::FaultHook g_faultHook;
bool g_noReplaceRenameUnavailable = false;

QByteArray bytes(const QString &path)
{
    return QFile::encodeName(path);
}

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

FileMover::Result failed(const QString &what, int error)
{
    return {error == EEXIST ? FileMover::Status::TargetExists : FileMover::Status::Failed,
            what + QStringLiteral(": ") + errorText(error)};
}

// rename(2) that fails with EEXIST instead of replacing. -1 with errno EINVAL or
// ENOSYS where the file system or kernel has no such rename.
int renameNoReplace(const char *source, const char *target)
{
    if (g_noReplaceRenameUnavailable) {
        errno = EINVAL;
        return -1;
    }
#if defined(__linux__) && defined(SYS_renameat2)
    return int(::syscall(SYS_renameat2, AT_FDCWD, source, AT_FDCWD, target, RENAME_NOREPLACE));
#elif defined(__APPLE__)
    return ::renamex_np(source, target, RENAME_EXCL);
#else
    errno = ENOSYS;
    return -1;
#endif
}

// For file systems without a no-replace rename. Files and links: a hard link
// claims the name atomically, then the old name goes. Folders: an empty folder
// claims the name, and rename(2) may replace only that empty folder of ours.
int fallbackNoReplace(const char *source, const char *target)
{
    struct stat info;
    if (::lstat(source, &info) != 0)
        return -1;
    if (S_ISDIR(info.st_mode)) {
        if (::mkdir(target, 0700) != 0)
            return -1;
        if (::rename(source, target) != 0) {
            const int error = errno;
            ::rmdir(target); // still ours and empty, or rename would have succeeded
            errno = error;
            return -1;
        }
        return 0;
    }
    if (::linkat(AT_FDCWD, source, AT_FDCWD, target, 0) != 0)
        return -1;
    if (::unlink(source) != 0) {
        const int error = errno;
        ::unlink(target); // the source is still there: drop the second name
        errno = error;
        return -1;
    }
    return 0;
}

int atomicMove(const char *source, const char *target)
{
    if (renameNoReplace(source, target) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)
        return -1;
    return fallbackNoReplace(source, target);
}

// ---- copying across file systems ----

bool copyTimes(const char *path, const struct stat &info, bool isLink)
{
    const struct timespec times[2] = {info.st_atim, info.st_mtim};
    return ::utimensat(AT_FDCWD, path, times, isLink ? AT_SYMLINK_NOFOLLOW : 0) == 0;
}

bool copyTree(const QByteArray &source, const QByteArray &target, QString &error);

bool copyFile(const QByteArray &source, const QByteArray &target, const struct stat &info,
              QString &error)
{
    const int in = ::open(source.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (in < 0)
        return error = QStringLiteral("cannot read %1: %2")
                           .arg(QFile::decodeName(source), errorText(errno)),
               false;
    const int out = ::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (out < 0) {
        error =
            QStringLiteral("cannot create %1: %2").arg(QFile::decodeName(target), errorText(errno));
        ::close(in);
        return false;
    }
    std::unique_ptr<char[]> buffer(new char[1 << 20]);
    bool ok = true;
    for (;;) {
        const ssize_t got = ::read(in, buffer.get(), 1 << 20);
        if (got == 0)
            break;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            error = QStringLiteral("cannot read %1: %2")
                        .arg(QFile::decodeName(source), errorText(errno));
            ok = false;
            break;
        }
        for (ssize_t written = 0; written < got && ok;) {
            const ssize_t put = ::write(out, buffer.get() + written, size_t(got - written));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0) {
                error = QStringLiteral("cannot write %1: %2")
                            .arg(QFile::decodeName(target), errorText(errno));
                ok = false;
            } else {
                written += put;
            }
        }
        if (!ok)
            break;
    }
    // A full disk may only show itself when the data is flushed.
    if (ok && ::fsync(out) != 0) {
        error =
            QStringLiteral("cannot write %1: %2").arg(QFile::decodeName(target), errorText(errno));
        ok = false;
    }
    ok = ok && ::fchmod(out, info.st_mode & 07777) == 0;
    if (::close(out) != 0 && ok) {
        error =
            QStringLiteral("cannot write %1: %2").arg(QFile::decodeName(target), errorText(errno));
        ok = false;
    }
    ::close(in);
    return ok && copyTimes(target.constData(), info, false);
}

bool copyFolder(const QByteArray &source, const QByteArray &target, const struct stat &info,
                QString &error)
{
    if (::mkdir(target.constData(), 0700) != 0)
        return error = QStringLiteral("cannot create %1: %2")
                           .arg(QFile::decodeName(target), errorText(errno)),
               false;
    DIR *folder = ::opendir(source.constData());
    if (!folder)
        return error = QStringLiteral("cannot list %1: %2")
                           .arg(QFile::decodeName(source), errorText(errno)),
               false;
    bool ok = true;
    errno = 0;
    while (const dirent *entry = ::readdir(folder)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        if (!copyTree(source + '/' + name, target + '/' + name, error)) {
            ok = false;
            break;
        }
        errno = 0;
    }
    if (ok && errno != 0) {
        error =
            QStringLiteral("cannot list %1: %2").arg(QFile::decodeName(source), errorText(errno));
        ok = false;
    }
    ::closedir(folder);
    // Permissions last, so that a read-only folder could still be filled.
    return ok && ::chmod(target.constData(), info.st_mode & 07777) == 0 &&
           copyTimes(target.constData(), info, false);
}

bool copyTree(const QByteArray &source, const QByteArray &target, QString &error)
{
    struct stat info;
    if (::lstat(source.constData(), &info) != 0)
        return error = QStringLiteral("cannot read %1: %2")
                           .arg(QFile::decodeName(source), errorText(errno)),
               false;
    if (S_ISDIR(info.st_mode))
        return copyFolder(source, target, info, error);
    if (S_ISREG(info.st_mode))
        return copyFile(source, target, info, error);
    if (S_ISLNK(info.st_mode)) {
        QByteArray link(info.st_size > 0 ? info.st_size + 1 : 4096, '\0');
        const ssize_t length = ::readlink(source.constData(), link.data(), size_t(link.size()));
        if (length < 0 || ::symlink(link.left(length).constData(), target.constData()) != 0)
            return error = QStringLiteral("cannot copy the link %1: %2")
                               .arg(QFile::decodeName(source), errorText(errno)),
                   false;
        copyTimes(target.constData(), info, true);
        return true;
    }
    error =
        QStringLiteral("%1 is neither a file, a folder nor a link").arg(QFile::decodeName(source));
    return false;
}

// Removes a tree without following links; false when anything stayed.
bool removeTree(const QByteArray &path)
{
    struct stat info;
    if (::lstat(path.constData(), &info) != 0)
        return errno == ENOENT;
    if (!S_ISDIR(info.st_mode))
        return ::unlink(path.constData()) == 0;
    bool ok = true;
    if (DIR *folder = ::opendir(path.constData())) {
        while (const dirent *entry = ::readdir(folder)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                ok = removeTree(path + '/' + name) && ok;
        }
        ::closedir(folder);
    }
    return ::rmdir(path.constData()) == 0 && ok;
}

QByteArray temporaryNameBeside(const QByteArray &target)
{
    static std::mt19937_64 random{std::random_device{}()};
    const qsizetype slash = target.lastIndexOf('/');
    return target.left(slash + 1) + ".brevano-partial-" + QByteArray::number(quint64(random()), 36);
}

FileMover::Result moveAcrossFileSystems(const QByteArray &source, const QByteArray &target)
{
    struct stat targetInfo;
    if (::lstat(target.constData(), &targetInfo) == 0)
        return failed(QFile::decodeName(target), EEXIST);
    const QByteArray partial = temporaryNameBeside(target);
    QString error;
    if (!copyTree(source, partial, error)) {
        removeTree(partial);
        return {FileMover::Status::Failed, error};
    }
    if (g_faultHook && !g_faultHook(QStringLiteral("copied"))) {
        removeTree(partial);
        return {FileMover::Status::Failed, QStringLiteral("stopped by the test hook")};
    }
    if (atomicMove(partial.constData(), target.constData()) != 0) {
        const int renameError = errno;
        removeTree(partial);
        return failed(QFile::decodeName(target), renameError);
    }
    // Make the new name durable before the source goes away.
    const qsizetype slash = target.lastIndexOf('/');
    if (const int folder =
            ::open(target.left(qMax<qsizetype>(slash, 1)).constData(), O_RDONLY | O_DIRECTORY);
        folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    if (!removeTree(source))
        return {FileMover::Status::Moved,
                QStringLiteral("copied to %1, but part of %2 could not be removed")
                    .arg(QFile::decodeName(target), QFile::decodeName(source))};
    return {FileMover::Status::Moved, QString()};
}

} // namespace

FileMover::Result FileMover::move(const QString &source, const QString &target)
{
    const QByteArray from = bytes(source);
    const QByteArray to = bytes(target);
    if (atomicMove(from.constData(), to.constData()) == 0)
        return {Status::Moved, QString()};
    if (errno == EXDEV)
        return moveAcrossFileSystems(from, to);
    return failed(source, errno);
}

void FileMover::setFaultHookForTesting(FaultHook hook)
{
    g_faultHook = std::move(hook);
}

void FileMover::setNoReplaceRenameUnavailableForTesting(bool unavailable)
{
    g_noReplaceRenameUnavailable = unavailable;
}
