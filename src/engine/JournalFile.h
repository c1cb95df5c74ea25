#pragma once

#include "MoveJournal.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

// The journal's file on disk: the lock that makes one process its owner, and
// reading, appending and rewriting the file so that what was written survives
// a crash; and the index beside it ("<journal>.index").
//
// The lock is an exclusive flock on a file of its own beside the journal
// ("<journal>.lock"), held for the object's lifetime: the journal itself is
// replaced when it is compacted or set aside, and a lock taken on it would
// stay with the file that was replaced while a newcomer locked the new one.
class JournalFile
{
public:
    // Where the file ends: which file it is, its size and its last line, to
    // tell later whether it is still that file, maybe grown since.
    struct Mark
    {
        MoveJournal::Identity file;
        qint64 size = 0;
        qint64 lastLine = 0;     // where the last line starts
        quint32 lastLineSum = 0; // the CRC-32C of its bytes, newline included
    };

    explicit JournalFile(const QString &path);
    ~JournalFile();
    JournalFile(const JournalFile &) = delete;
    JournalFile &operator=(const JournalFile &) = delete;

    // Creates the folder, takes the lock (trying every 50 ms for up to wait
    // while another process holds it) and opens the journal for appending,
    // created empty when missing. False, with error() saying why, on failure.
    bool open(std::chrono::milliseconds wait);
    qint64 size() const { return m_size; }
    // The bytes from `from` up to `to` (the end when -1).
    std::optional<QByteArray> read(qint64 from = 0, qint64 to = -1);
    std::optional<Mark> mark();
    // Whether the file is the one marked, as long as then or longer, with the
    // marked last line still where it was.
    bool continues(const Mark &mark);
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

    // The index: read whole; written anew atomically, though not synced (it
    // can be rebuilt); removed, so that no stale one is left while the file
    // is written anew.
    std::optional<QByteArray> readIndex() const;
    void writeIndex(QByteArrayView contents) const;
    void removeIndex() const;
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
