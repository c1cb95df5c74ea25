#include "MoveJournal.h"

#include "AppFolders.h"
#include "FileNames.h"
#include "JournalFile.h"
#include "JournalRecord.h"
#include "JournalRuns.h"

#include <sys/stat.h>

// The file: a header line (the format's version and the number the next run
// takes), then records, one a line, only ever appended (JournalRecord.cpp
// describes each line). Every line ends with a checksum, so a line cut short
// or damaged is never taken for a record. Opening reads it whole:
// - a last line cut short (no newline, or a wrong checksum on the last line
//   only) is what a crash while appending leaves: it is cut off;
// - a bad line anywhere else makes the file damaged: what can be read still
//   counts, the file is kept as "<journal>.bad" and a new one is written with
//   the records of the runs that were cut short, as recovery needs them.
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

} // namespace

class MoveJournal::Private
{
public:
    explicit Private(const QString &journalPath) : path(journalPath), file(journalPath) {}

    // Opens, locks and reads the journal; the caller holds the mutex.
    bool open(std::chrono::milliseconds lockWait);
    // Reads the journal just opened and repairs what needs it.
    bool load();
    // Keeps the damaged journal that bytes held as "<journal>.bad" and starts
    // a new one with the runs cut short.
    void setAside(QByteArrayView bytes);
    // Adds a record to what is to be written and to what is known of its run.
    void add(const JournalRecord &record);
    // add() for a caller without the lock: nothing while the journal is not
    // open; a durable record is synced, with all buffered before it.
    enum When
    {
        Buffered,
        Durable
    };
    void write(const JournalRecord &record, When when);
    bool sync();
    void compact(const QDateTime &now);
    // The journal bytes hold anew: a header and the good lines of runs not dropped.
    QByteArray rewritten(QByteArrayView bytes, const QSet<quint64> &dropped) const;

    const QString path;
    mutable std::mutex mutex;
    JournalFile file;
    JournalRuns runs;
    QList<Run> interrupted;
    QByteArray buffer; // records not yet written
    quint64 nextRun = 1;
    bool isOpen = false;
    std::optional<std::chrono::milliseconds> openOnFirstRun; // how long to wait for the lock then
    QString error;
    QString note;
};

bool MoveJournal::Private::load()
{
    const std::optional<QByteArray> bytes = file.read();
    if (!bytes)
        return false;
    // The runs that ended are found first, so that only the others' items
    // (and paths) are read.
    QSet<quint64> ended;
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype, bool complete) {
        if (const auto run = complete ? JournalRecord::runEndedBy(line) : std::nullopt)
            ended.insert(*run);
    });
    const auto unended = [&ended](quint64 run) {
        return !ended.contains(run);
    };
    JournalRuns found(unended);
    std::optional<quint64> headerNextRun;
    qsizetype good = 0; // where the good lines end
    bool damaged = false;
    bool first = true;
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype end, bool complete) {
        bool read = false;
        if (std::exchange(first, false)) {
            headerNextRun = complete ? JournalRecord::parseHeader(line) : std::nullopt;
            read = headerNextRun.has_value();
        } else if (const auto record =
                       complete ? JournalRecord::parse(line, unended) : std::nullopt) {
            found.apply(*record, end - (line.data() - bytes->constData()));
            read = true;
        }
        if (read && !damaged)
            good = end;
        else if (!read && end < bytes->size())
            damaged = true;
    });
    nextRun = std::max(headerNextRun.value_or(1), found.largestId() + 1);
    interrupted = found.unended();
    found.forgetItems();

    runs = std::move(found);
    if (damaged)
        setAside(*bytes);
    else if (good < bytes->size() && !file.truncate(good))
        return false;
    return damaged || good > 0 || file.append(JournalRecord::header(nextRun));
}

void MoveJournal::Private::setAside(QByteArrayView bytes)
{
    QSet<quint64> dropped;
    for (const Run &run : runs.runs())
        dropped.insert(run.id);
    for (const Run &run : std::as_const(interrupted))
        dropped.remove(run.id);
    const QString bad = path + QStringLiteral(".bad");
    if (file.replace(rewritten(bytes, dropped), bad)) {
        runs.remove(dropped);
        note = QStringLiteral("The move journal was damaged and is kept as \u201c%1\u201d; a new "
                              "one holds the runs that were cut short.")
                   .arg(FileNames::display(bad));
    } else {
        note = QStringLiteral("The move journal is damaged, and %1.").arg(file.error());
    }
}

void MoveJournal::Private::add(const JournalRecord &record)
{
    const qsizetype before = buffer.size();
    record.appendTo(buffer);
    runs.apply(record, buffer.size() - before);
}

void MoveJournal::Private::write(const JournalRecord &record, When when)
{
    std::lock_guard lock(mutex);
    if (!isOpen)
        return;
    add(record);
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
        return false;
    }
    buffer.clear();
    return true;
}

void MoveJournal::Private::compact(const QDateTime &now)
{
    const QSet<quint64> dropped = runs.beyondBounds(now);
    if (dropped.isEmpty() || !sync())
        return;
    const std::optional<QByteArray> bytes = file.read();
    if (bytes && file.replace(rewritten(*bytes, dropped)))
        runs.remove(dropped);
    else
        error = file.error();
}

QByteArray MoveJournal::Private::rewritten(QByteArrayView bytes, const QSet<quint64> &dropped) const
{
    QByteArray kept = JournalRecord::header(nextRun);
    kept.reserve(bytes.size());
    forEachLine(bytes, [&](QByteArrayView line, qsizetype, bool complete) {
        const std::optional<quint64> run = complete ? JournalRecord::runOf(line) : std::nullopt;
        if (run && !dropped.contains(*run)) {
            kept.append(line);
            kept.append('\n');
        }
    });
    return kept;
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
    if (!d->isOpen && !(d->openOnFirstRun && d->open(*d->openOnFirstRun)))
        return 0;
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
    if (!d->isOpen)
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
    if (!d->isOpen)
        return;
    d->add({.type = JournalRecord::Type::End, .run = run, .time = time, .recovered = recovered});
    d->sync();
    d->interrupted.removeIf([run](const Run &cutShort) { return cutShort.id == run; });
    if (d->runs.count() > kMaxRuns || d->runs.bytes() > kMaxBytes)
        d->compact(time);
}

QList<MoveJournal::Run> MoveJournal::runs() const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen ? d->runs.runs() : QList<Run>();
}

std::optional<MoveJournal::Run> MoveJournal::run(quint64 id) const
{
    std::lock_guard lock(d->mutex);
    std::optional<Run> run = d->isOpen ? d->runs.run(id) : std::nullopt;
    std::optional<QByteArray> bytes = run ? d->file.read() : std::nullopt;
    if (!bytes)
        return std::nullopt;
    bytes->append(d->buffer);
    JournalRuns items([id](quint64 other) { return other == id; });
    forEachLine(*bytes, [&](QByteArrayView line, qsizetype, bool complete) {
        if (complete && JournalRecord::runOf(line) == id) {
            if (const auto record = JournalRecord::parse(line))
                items.apply(*record, 0);
        }
    });
    run->items = items.run(id).value_or(Run()).items;
    return run;
}

QList<MoveJournal::Run> MoveJournal::interruptedRuns() const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen ? d->interrupted : QList<Run>();
}

std::optional<MoveJournal::Run> MoveJournal::lastUndoableTidy() const
{
    std::lock_guard lock(d->mutex);
    return d->isOpen ? d->runs.lastUndoableTidy() : std::nullopt;
}

void MoveJournal::compact(const QDateTime &now)
{
    std::lock_guard lock(d->mutex);
    if (d->isOpen)
        d->compact(now);
}
