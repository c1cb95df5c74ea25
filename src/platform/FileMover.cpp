#include "FileMover.h"

#include "FileNames.h"

#include <QSet>
#include <QStringList>

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
thread_local FileMover::Observer *t_observer = nullptr;
bool g_noReplaceRenameUnavailable = false;

QByteArray bytes(const QString &path)
{
    return FileNames::encode(path);
}

// A path as people read it.
QString shown(const QByteArray &path)
{
    return FileNames::display(FileNames::decode(path));
}

// strerror_r gives the text (GNU) or fills the buffer (POSIX).
[[maybe_unused]] const char *errorTextIn(const char *text, const char *)
{
    return text;
}
[[maybe_unused]] const char *errorTextIn(int, const char *buffer)
{
    return buffer;
}

// Moves run on worker threads too, and strerror's buffer is shared.
QString errorText(int error)
{
    char buffer[256] = {};
    return QString::fromLocal8Bit(errorTextIn(::strerror_r(error, buffer, sizeof buffer), buffer));
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

// What an entry was when it was copied: the source keeps what no longer matches.
struct Snapshot
{
    dev_t device = 0;
    ino_t inode = 0;
    mode_t type = 0;
    off_t size = 0;
    struct timespec modified = {};
    struct timespec changed = {};

    static Snapshot of(const struct stat &info)
    {
        return {info.st_dev,  info.st_ino,  mode_t(info.st_mode & S_IFMT),
                info.st_size, info.st_mtim, info.st_ctim};
    }
    bool sameItem(const struct stat &info) const
    {
        return info.st_dev == device && info.st_ino == inode && (info.st_mode & S_IFMT) == type;
    }
    // A folder's own dates change with what is put into it; its entries tell.
    bool unchanged(const struct stat &info) const
    {
        return sameItem(info) &&
               (type == S_IFDIR ||
                (info.st_size == size && info.st_mtim.tv_sec == modified.tv_sec &&
                 info.st_mtim.tv_nsec == modified.tv_nsec &&
                 info.st_ctim.tv_sec == changed.tv_sec && info.st_ctim.tv_nsec == changed.tv_nsec));
    }
};

struct CopiedEntry
{
    QByteArray name;
    Snapshot snapshot;
    std::vector<CopiedEntry> children; // of a folder
};

// An open file descriptor, closed when it goes.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }

private:
    int m_fd;
};

// A link's own text (size as lstat gave it); null when it cannot be read.
QByteArray linkText(int parent, const QByteArray &name, off_t size)
{
    QByteArray text(size > 0 ? size + 1 : 4096, '\0');
    const ssize_t length = ::readlinkat(parent, name.constData(), text.data(), size_t(text.size()));
    return length < 0 ? QByteArray() : text.left(length);
}

bool copyTimes(const char *path, const struct stat &info, bool isLink)
{
    const struct timespec times[2] = {info.st_atim, info.st_mtim};
    return ::utimensat(AT_FDCWD, path, times, isLink ? AT_SYMLINK_NOFOLLOW : 0) == 0;
}

// Copies trees read relative to folder descriptors, never following a link,
// and records what each entry was as it was read.
class TreeCopy
{
public:
    QString error;

    // source (for texts and the hook) is name in the folder parent.
    bool copy(int parent, const QByteArray &source, const QByteArray &name,
              const QByteArray &target, CopiedEntry &entry)
    {
        entry.name = name;
        struct stat info;
        if (::fstatat(parent, name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            return fail("cannot read %1: %2", source);
        bool ok = false;
        if (S_ISDIR(info.st_mode))
            ok = copyFolder(parent, source, name, target, entry);
        else if (S_ISREG(info.st_mode))
            ok = copyFile(parent, source, name, target, entry);
        else if (S_ISLNK(info.st_mode))
            ok = copyLink(parent, source, name, target, info, entry);
        else
            error = QStringLiteral("%1 is neither a file, a folder nor a link").arg(shown(source));
        if (ok && g_faultHook &&
            !g_faultHook(QStringLiteral("entry copied"), FileNames::decode(source)))
            return error = QStringLiteral("stopped by the test hook"), false;
        return ok;
    }

private:
    bool fail(const char *format, const QByteArray &path)
    {
        error = QString::fromLatin1(format).arg(shown(path), errorText(errno));
        return false;
    }

    bool copyFile(int parent, const QByteArray &source, const QByteArray &name,
                  const QByteArray &target, CopiedEntry &entry)
    {
        const Descriptor in(::openat(parent, name.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        struct stat info;
        if (!in.isValid() || ::fstat(in.get(), &info) != 0)
            return fail("cannot read %1: %2", source);
        entry.snapshot = Snapshot::of(info);
        const Descriptor out(
            ::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!out.isValid())
            return fail("cannot create %1: %2", target);
        std::unique_ptr<char[]> buffer(new char[1 << 20]);
        for (;;) {
            const ssize_t got = ::read(in.get(), buffer.get(), 1 << 20);
            if (got == 0)
                break;
            if (got < 0) {
                if (errno == EINTR)
                    continue;
                return fail("cannot read %1: %2", source);
            }
            for (ssize_t written = 0; written < got;) {
                const ssize_t put =
                    ::write(out.get(), buffer.get() + written, size_t(got - written));
                if (put < 0 && errno == EINTR)
                    continue;
                if (put <= 0)
                    return fail("cannot write %1: %2", target);
                written += put;
            }
        }
        // A full disk may only show itself when the data is flushed.
        if (::fsync(out.get()) != 0 || ::fchmod(out.get(), info.st_mode & 07777) != 0)
            return fail("cannot write %1: %2", target);
        if (!copyTimes(target.constData(), info, false))
            return fail("cannot set the dates of %1: %2", target);
        return true;
    }

    bool copyFolder(int parent, const QByteArray &source, const QByteArray &name,
                    const QByteArray &target, CopiedEntry &entry)
    {
        const int fd =
            ::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        struct stat info;
        if (fd < 0 || ::fstat(fd, &info) != 0) {
            const int listError = errno;
            if (fd >= 0)
                ::close(fd);
            errno = listError;
            return fail("cannot list %1: %2", source);
        }
        entry.snapshot = Snapshot::of(info);
        DIR *folder = ::fdopendir(fd); // owns fd from here on
        if (!folder) {
            ::close(fd);
            return fail("cannot list %1: %2", source);
        }
        if (::mkdir(target.constData(), 0700) != 0) {
            ::closedir(folder);
            return fail("cannot create %1: %2", target);
        }
        bool ok = true;
        errno = 0;
        while (const dirent *found = ::readdir(folder)) {
            const QByteArray child(found->d_name);
            if (child == "." || child == "..")
                continue;
            entry.children.emplace_back();
            if (!copy(fd, source + '/' + child, child, target + '/' + child,
                      entry.children.back())) {
                ok = false;
                break;
            }
            errno = 0;
        }
        if (ok && errno != 0)
            ok = fail("cannot list %1: %2", source);
        ::closedir(folder);
        if (!ok)
            return false;
        // Permissions last, so that a read-only folder could still be filled.
        if (::chmod(target.constData(), info.st_mode & 07777) != 0)
            return fail("cannot set the permissions of %1: %2", target);
        if (!copyTimes(target.constData(), info, false))
            return fail("cannot set the dates of %1: %2", target);
        return true;
    }

    bool copyLink(int parent, const QByteArray &source, const QByteArray &name,
                  const QByteArray &target, const struct stat &info, CopiedEntry &entry)
    {
        entry.snapshot = Snapshot::of(info);
        const QByteArray link = linkText(parent, name, info.st_size);
        if (link.isNull() || ::symlink(link.constData(), target.constData()) != 0)
            return fail("cannot copy the link %1: %2", source);
        copyTimes(target.constData(), info, true);
        return true;
    }
};

// Removes a tree we made ourselves (a partial copy) without following links;
// false when anything stayed. Its folders may carry the read-only modes copied
// from the source, so each is made writable for us first.
bool removeTree(const QByteArray &path)
{
    struct stat info;
    if (::lstat(path.constData(), &info) != 0)
        return errno == ENOENT;
    if (!S_ISDIR(info.st_mode))
        return ::unlink(path.constData()) == 0;
    ::chmod(path.constData(), (info.st_mode & 07777) | S_IRWXU);
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

// What stayed at the source after a copy, by paths relative to its folder.
struct Leftovers
{
    QStringList changed;     // appeared or changed during the copy
    QStringList notInCopy;   // gone from the copy, or not as copied, before the source went
    QStringList unremovable; // with the reason

    bool isEmpty() const
    {
        return changed.isEmpty() && notInCopy.isEmpty() && unremovable.isEmpty();
    }
    QString text() const
    {
        const auto list = [](const QStringList &paths) {
            constexpr qsizetype kShown = 5;
            QString text = paths.mid(0, kShown).join(QStringLiteral(", "));
            if (paths.size() > kShown)
                text += QStringLiteral(" and %1 more").arg(paths.size() - kShown);
            return text;
        };
        QStringList parts;
        if (!changed.isEmpty())
            parts.append(QStringLiteral("what changed during the copy stays: ") + list(changed));
        if (!notInCopy.isEmpty())
            parts.append(QStringLiteral("what the copy no longer holds stays: ") + list(notInCopy));
        if (!unremovable.isEmpty())
            parts.append(QStringLiteral("could not be removed: ") + list(unremovable));
        return parts.join(QStringLiteral("; "));
    }
};

// Whether the copy's counterpart of an entry (copyName in copyParent) is still
// there as it was copied: of the same kind and, for a file, the same size.
// Something else may have moved into the copy's folder since it was placed.
bool stillInCopy(int copyParent, const QByteArray &copyName, const Snapshot &copied)
{
    struct stat info;
    return ::fstatat(copyParent, copyName.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
           mode_t(info.st_mode & S_IFMT) == copied.type &&
           (copied.type != S_IFREG || info.st_size == copied.size);
}

// Removes from the source what was copied, is unchanged since and is still in
// the copy (copyName in copyParent), entry by entry through folder
// descriptors; a folder goes only when it is empty then.
void removeCopied(int parent, int copyParent, const QByteArray &copyName, const CopiedEntry &entry,
                  const QByteArray &relative, Leftovers &left)
{
    const auto unremovable = [&](int error) {
        left.unremovable.append(QStringLiteral("%1 (%2)").arg(shown(relative), errorText(error)));
    };
    struct stat now;
    if (::fstatat(parent, entry.name.constData(), &now, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) // gone meanwhile: nothing to keep
            unremovable(errno);
        return;
    }
    if (!entry.snapshot.unchanged(now))
        return left.changed.append(shown(relative));
    if (!stillInCopy(copyParent, copyName, entry.snapshot))
        return left.notInCopy.append(shown(relative));
    if (entry.snapshot.type != S_IFDIR) {
        if (::unlinkat(parent, entry.name.constData(), 0) != 0)
            unremovable(errno);
        return;
    }
    constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor folder(::openat(parent, entry.name.constData(), kFolder));
    if (!folder.isValid())
        return unremovable(errno);
    if (::fstat(folder.get(), &now) != 0 || !entry.snapshot.sameItem(now))
        return left.changed.append(shown(relative));
    const Descriptor copyFolder(::openat(copyParent, copyName.constData(), kFolder));
    if (!copyFolder.isValid())
        return left.notInCopy.append(shown(relative));
    QSet<QByteArray> copied;
    for (const CopiedEntry &child : entry.children) {
        copied.insert(child.name);
        removeCopied(folder.get(), copyFolder.get(), child.name, child, relative + '/' + child.name,
                     left);
    }
    if (::unlinkat(parent, entry.name.constData(), AT_REMOVEDIR) == 0)
        return;
    if (errno != ENOTEMPTY && errno != EEXIST)
        return unremovable(errno);
    // Not empty: name what appeared in it during the copy.
    const int listing = ::dup(folder.get());
    DIR *rest = listing < 0 ? nullptr : ::fdopendir(listing);
    if (!rest) {
        if (listing >= 0)
            ::close(listing);
        return;
    }
    ::rewinddir(rest);
    while (const dirent *found = ::readdir(rest)) {
        const QByteArray name(found->d_name);
        if (name != "." && name != ".." && !copied.contains(name))
            left.changed.append(shown(relative + '/' + name));
    }
    ::closedir(rest);
}

QByteArray temporaryNameBeside(const QByteArray &target)
{
    thread_local std::mt19937_64 random{std::random_device{}()};
    const qsizetype slash = target.lastIndexOf('/');
    return target.left(slash + 1) + FileMover::kPartialPrefix +
           QByteArray::number(quint64(random()), 36);
}

// The folder that holds path, and path's name in it.
std::pair<QByteArray, QByteArray> splitPath(QByteArray path)
{
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return {QByteArrayLiteral("."), path};
    return {slash == 0 ? QByteArrayLiteral("/") : path.left(slash), path.mid(slash + 1)};
}

// The answer of a move whose copy is at target while left stayed in sourceFolder.
FileMover::Result copiedExcept(const Leftovers &left, const QByteArray &target,
                               const QByteArray &sourceFolder)
{
    if (left.isEmpty())
        return {FileMover::Status::Moved, QString()};
    return {FileMover::Status::Incomplete,
            QStringLiteral("copied to %1, but in %2 %3")
                .arg(shown(target), shown(sourceFolder), left.text())};
}

// ---- finishing a move whose copy is in place ----

// Whether two open files hold the same bytes; both are read from the start.
bool sameBytes(int one, int other)
{
    constexpr size_t kChunk = 1 << 20;
    std::unique_ptr<char[]> a(new char[kChunk]);
    std::unique_ptr<char[]> b(new char[kChunk]);
    for (off_t offset = 0;;) {
        const ssize_t got = ::pread(one, a.get(), kChunk, offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        // The other file must give exactly as much, in as many reads as it takes.
        for (ssize_t have = 0; have < got;) {
            const ssize_t more = ::pread(other, b.get() + have, size_t(got - have), offset + have);
            if (more < 0 && errno == EINTR)
                continue;
            if (more <= 0)
                return false;
            have += more;
        }
        if (got == 0) {
            char extra;
            return ::pread(other, &extra, 1, offset) == 0;
        }
        if (std::memcmp(a.get(), b.get(), size_t(got)) != 0)
            return false;
        offset += got;
    }
}

// Whether the source entry (a file or link, read as info) holds what its
// counterpart in the copy holds.
bool sameAsCopy(int sourceParent, const QByteArray &sourceName, const struct stat &info,
                int copyParent, const QByteArray &copyName, const struct stat &copied)
{
    if (info.st_size != copied.st_size)
        return false;
    if (S_ISLNK(info.st_mode)) {
        const QByteArray text = linkText(sourceParent, sourceName, info.st_size);
        return !text.isNull() && text == linkText(copyParent, copyName, copied.st_size);
    }
    if (info.st_mtim.tv_sec != copied.st_mtim.tv_sec ||
        info.st_mtim.tv_nsec != copied.st_mtim.tv_nsec)
        return false;
    const Descriptor in(
        ::openat(sourceParent, sourceName.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    const Descriptor out(
        ::openat(copyParent, copyName.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat opened;
    return in.isValid() && out.isValid() && ::fstat(in.get(), &opened) == 0 &&
           Snapshot::of(info).unchanged(opened) && sameBytes(in.get(), out.get());
}

// Removes from the source what its counterpart in the copy holds as well, entry
// by entry through folder descriptors; a folder goes only when it is empty then.
void removeWhatWasCopied(int sourceParent, const QByteArray &sourceName, int copyParent,
                         const QByteArray &copyName, const QByteArray &relative, Leftovers &left)
{
    const auto unremovable = [&](int error) {
        left.unremovable.append(QStringLiteral("%1 (%2)").arg(shown(relative), errorText(error)));
    };
    struct stat info;
    if (::fstatat(sourceParent, sourceName.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) // gone already: nothing to keep
            unremovable(errno);
        return;
    }
    struct stat copied;
    if (::fstatat(copyParent, copyName.constData(), &copied, AT_SYMLINK_NOFOLLOW) != 0 ||
        (copied.st_mode & S_IFMT) != (info.st_mode & S_IFMT))
        return left.changed.append(shown(relative));
    if (S_ISREG(info.st_mode) || S_ISLNK(info.st_mode)) {
        if (!sameAsCopy(sourceParent, sourceName, info, copyParent, copyName, copied))
            return left.changed.append(shown(relative));
        // Compared as it is still: what changed while it was read stays.
        struct stat now;
        if (::fstatat(sourceParent, sourceName.constData(), &now, AT_SYMLINK_NOFOLLOW) != 0 ||
            !Snapshot::of(info).unchanged(now))
            return left.changed.append(shown(relative));
        if (::unlinkat(sourceParent, sourceName.constData(), 0) != 0)
            unremovable(errno);
        return;
    }
    if (!S_ISDIR(info.st_mode))
        return left.changed.append(shown(relative));
    constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor copyFolder(::openat(copyParent, copyName.constData(), kFolder));
    if (!copyFolder.isValid())
        return unremovable(errno);
    const int fd = ::openat(sourceParent, sourceName.constData(), kFolder);
    DIR *folder = fd < 0 ? nullptr : ::fdopendir(fd); // owns fd from here on
    if (!folder) {
        const int error = errno;
        if (fd >= 0)
            ::close(fd);
        return unremovable(error);
    }
    // Names first: the folder changes while its entries are removed.
    QList<QByteArray> names;
    while (const dirent *found = ::readdir(folder)) {
        const QByteArray name(found->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    for (const QByteArray &name : std::as_const(names))
        removeWhatWasCopied(::dirfd(folder), name, copyFolder.get(), name, relative + '/' + name,
                            left);
    ::closedir(folder);
    if (::unlinkat(sourceParent, sourceName.constData(), AT_REMOVEDIR) != 0 && errno != ENOTEMPTY &&
        errno != EEXIST) // not empty: what stayed is named already
        unremovable(errno);
}

FileMover::Result moveAcrossFileSystems(const QByteArray &source, const QByteArray &target)
{
    struct stat targetInfo;
    if (::lstat(target.constData(), &targetInfo) == 0)
        return failed(shown(target), EEXIST);
    const auto [sourceFolder, sourceName] = splitPath(source);
    // The source's folder is held open: what is removed later is removed from it.
    const Descriptor parent(::open(sourceFolder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent.isValid())
        return failed(shown(source), errno);
    const QByteArray partial = temporaryNameBeside(target);
    if (t_observer)
        t_observer->willCopy(FileNames::decode(partial));
    TreeCopy copy;
    CopiedEntry copied;
    // The source is untouched on every way out before the rename; what must
    // go is our partial copy, and if even that cannot, the reason says so.
    const auto discardPartial = [&partial](FileMover::Result result) {
        if (!removeTree(partial))
            result.message +=
                QStringLiteral("; the partial copy %1 could not be removed").arg(shown(partial));
        return result;
    };
    if (!copy.copy(parent.get(), source, sourceName, partial, copied))
        return discardPartial({FileMover::Status::Failed, copy.error});
    if (g_faultHook && !g_faultHook(QStringLiteral("copied"), FileNames::decode(source)))
        return discardPartial(
            {FileMover::Status::Failed, QStringLiteral("stopped by the test hook")});
    struct stat copyInfo;
    if (::lstat(partial.constData(), &copyInfo) != 0)
        return discardPartial(failed(shown(partial), errno));
    if (t_observer)
        t_observer->willPlace(FileNames::decode(partial), quint64(copyInfo.st_dev),
                              quint64(copyInfo.st_ino));
    if (atomicMove(partial.constData(), target.constData()) != 0)
        return discardPartial(failed(shown(target), errno));
    // Make the new name durable before the source goes away.
    if (const Descriptor folder(
            ::open(splitPath(target).first.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        folder.isValid())
        ::fsync(folder.get());
    if (g_faultHook)
        g_faultHook(QStringLiteral("placed"), FileNames::decode(source));
    // What lies at target must still be the copy we placed there; if not
    // (or it cannot be told), the source stays whole.
    const auto [targetFolder, targetName] = splitPath(target);
    const Descriptor placed(::open(targetFolder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat placedInfo;
    if (!placed.isValid() ||
        ::fstatat(placed.get(), targetName.constData(), &placedInfo, AT_SYMLINK_NOFOLLOW) != 0 ||
        placedInfo.st_dev != copyInfo.st_dev || placedInfo.st_ino != copyInfo.st_ino)
        return {FileMover::Status::Incomplete,
                QStringLiteral("copied to %1, but %2 stays: the copy is no longer there as placed")
                    .arg(shown(target), shown(source))};
    Leftovers left;
    removeCopied(parent.get(), placed.get(), targetName, copied, sourceName, left);
    return copiedExcept(left, target, sourceFolder);
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
    return failed(FileNames::display(source), errno);
}

FileMover::Result FileMover::rename(const QString &source, const QString &target)
{
    if (atomicMove(bytes(source).constData(), bytes(target).constData()) == 0)
        return {Status::Moved, QString()};
    return failed(FileNames::display(source), errno);
}

FileMover::ObserverScope::ObserverScope(Observer *observer) : m_previous(t_observer)
{
    t_observer = observer;
}

FileMover::ObserverScope::~ObserverScope()
{
    t_observer = m_previous;
}

FileMover::Observer *FileMover::observer()
{
    return t_observer;
}

bool FileMover::removePartialCopy(const QString &path, QString *message)
{
    const QByteArray bytesOfPath = bytes(path);
    if (!splitPath(bytesOfPath).second.startsWith(kPartialPrefix)) {
        if (message)
            *message = QStringLiteral("%1 is not a partial copy").arg(FileNames::display(path));
        return false;
    }
    if (removeTree(bytesOfPath))
        return true;
    if (message)
        *message = QStringLiteral("the partial copy %1 could not be removed: %2")
                       .arg(FileNames::display(path), errorText(errno));
    return false;
}

FileMover::Result FileMover::finishInterruptedMove(const QString &source, const QString &copy)
{
    const QByteArray from = bytes(source);
    const QByteArray to = bytes(copy);
    struct stat info;
    if (::lstat(from.constData(), &info) != 0)
        return errno == ENOENT ? Result{Status::Moved, QString()}
                               : failed(FileNames::display(source), errno);
    const auto [sourceFolder, sourceName] = splitPath(from);
    const auto [copyFolder, copyName] = splitPath(to);
    const Descriptor sourceParent(
        ::open(sourceFolder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!sourceParent.isValid())
        return failed(FileNames::display(source), errno);
    const Descriptor copyParent(::open(copyFolder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!copyParent.isValid())
        return failed(FileNames::display(copy), errno);
    Leftovers left;
    removeWhatWasCopied(sourceParent.get(), sourceName, copyParent.get(), copyName, sourceName,
                        left);
    return copiedExcept(left, to, sourceFolder);
}

void FileMover::setFaultHookForTesting(FaultHook hook)
{
    g_faultHook = std::move(hook);
}

void FileMover::setNoReplaceRenameUnavailableForTesting(bool unavailable)
{
    g_noReplaceRenameUnavailable = unavailable;
}
