#include "JournalFile.h"

#include "FileNames.h"
#include "JournalLine.h"

#include <QDir>
#include <QThread>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr QLatin1String kIndexSuffix(".index");
// Far more than the index of the runs the journal keeps ever takes.
constexpr qsizetype kMaxIndexBytes = 16 * 1024 * 1024;

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

std::optional<QByteArray> JournalFile::read(qint64 from, qint64 to)
{
    if (to < 0)
        to = m_size;
    QByteArray bytes(std::max<qint64>(0, to - from), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t got =
            ::pread(m_fd, bytes.data() + done, size_t(bytes.size() - done), from + done);
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

std::optional<JournalFile::Mark> JournalFile::mark()
{
    struct stat info;
    if (m_size == 0 || ::fstat(m_fd, &info) != 0)
        return std::nullopt;
    // The last line begins after the newline before the one that ends it.
    constexpr qint64 kStep = 4096;
    qint64 lastLine = 0;
    for (qint64 to = m_size - 1; to > 0; to -= kStep) {
        const qint64 from = std::max<qint64>(0, to - kStep);
        const std::optional<QByteArray> bytes = read(from, to);
        if (!bytes)
            return std::nullopt;
        if (const qsizetype newline = bytes->lastIndexOf('\n'); newline >= 0) {
            lastLine = from + newline + 1;
            break;
        }
    }
    const std::optional<QByteArray> line = read(lastLine);
    if (!line)
        return std::nullopt;
    return Mark{{quint64(info.st_dev), quint64(info.st_ino)},
                m_size,
                lastLine,
                JournalLine::checksum(*line)};
}

bool JournalFile::continues(const Mark &mark)
{
    struct stat info;
    if (::fstat(m_fd, &info) != 0 ||
        !(MoveJournal::Identity{quint64(info.st_dev), quint64(info.st_ino)} == mark.file) ||
        m_size < mark.size || mark.lastLine < 0 || mark.lastLine >= mark.size)
        return false;
    // From the newline before the line, if any.
    const qint64 from = std::max<qint64>(0, mark.lastLine - 1);
    const std::optional<QByteArray> bytes = read(from, mark.size);
    return bytes && bytes->size() == mark.size - from &&
           (mark.lastLine == 0 || bytes->startsWith('\n')) &&
           JournalLine::checksum(QByteArrayView(*bytes).sliced(mark.lastLine - from)) ==
               mark.lastLineSum;
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

std::optional<QByteArray> JournalFile::readIndex() const
{
    const int fd = ::open(bytesOf(m_path + kIndexSuffix).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    QByteArray bytes;
    char chunk[16384];
    ssize_t got = 0;
    while ((got = ::read(fd, chunk, sizeof chunk)) != 0) {
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 || bytes.size() + got > kMaxIndexBytes) {
            ::close(fd);
            return std::nullopt;
        }
        bytes.append(chunk, got);
    }
    ::close(fd);
    return bytes;
}

void JournalFile::writeIndex(QByteArrayView contents) const
{
    const QByteArray index = bytesOf(m_path + kIndexSuffix);
    const QByteArray temporary = index + ".new";
    const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool written = fd >= 0 && writeAll(fd, contents);
    if (fd >= 0)
        ::close(fd);
    if (!written || ::rename(temporary.constData(), index.constData()) != 0) {
        ::unlink(temporary.constData());
        ::unlink(index.constData());
    }
}

void JournalFile::removeIndex() const
{
    ::unlink(bytesOf(m_path + kIndexSuffix).constData());
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
