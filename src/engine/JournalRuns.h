#pragma once

#include "MoveJournal.h"

#include <QHash>
#include <QSet>

#include <functional>

struct JournalRecord;

// What the journal's records say about its runs, kept up to date record by
// record, whether they are being read from the file or written: each run's
// counts and state, and the items of the runs asked for.
class JournalRuns
{
public:
    // What is known of one run.
    struct Entry
    {
        MoveJournal::Run run;
        bool ended = false;
        qint64 bytes = 0;  // of its lines
        qint64 first = -1; // where its first line starts in the file
        qint64 end = 0;    // where the line after its last one starts
        quint32 nextSeq = 1;
        QHash<quint32, qsizetype> itemAt; // seq -> index in run.items
        QHash<quint32, QString> folders;  // named by its lines, where its items are kept
    };

    // Which runs keep their items; with none given, none does.
    using KeepsItems = std::function<bool(quint64 run)>;
    // known: the runs known already (JournalIndex), oldest first.
    explicit JournalRuns(KeepsItems keepsItems = {}, QList<Entry> known = {});

    // Takes a record into account; at is where its line starts in the file,
    // bytes its length.
    void apply(const JournalRecord &record, qint64 at, qsizetype bytes);
    // Forgets what the run's records said, keeping its place, for them to be
    // applied again.
    void reread(quint64 id);
    // The run's lines have moved (the file was written anew).
    void setSpan(quint64 id, qint64 first, qint64 end);
    // Keeps no items from now on, and lets go of those kept.
    void forgetItems();
    // Forgets these runs.
    void remove(const QSet<quint64> &ids);

    const QList<Entry> &entries() const { return m_entries; }
    const Entry *find(quint64 id) const;
    // Every run, oldest first, with the items kept.
    QList<MoveJournal::Run> runs() const;
    std::optional<MoveJournal::Run> run(quint64 id) const;
    // The runs that have no end.
    QList<MoveJournal::Run> unended() const;
    std::optional<MoveJournal::Run> lastUndoableTidy() const;
    // Whether the run's items are kept (and so its records' paths needed).
    bool keepsItems(quint64 run) const { return m_keepsItems && m_keepsItems(run); }
    // The folders the run's lines named so far, as JournalRecord::parse asks:
    // null when its items are not kept.
    const QHash<quint32, QString> *folders(quint64 run) const;
    quint64 largestId() const { return m_largestId; }
    // The number the next item announced in run gets.
    quint32 nextSeq(quint64 run) const;
    qsizetype count() const { return m_entries.size(); }
    qint64 bytes() const { return m_bytes; }

    // The runs to drop to keep within MoveJournal's bounds at now: oldest
    // first, never one without an end, nor the newest tidy or the tidy an
    // undo would take back (with the undos that name it, so that it stays
    // undone).
    QSet<quint64> beyondBounds(const QDateTime &now) const;

private:
    Entry &entry(quint64 id);
    Entry *find(quint64 id);
    MoveJournal::Item &item(Entry &entry, quint32 seq);
    // The newest tidy that moved anything.
    const Entry *undoCandidate() const;

    QList<Entry> m_entries; // in the order their first records came
    KeepsItems m_keepsItems;
    quint64 m_largestId = 0;
    qint64 m_bytes = 0;
};
