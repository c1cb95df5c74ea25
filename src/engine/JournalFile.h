#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

// The journal's file on disk: the lock that makes one process its owner, and
// reading, appending and rewriting the file so that what was written survives
// a crash.
//
// The lock is an exclusive flock on a file of its own beside the journal
// ("<journal>.lock"), held for the object's lifetime: the journal itself is
// replaced when it is compacted or set aside, and a lock taken on it would
// stay with the file that was replaced while a newcomer locked the new one.
class JournalFile
{
public:
    explicit JournalFile(const QString &path);
    ~JournalFile();
    JournalFile(const JournalFile &) = delete;
    JournalFile &operator=(const JournalFile &) = delete;

    // Creates the folder, takes the lock (trying every 50 ms for up to wait
    // while another process holds it) and opens the journal for appending,
    // created empty when missing. False, with error() saying why, on failure.
    bool open(std::chrono::milliseconds wait);
    // The whole file.
    std::optional<QByteArray> read();
    // Cuts the file back to size.
    bool truncate(qint64 size);
    // Appends bytes with as few writes as it takes and fsyncs once; on failure
    // none of them stays.
    bool append(QByteArrayView bytes);
    // Writes the file anew, atomically: a temporary file beside it is written,
    // flushed and renamed over it. With keepAs, the file replaced is kept
    // under that name (replacing what had it).
    bool replace(QByteArrayView contents, const QString &keepAs = {});
    QString error() const { return m_error; }
    // The last open() failed because another process holds the lock.
    bool inUseElsewhere() const { return m_inUseElsewhere; }
    // Lets go of the file and the lock.
    void close();

private:
    bool lockAndOpen(std::chrono::milliseconds wait);
    bool failed(const QString &what);

    QString m_path;
    int m_lock = -1;
    int m_fd = -1;
    qint64 m_size = 0;
    QString m_error;
    bool m_inUseElsewhere = false;
};
