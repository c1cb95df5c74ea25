#pragma once

#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

// The logical size (bytes of content) of a folder and everything in it. The
// folder itself may be a link to one; links in it are counted as links. With a
// start time the walk gives up 0.5 seconds after it, as it enters the next
// folder.
class FolderSize
{
public:
    using Clock = std::function<QDateTime()>;
    static constexpr qint64 kTimeLimitMs = 500;

    explicit FolderSize(Clock now) : m_now(std::move(now)) {}

    // 0 when the walk gave up or nothing is at path; a file's own size for a file.
    quint64 getFolderSize(const QString &path, const std::optional<QDateTime> &start) const;

    // getFolderSize from now on the real clock, safe on any thread: for workers,
    // which may not read the engine's clock.
    static quint64 estimateNow(const QString &path);

    // How many entries a walk that starts now counts before the time limit stops it.
    quint64 entriesWithinLimit(const QString &path) const;

private:
    quint64 walk(const QByteArray &root, const std::optional<QDateTime> &start, bool &aborted,
                 quint64 &entries) const;

    Clock m_now;
};
