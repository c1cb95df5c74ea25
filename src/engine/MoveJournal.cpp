#include "MoveJournal.h"

#include "AppFolders.h"
#include "FileNames.h"
#include "JournalAbbreviations.h"
#include "JournalFile.h"
#include "JournalIndex.h"
#include "JournalRecord.h"
#include "JournalRuns.h"

#include <sys/stat.h>

#include <utility>

// The file: a header line (the format's version and the number the next run
// takes), then records, one a line, only ever appended (JournalRecord.cpp
// describes each line). Every line ends with a checksum, so a line cut short
// or damaged is never taken for a record.
//
// Opening reads the index beside it (JournalIndex), rewritten whenever a run
// ends and whenever the file is written anew: while the file still ends where
// the index says, maybe grown since, only the lines of the runs begun since
// and of those the index knew unended are read. Without such an index the
// whole file is read, and the index written anew. Of what is read:
// - a last line cut short (no newline, or a wrong checksum on the last line
//   only) is what a crash while appending leaves: it is cut off;
// - a bad line anywhere else makes the file damaged: what can be read still
//   counts, the file is kept as "<journal>.bad" and a new one is written with
//   the records of the runs that were cut short, as recovery needs them.
// Lines opening did not read are checked when they are: a bad one found by
// run() or by compaction makes the file damaged in the same way.
// Compaction writes the file anew without the runs dropped; a run's records
// are either all kept or all dropped.

namespace {

using Run = MoveJournal::Run;

// Calls handle(line, end, complete) for each line of bytes, without its
// newline; end is where the next line starts; complete is false for a last
// line without a newline.
template <typename Handle> void forEachLine(QByteArrayView bytes, Handle handle)
{
    qsizetype at = 0;
    while (at < bytes.size()) {
        const qsizetype newline = bytes.indexOf('\n', at);
        const qsizetype end = newline < 0 ? bytes.size() : newline;
        handle(bytes.sliced(at, end - at), newline < 0 ? end : end + 1, newline >= 0);
        at = end + 1;
    }
}

// A buffer this large is let go of once written; a smaller one is kept for
// the next records.
constexpr qsizetype kKeptBufferBytes = 4 * 1024 * 1024;

} // namespace

class MoveJournal::Private
{
public:
    explicit Private(const QString &journalPath) : path(journalPath), file(journalPath) {}

    // Opens, locks and reads the journal; the caller holds the mutex.
    bool open(std::chrono::milliseconds lockWait);
    // Reads what opening needs of the journal just opened, and repairs what
    // needs it.
    bool load();
    // Keeps the journal as "<journal>.bad" and starts a new one: with the
    // records of the runs not ended where it is damaged, with none where it
    // is another version's.
    enum class Unreadable
    {
        Damaged,
        OtherVersion
    };
    void setAside(Unreadable why);
    // Adds a record to what is to be written and to what is known of its run.
    void add(JournalRecord record);
    void append(const JournalRecord &record);
    // add() for a caller without the lock: nothing while the journal is not
    // open; a durable record is synced, with all buffered before it.
    enum When
    {
        Buffered,
        Durable
    };
    void write(JournalRecord record, When when);
    bool sync();
    // True when the journal was written anew.
    bool compact(const QDateTime &now);
    // Writes the journal anew, with a header and the good lines of the runs
    // not dropped, and its index. With keepAs, the file replaced is kept
    // under that name and damaged lines are left out; without, a damaged line
    // stops it.
    enum class Rewrite
    {
        Done,
        Damaged,
        Failed
    };
    Rewrite rewrite(const QSet<quint64> &dropped, const QString &keepAs = {});
    // The index anew, once all that is known is written.
    void writeIndex();
    // The run with its items, read from its lines.
    std::optional<Run> read(quint64 id);

    const QString path;
    mutable std::mutex mutex;
    JournalFile file;
    JournalRuns runs;
    JournalAbbreviations abbreviations;
    QList<Run> interrupted;
    QByteArray buffer; // records not yet written
    quint64 nextRun = 1;
    bool isOpen = false;
    std::optional<std::chrono::milliseconds> openOnFirstRun; // how long to wait for the lock then
    QString error;
    QString note;
    QString writeFailure;   // since it was last taken
    bool unwritten = false; // a write failed, and what it held is still in buffer
};

bool MoveJournal::Private::load()
{
    std::optional<JournalIndex> index;
    if (const std::optional<QByteArray> bytes = file.readIndex())
        index = JournalIndex::fromBytes(*bytes);
    if (index && !file.continues(index->journal))
        index.reset();
    // The runs the index sums up whole: those it knew ended.
    QSet<quint64> summed;
    qint64 from = 0; // where reading starts
    if (index) {
        from = index->journal.size;
        for (const JournalRuns::Entry &e : std::as_const(index->runs)) {
            if (e.ended)
                summed.insert(e.run.id);
            else
                from = std::min(from, std::max<qint64>(0, e.first));
        }
    }
    const std::optional<QByteArray> bytes = file.read(from);
    if (!bytes)
        return false;
    // The runs that ended are found first, so that only the others' items
    // (and paths) are read.
    QSet<quint64> ended = summed;
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype, bool complete) {
        if (const auto run = complete ? JournalRecord::runEndedBy(line) : std::nullopt)
            ended.insert(*run);
    });
    // Asked of nearly every line, which mostly belongs to the run of the line
    // before.
    const auto unended = [&ended, last = std::pair<quint64, bool>(0, false)](quint64 run) mutable {
        if (run != last.first)
            last = {run, !ended.contains(run)};
        return last.second;
    };
    JournalRuns found(unended, index ? index->runs : QList<JournalRuns::Entry>());
    if (index) {
        for (const JournalRuns::Entry &e : std::as_const(index->runs)) {
            if (!e.ended)
                found.reread(e.run.id);
        }
    }
    const JournalRecord::Folders folders = [&found](quint64 run) {
        return found.folders(run);
    };
    std::optional<quint64> headerNextRun;
    bool otherVersion = false;
    bool header = from == 0;
    qsizetype good = 0; // where the good lines end
    bool damaged = false;
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype end, bool complete) {
        if (otherVersion)
            return;
        const qsizetype start = line.data() - bytes->constData();
        bool read = false;
        if (std::exchange(header, false)) {
            headerNextRun =
                complete ? JournalRecord::parseHeader(line, &otherVersion) : std::nullopt;
            read = headerNextRun.has_value();
        } else if (const auto record =
                       complete ? JournalRecord::parse(line, folders) : std::nullopt) {
            if (!summed.contains(record->run))
                found.apply(*record, from + start, end - start);
            read = true;
        }
        if (read && !damaged)
            good = end;
        else if (!read && end < bytes->size())
            damaged = true;
    });
    nextRun =
        std::max({index ? index->nextRun : 1, headerNextRun.value_or(1), found.largestId() + 1});
    interrupted = found.unended();
    found.forgetItems();

    runs = std::move(found);
    if (otherVersion || damaged) {
        setAside(otherVersion ? Unreadable::OtherVersion : Unreadable::Damaged);
        return true;
    }
    if (good < bytes->size() && !file.truncate(from + good))
        return false;
    if (file.size() == 0 && !file.append(JournalRecord::header(nextRun)))
        return false;
    // Runs the index did not know of are summed up too.
    if (!index || index->journal.size < file.size())
        writeIndex();
    return true;
}

void MoveJournal::Private::setAside(Unreadable why)
{
    QSet<quint64> dropped;
    for (const JournalRuns::Entry &e : runs.entries()) {
        if (e.ended || why == Unreadable::OtherVersion)
            dropped.insert(e.run.id);
    }
    const QString bad = path + QStringLiteral(".bad");
    if (rewrite(dropped, bad) == Rewrite::Failed) {
        note = QStringLiteral("The move journal cannot be read, and %1.").arg(file.error());
        return;
    }
    interrupted.removeIf([&dropped](const Run &run) { return dropped.contains(run.id); });
    // What the runs going on had named may have been among the damaged lines.
    abbreviations.clear();
    note = why == Unreadable::Damaged
               ? QStringLiteral("The move journal was damaged and is kept as \u201c%1\u201d; a "
                                "new one holds the runs that were cut short.")
               : QStringLiteral("The move journal was written by another version of Brevano "
                                "and is kept as \u201c%1\u201d; a new one begins.");
    note = note.arg(FileNames::display(bad));
}

void MoveJournal::Private::add(JournalRecord record)
{
    abbreviations.abbreviate(record, [this](const JournalRecord &folder) { append(folder); });
    append(record);
}

void MoveJournal::Private::append(const JournalRecord &record)
{
    const qsizetype before = buffer.size();
    record.appendTo(buffer);
    runs.apply(record, file.size() + before, buffer.size() - before);
}

void MoveJournal::Private::write(JournalRecord record, When when)
{
    std::lock_guard lock(mutex);
    // Run 0 began while the journal was closed: it stays unrecorded, even
    // when the journal opens before it ends.
    if (!isOpen || record.run == 0)
        return;
    add(std::move(record));
    if (when == Durable)
        sync();
}

bool MoveJournal::Private::sync()
{
    if (!isOpen)
        return false;
    if (buffer.isEmpty())
        return true;
    if (!file.append(buffer)) {
        error = file.error();
        writeFailure = error;
        unwritten = true;
        return false;
    }
    unwritten = false;
    if (buffer.capacity() > kKeptBufferBytes)
        buffer.clear();
    else
        buffer.resize(0);
    return true;
}

bool MoveJournal::Private::compact(const QDateTime &now)
{
    const QSet<quint64> dropped = runs.beyondBounds(now);
    if (dropped.isEmpty())
        return false;
    switch (rewrite(dropped)) {
    case Rewrite::Done:
        return true;
    case Rewrite::Damaged:
        setAside(Unreadable::Damaged);
        return true;
    case Rewrite::Failed:
        break;
    }
    return false;
}

MoveJournal::Private::Rewrite MoveJournal::Private::rewrite(const QSet<quint64> &dropped,
                                                            const QString &keepAs)
{
    if (!buffer.isEmpty() && !sync())
        return Rewrite::Failed;
    // Only the lines from the first one of a run kept on are needed.
    qint64 from = file.size();
    for (const JournalRuns::Entry &e : runs.entries()) {
        if (!dropped.contains(e.run.id) && e.first >= 0)
            from = std::min(from, e.first);
    }
    const std::optional<QByteArray> bytes = file.read(from);
    if (!bytes) {
        error = file.error();
        return Rewrite::Failed;
    }
    QByteArray kept = JournalRecord::header(nextRun);
    kept.reserve(kept.size() + bytes->size());
    QHash<quint64, std::pair<qint64, qint64>> spans; // where each run's lines lie now
    bool damaged = false;
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype, bool complete) {
        const std::optional<quint64> run = complete ? JournalRecord::runOf(line) : std::nullopt;
        damaged = damaged || !run;
        if (!run || dropped.contains(*run))
            return;
        auto span = spans.find(*run);
        if (span == spans.end())
            span = spans.insert(*run, {kept.size(), 0});
        kept.append(line);
        kept.append('\n');
        span->second = kept.size();
    });
    if (damaged && keepAs.isEmpty())
        return Rewrite::Damaged;
    // No index may sum up the file replaced once it is gone.
    file.removeIndex();
    if (!file.replace(kept, keepAs)) {
        error = file.error();
        return Rewrite::Failed;
    }
    runs.remove(dropped);
    for (const JournalRuns::Entry &e : runs.entries()) {
        const auto [first, end] = spans.value(e.run.id, {kept.size(), kept.size()});
        runs.setSpan(e.run.id, first, end);
    }
    writeIndex();
    return Rewrite::Done;
}

void MoveJournal::Private::writeIndex()
{
    if (!buffer.isEmpty())
        return;
    if (const std::optional<JournalFile::Mark> mark = file.mark())
        file.writeIndex(JournalIndex{nextRun, *mark, runs.entries()}.toBytes());
    else
        file.removeIndex();
}

std::optional<Run> MoveJournal::Private::read(quint64 id)
{
    const JournalRuns::Entry *entry = std::as_const(runs).find(id);
    if (!entry)
        return std::nullopt;
    Run run = entry->run;
    if (entry->first < 0)
        return run;
    // Its lines lie from first to end, in the file or still in the buffer.
    const qint64 end = entry->end;
    std::optional<QByteArray> bytes = file.read(entry->first, std::min(end, file.size()));
    if (!bytes)
        return std::nullopt;
    if (end > file.size())
        bytes->append(buffer);
    JournalRuns items([id](quint64 other) { return other == id; });
    const JournalRecord::Folders folders = [&items](quint64 other) {
        return items.folders(other);
    };
    bool damaged = false;
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype, bool complete) {
        const auto record = complete ? JournalRecord::parse(line, folders) : std::nullopt;
        damaged = damaged || !record;
        if (record && record->run == id)
            items.apply(*record, 0, 0);
    });
    run.items = items.run(id).value_or(Run()).items;
    if (damaged)
        setAside(Unreadable::Damaged);
    return run;
}

MoveJournal::Identity MoveJournal::Identity::of(const QString &path)
{
    struct stat info;
    if (::lstat(FileNames::encode(path).constData(), &info) != 0)
        return {};
    return {quint64(info.st_dev), quint64(info.st_ino)};
}

QString MoveJournal::defaultPath()
{
    return AppFolders::brevanoSupportFolder() + QStringLiteral("/Brevano.journal");
}

MoveJournal::MoveJournal(const QString &path) : d(std::make_unique<Private>(path)) {}

MoveJournal::~MoveJournal()
{
    std::lock_guard lock(d->mutex);
    d->sync();
}

bool MoveJournal::open(std::chrono::milliseconds lockWait)
{
    std::lock_guard lock(d->mutex);
    return d->open(lockWait);
}

void MoveJournal::openOnFirstRun(std::chrono::milliseconds lockWait)
{
    std::lock_guard lock(d->mutex);
    d->openOnFirstRun = lockWait;
}

bool MoveJournal::Private::open(std::chrono::milliseconds lockWait)
{
    if (isOpen)
        return true;
    note.clear();
    abbreviations.clear();
    if (!file.open(lockWait) || !load()) {
        error = file.error();
        file.close();
        runs = JournalRuns();
        interrupted.clear();
        return false;
    }
    error.clear();
    isOpen = true;
    compact(QDateTime::currentDateTimeUtc());
    return true;
}

bool MoveJournal::isInUseElsewhere() const
{
    std::lock_guard lock(d->mutex);
    return !d->isOpen && d->file.inUseElsewhere();
}

bool MoveJournal::isOpen() const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen;
}

QString MoveJournal::lastError() const
{
    std::lock_guard lock(d->mutex);
    return d->error;
}

QString MoveJournal::openingNote() const
{
    std::lock_guard lock(d->mutex);
    return d->note;
}

quint64 MoveJournal::beginRun(RunKind kind, const QString &detail, const QDateTime &time)
{
    std::lock_guard lock(d->mutex);
    if (!d->isOpen && !(d->openOnFirstRun && d->open(*d->openOnFirstRun))) {
        d->writeFailure = d->error.isEmpty() ? QStringLiteral("the journal is not open") : d->error;
        return 0;
    }
    const quint64 run = d->nextRun++;
    d->add({.type = JournalRecord::Type::Begin,
            .run = run,
            .kind = kind,
            .text = detail,
            .time = time});
    return run;
}

quint32 MoveJournal::addIntent(quint64 run, const QString &source, const QString &target,
                               const Identity &sourceIdentity)
{
    std::lock_guard lock(d->mutex);
    if (!d->isOpen || run == 0)
        return 0;
    const quint32 seq = d->runs.nextSeq(run);
    d->add({.type = JournalRecord::Type::Intent,
            .run = run,
            .seq = seq,
            .path = source,
            .target = target,
            .identity = sourceIdentity});
    return seq;
}

bool MoveJournal::sync()
{
    std::lock_guard lock(d->mutex);
    return d->sync();
}

void MoveJournal::notePartial(quint64 run, quint32 seq, const QString &partialPath)
{
    d->write({.type = JournalRecord::Type::Partial, .run = run, .seq = seq, .path = partialPath},
             Private::Durable);
}

void MoveJournal::noteCopied(quint64 run, quint32 seq, const QString &partialPath,
                             const Identity &copy)
{
    d->write({.type = JournalRecord::Type::Copied,
              .run = run,
              .seq = seq,
              .path = partialPath,
              .identity = copy},
             Private::Durable);
}

void MoveJournal::noteAside(quint64 run, quint32 seq, const QString &asidePath)
{
    d->write({.type = JournalRecord::Type::Aside, .run = run, .seq = seq, .path = asidePath},
             Private::Durable);
}

void MoveJournal::noteOutcome(quint64 run, quint32 seq, ItemStatus status, const QString &target,
                              const Identity &targetIdentity, const QString &message)
{
    d->write({.type = JournalRecord::Type::Outcome,
              .run = run,
              .seq = seq,
              .status = status,
              .target = target,
              .text = message,
              .identity = targetIdentity},
             Private::Buffered);
}

void MoveJournal::noteDeferred(quint64 run, const QString &source)
{
    d->write({.type = JournalRecord::Type::Deferred, .run = run, .path = source},
             Private::Buffered);
}

void MoveJournal::endRun(quint64 run, const QDateTime &time, bool recovered)
{
    std::lock_guard lock(d->mutex);
    if (!d->isOpen || run == 0)
        return;
    d->add({.type = JournalRecord::Type::End, .run = run, .time = time, .recovered = recovered});
    d->sync();
    d->interrupted.removeIf([run](const Run &cutShort) { return cutShort.id == run; });
    d->abbreviations.forget(run);
    const bool beyondBounds = d->runs.count() > kMaxRuns || d->runs.bytes() > kMaxBytes;
    if (!(beyondBounds && d->compact(time)))
        d->writeIndex();
}

QList<MoveJournal::Run> MoveJournal::runs() const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen ? d->runs.runs() : QList<Run>();
}

std::optional<MoveJournal::Run> MoveJournal::run(quint64 id) const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen ? d->read(id) : std::nullopt;
}

QList<MoveJournal::Run> MoveJournal::interruptedRuns() const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen ? d->interrupted : QList<Run>();
}

std::optional<MoveJournal::Run> MoveJournal::lastUndoableTidy() const
{
    std::lock_guard lock(d->mutex);
    // A tidy not on disk cannot be read back, and one before it is not the last.
    return d->isOpen && !d->unwritten ? d->runs.lastUndoableTidy() : std::nullopt;
}

QString MoveJournal::takeWriteFailure()
{
    std::lock_guard lock(d->mutex);
    return std::exchange(d->writeFailure, QString());
}

void MoveJournal::compact(const QDateTime &now)
{
    std::lock_guard lock(d->mutex);
    if (d->isOpen)
        d->compact(now);
}
