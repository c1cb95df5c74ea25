#include "JournalFile.h"

#include "FileNames.h"

#include <QDir>
#include <QThread>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray bytesOf(const QString &path)
{
    return FileNames::encode(path);
}

QString shown(const QString &path)
{
    return QStringLiteral("\u201c%1\u201d").arg(FileNames::display(path));
}

bool writeAll(int fd, QByteArrayView bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, size_t(bytes.size() - done));
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            done += written;
    }
    return true;
}

QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash > 0 ? path.first(slash) : QStringLiteral("/");
}

// Makes the folder's entries (a file created or renamed) durable.
void syncFolder(const QString &path)
{
    const int folder =
        ::open(bytesOf(folderOf(path)).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

} // namespace

JournalFile::JournalFile(const QString &path) : m_path(path) {}

JournalFile::~JournalFile()
{
    close();
}

bool JournalFile::open(std::chrono::milliseconds wait)
{
    close();
    if (lockAndOpen(wait))
        return true;
    close();
    return false;
}

bool JournalFile::lockAndOpen(std::chrono::milliseconds wait)
{
    const QString folder = folderOf(m_path);
    if (!QDir().mkpath(folder))
        return failed(QStringLiteral("cannot create the folder %1").arg(shown(folder)));
    const QString lockPath = m_path + QStringLiteral(".lock");
    m_lock = ::open(bytesOf(lockPath).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_lock < 0)
        return failed(QStringLiteral("cannot open %1").arg(shown(lockPath)));
    m_inUseElsewhere = false;
    const auto deadline = std::chrono::steady_clock::now() + wait;
    while (::flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK)
            return failed(QStringLiteral("cannot lock %1").arg(shown(lockPath)));
        if (std::chrono::steady_clock::now() >= deadline) {
            m_error = QStringLiteral("the move journal %1 is in use by another Brevano process")
                          .arg(shown(m_path));
            m_inUseElsewhere = true;
            return false;
        }
        QThread::msleep(50);
    }
    m_fd = ::open(bytesOf(m_path).constData(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    struct stat info;
    if (m_fd < 0 || ::fstat(m_fd, &info) != 0)
        return failed(QStringLiteral("cannot open the move journal %1").arg(shown(m_path)));
    m_size = info.st_size;
    if (m_size == 0)
        syncFolder(m_path);
    m_error.clear();
    return true;
}

std::optional<QByteArray> JournalFile::read()
{
    QByteArray bytes(m_size, Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::pread(m_fd, bytes.data() + done, size_t(bytes.size() - done), done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            failed(QStringLiteral("cannot read the move journal %1").arg(shown(m_path)));
            return std::nullopt;
        }
        if (got == 0)
            break;
        done += got;
    }
    bytes.truncate(done);
    return bytes;
}

bool JournalFile::truncate(qint64 size)
{
    if (::ftruncate(m_fd, size) != 0 || ::fsync(m_fd) != 0)
        return failed(QStringLiteral("cannot repair the move journal %1").arg(shown(m_path)));
    m_size = size;
    return true;
}

bool JournalFile::append(QByteArrayView bytes)
{
    if (writeAll(m_fd, bytes) && ::fsync(m_fd) == 0) {
        m_size += bytes.size();
        return true;
    }
    failed(QStringLiteral("cannot write the move journal %1").arg(shown(m_path)));
    // A line cut short must not stay in front of what comes next: when it
    // cannot be taken back, nothing more is written.
    if (m_fd >= 0 && ::ftruncate(m_fd, m_size) != 0) {
        ::close(m_fd);
        m_fd = -1;
    }
    return false;
}

bool JournalFile::replace(QByteArrayView contents, const QString &keepAs)
{
    const QString temporary = m_path + QStringLiteral(".new");
    const QByteArray temporaryBytes = bytesOf(temporary);
    const int fd =
        ::open(temporaryBytes.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return failed(QStringLiteral("cannot write %1").arg(shown(temporary)));
    const bool written = writeAll(fd, contents) && ::fsync(fd) == 0;
    ::close(fd);
    if (!written) {
        failed(QStringLiteral("cannot write %1").arg(shown(temporary)));
        ::unlink(temporaryBytes.constData());
        return false;
    }
    const QByteArray path = bytesOf(m_path);
    if (!keepAs.isEmpty()) {
        // Linked first, so that a crash before the rename below leaves the
        // journal where it was.
        const QByteArray kept = bytesOf(keepAs);
        ::unlink(kept.constData());
        if (::link(path.constData(), kept.constData()) != 0 &&
            ::rename(path.constData(), kept.constData()) != 0) {
            failed(QStringLiteral("cannot keep the move journal as %1").arg(shown(keepAs)));
            ::unlink(temporaryBytes.constData());
            return false;
        }
    }
    if (::rename(temporaryBytes.constData(), path.constData()) != 0) {
        failed(QStringLiteral("cannot replace the move journal %1").arg(shown(m_path)));
        ::unlink(temporaryBytes.constData());
        return false;
    }
    syncFolder(m_path);
    ::close(m_fd);
    m_fd = ::open(path.constData(), O_RDWR | O_APPEND | O_CLOEXEC);
    if (m_fd < 0)
        return failed(QStringLiteral("cannot open the move journal %1").arg(shown(m_path)));
    m_size = contents.size();
    return true;
}

bool JournalFile::failed(const QString &what)
{
    m_error = what + QStringLiteral(": ") + qt_error_string(errno);
    return false;
}

void JournalFile::close()
{
    if (m_fd >= 0)
        ::close(m_fd);
    if (m_lock >= 0)
        ::close(m_lock);
    m_fd = m_lock = -1;
}
