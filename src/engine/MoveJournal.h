#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

// The record of every move Brevano makes, kept so that a run cut short (a
// crash, a kill, a power cut) can be finished at the next start, and a tidy
// can be undone.
//
// An append-only file next to the data file. A run (a tidy, an undo, restores,
// a drop, trashing) begins with a record of its own; each move is announced
// before it starts (its intent: source, planned target, and what the source
// is) and its outcome follows after. Intents reach the disk before the move
// they announce starts: the engine adds the intents of many items and calls
// sync() once before moving them. Outcomes and deferred items are written
// lazily and synced when the run ends. The notes taken while moving across
// file systems (a partial copy begun, a whole copy about to be renamed into
// place, an item in the way moved aside) reach the disk before the step they
// announce.
//
// Every record carries a checksum. A last line cut short by a crash is simply
// ignored; a record that is damaged elsewhere makes the journal "damaged": its
// readable records still serve recovery, then the file is kept aside as
// "<name>.bad" and a new journal begins. Opening costs next to nothing however
// long the journal is: an index beside it ("<name>.index") sums up its runs,
// so only the records of runs begun since, or not ended, are read then; the
// others are checked when they are read (run(), compaction). A journal of
// another version is kept aside in the same way, and nothing of it is read.
// Nothing about the journal ever stops Brevano from starting or from moving:
// when it cannot be written, moves go on unrecorded and lastError() says why.
//
// One process owns the journal at a time (an exclusive lock on
// "<journal>.lock", which stays while the journal is written anew):
// the tray application for its lifetime, or a command run without it.
// Thread-safe: drops are recorded from the mover's own thread.
class MoveJournal
{
public:
    enum class RunKind
    {
        Tidy,
        Undo,
        Restore,
        Drop,
        Trash
    };
    enum class ItemStatus
    {
        Pending, // announced; no outcome was recorded (the run was cut short)
        Moved,
        Failed,
        Deferred,   // left on the Desktop for now (still changing)
        Incomplete, // copied, but what changed during the copy stayed at the source
        Skipped     // undo: not where the tidy put it, or its old name is taken
    };

    // What a file system item is: its device and inode.
    struct Identity
    {
        quint64 device = 0;
        quint64 inode = 0;
        bool isNull() const { return device == 0 && inode == 0; }
        bool operator==(const Identity &) const = default;
        // Of the item at path itself (a link is not followed); null when none.
        static Identity of(const QString &path);
    };

    struct Item
    {
        quint32 seq = 0; // the item's number in its run
        QString source;
        QString target; // planned; once moved, where it went
        Identity sourceIdentity;
        ItemStatus status = ItemStatus::Pending;
        Identity targetIdentity; // the item at target once moved
        QString message;         // why it failed or was skipped; what else happened
        QStringList partials;    // partial copies begun across file systems
        QString copiedPartial;   // a whole copy about to be renamed into place...
        Identity copiedIdentity; // ...which keeps this identity at target
        QString aside;           // replacing: the item in the way was moved aside to this name
    };

    struct Run
    {
        quint64 id = 0;
        RunKind kind = RunKind::Tidy;
        QString detail; // a tidy: "manual", "scheduled" or "repeat"; an undo: the run it undid
        QDateTime started;
        QDateTime ended;        // null: cut short, and not (yet) recovered
        bool recovered = false; // cut short, and finished at a later start
        bool undone = false;    // a tidy that a later undo took back
        qint64 moved = 0;
        qint64 failed = 0;
        qint64 deferred = 0;
        qint64 skipped = 0;
        QList<Item> items; // filled only where asked for (run(), interruptedRuns())
    };

    static constexpr int kMaxRuns = 100;
    static constexpr int kMaxAgeDays = 30;
    static constexpr qint64 kMaxBytes = 64 * 1024 * 1024;

    // The journal beside the data file: brevanoSupportFolder()/Brevano.journal.
    static QString defaultPath();

    explicit MoveJournal(const QString &path);
    ~MoveJournal();
    MoveJournal(const MoveJournal &) = delete;
    MoveJournal &operator=(const MoveJournal &) = delete;

    // Takes the lock (waiting up to lockWait for another Brevano process to
    // let go) and reads the journal: a damaged one is set aside (note says
    // so) after its readable runs were noted for recovery. False when the
    // journal could not be opened or locked: nothing is recorded then, and
    // no recovery may run (another process may be moving).
    bool open(std::chrono::milliseconds lockWait = std::chrono::seconds(30));
    // Opens the journal, making it where there is none, only when the first
    // run begins: a command that moves nothing leaves no journal behind.
    void openOnFirstRun(std::chrono::milliseconds lockWait = std::chrono::seconds(30));
    bool isOpen() const;
    // The last open() failed only because another Brevano process holds the
    // journal: it is moving items, and nothing should move here until it is done.
    bool isInUseElsewhere() const;
    QString lastError() const;
    // Why a run could not be recorded since this was last asked (a full
    // disk, a journal that could not be opened), once; empty when all was.
    // Until a later write succeeds, no tidy is undoable.
    QString takeWriteFailure();
    // What open() had to do with the file ("the journal was damaged and is
    // kept as ...bad"), if anything; or run() or compaction, when they found
    // damage open() did not read.
    QString openingNote() const;

    // ---- writing ----
    quint64 beginRun(RunKind kind, const QString &detail, const QDateTime &time);
    // Buffered: call sync() before the moves they announce start.
    quint32 addIntent(quint64 run, const QString &source, const QString &target,
                      const Identity &sourceIdentity);
    // Writes what is buffered and makes it durable (fsync); false on failure.
    bool sync();
    // Durable before they return.
    void notePartial(quint64 run, quint32 seq, const QString &partialPath);
    void noteCopied(quint64 run, quint32 seq, const QString &partialPath, const Identity &copy);
    void noteAside(quint64 run, quint32 seq, const QString &asidePath);
    // Buffered.
    void noteOutcome(quint64 run, quint32 seq, ItemStatus status, const QString &target,
                     const Identity &targetIdentity, const QString &message);
    void noteDeferred(quint64 run, const QString &source);
    // Writes the end record and syncs. recovered: the run was cut short and
    // finished by a later start.
    void endRun(quint64 run, const QDateTime &time, bool recovered = false);

    // ---- reading (runs oldest first) ----
    // Every run kept, with counts but no items; answered from memory, kept in
    // step with what is written (menus ask it on the main thread).
    QList<Run> runs() const;
    // One run with its items, read from the file (from its records alone).
    // Damage found in them sets the journal aside as open() would; the run
    // has the items that could be read.
    std::optional<Run> run(quint64 id) const;
    // Runs begun and never ended, with their items, as open() found them
    // (their records remain readable even when the file was set aside), until
    // endRun() ends them.
    QList<Run> interruptedRuns() const;
    // The tidy an undo would take back: the newest tidy that moved anything,
    // unless it was undone already (an undo run that names it in its detail
    // ended, and not by recovery: one cut short leaves it to be undone).
    // Without items; answered from memory.
    std::optional<Run> lastUndoableTidy() const;

    // Drops the oldest runs beyond kMaxRuns, older than kMaxAgeDays or beyond
    // kMaxBytes of records, by writing the file anew atomically; never a run
    // without an end, the newest tidy, nor the tidy an undo would take back
    // (with the undo that took it back, so that it stays undone). Called by
    // open(), and when a run ends with more runs or bytes than those.
    void compact(const QDateTime &now);

private:
    class Private;
    std::unique_ptr<Private> d;
};
