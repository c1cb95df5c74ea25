#include "JournalRuns.h"

#include "JournalRecord.h"

using Run = MoveJournal::Run;
using RunKind = MoveJournal::RunKind;
using Status = MoveJournal::ItemStatus;

JournalRuns::JournalRuns(KeepsItems keepsItems, QList<Entry> known)
    : m_entries(std::move(known)), m_keepsItems(std::move(keepsItems))
{
    for (const Entry &e : std::as_const(m_entries)) {
        m_largestId = std::max(m_largestId, e.run.id);
        m_bytes += e.bytes;
    }
}

void JournalRuns::apply(const JournalRecord &record, qint64 at, qsizetype bytes)
{
    Entry &e = entry(record.run);
    e.bytes += bytes;
    m_bytes += bytes;
    if (e.first < 0)
        e.first = at;
    e.end = std::max(e.end, at + bytes);
    Run &run = e.run;
    const bool items = keepsItems(record.run);
    switch (record.type) {
    case JournalRecord::Type::Begin:
        run.kind = record.kind;
        run.detail = record.text;
        run.started = record.time;
        break;
    case JournalRecord::Type::Folder:
        if (items)
            e.folders.insert(record.seq, record.path);
        break;
    case JournalRecord::Type::Intent:
        e.nextSeq = std::max(e.nextSeq, record.seq + 1);
        if (items) {
            MoveJournal::Item &i = item(e, record.seq);
            i.source = record.path;
            i.target = record.target;
            i.sourceIdentity = record.identity;
        }
        break;
    case JournalRecord::Type::Partial:
        if (items)
            item(e, record.seq).partials.append(record.path);
        break;
    case JournalRecord::Type::Copied:
        if (items) {
            MoveJournal::Item &i = item(e, record.seq);
            i.copiedPartial = record.path;
            i.copiedIdentity = record.identity;
        }
        break;
    case JournalRecord::Type::Aside:
        if (items)
            item(e, record.seq).aside = record.path;
        break;
    case JournalRecord::Type::Outcome:
        switch (record.status) {
        case Status::Pending:
            break;
        case Status::Moved:
            ++run.moved;
            break;
        case Status::Failed:
        case Status::Incomplete:
            ++run.failed;
            break;
        case Status::Deferred:
            ++run.deferred;
            break;
        case Status::Skipped:
            ++run.skipped;
            break;
        }
        if (items) {
            MoveJournal::Item &i = item(e, record.seq);
            i.status = record.status;
            if (!record.plannedTarget)
                i.target = record.target;
            i.targetIdentity = record.sourceIdentity ? i.sourceIdentity : record.identity;
            i.message = record.text;
        }
        break;
    case JournalRecord::Type::Deferred:
        ++run.deferred;
        if (items) {
            MoveJournal::Item deferred;
            deferred.source = record.path;
            deferred.status = Status::Deferred;
            run.items.append(deferred);
        }
        break;
    case JournalRecord::Type::End:
        e.ended = true;
        run.ended = record.time;
        run.recovered = record.recovered;
        // Only an undo that went to its end took its tidy back: what one cut
        // short left behind can still be undone.
        if (run.kind == RunKind::Undo && !record.recovered) {
            Entry *tidy = find(run.detail.toULongLong());
            if (tidy && tidy->run.kind == RunKind::Tidy)
                tidy->run.undone = true;
        }
        break;
    }
}

void JournalRuns::reread(quint64 id)
{
    if (Entry *e = find(id)) {
        m_bytes -= e->bytes;
        const bool undone = e->run.undone; // a later run said so
        *e = Entry();
        e->run.id = id;
        e->run.undone = undone;
    }
}

void JournalRuns::setSpan(quint64 id, qint64 first, qint64 end)
{
    if (Entry *e = find(id)) {
        e->first = first;
        e->end = end;
    }
}

void JournalRuns::forgetItems()
{
    m_keepsItems = {};
    for (Entry &e : m_entries) {
        e.run.items.clear();
        e.itemAt.clear();
        e.folders.clear();
    }
}

void JournalRuns::remove(const QSet<quint64> &ids)
{
    m_entries.removeIf([&](const Entry &e) { return ids.contains(e.run.id); });
    m_bytes = 0;
    for (const Entry &e : std::as_const(m_entries))
        m_bytes += e.bytes;
}

QList<Run> JournalRuns::runs() const
{
    QList<Run> runs;
    runs.reserve(m_entries.size());
    for (const Entry &e : m_entries)
        runs.append(e.run);
    return runs;
}

std::optional<Run> JournalRuns::run(quint64 id) const
{
    const Entry *e = find(id);
    return e ? std::optional(e->run) : std::nullopt;
}

QList<Run> JournalRuns::unended() const
{
    QList<Run> runs;
    for (const Entry &e : m_entries) {
        if (!e.ended)
            runs.append(e.run);
    }
    return runs;
}

std::optional<Run> JournalRuns::lastUndoableTidy() const
{
    const Entry *tidy = undoCandidate();
    if (!tidy || tidy->run.undone)
        return std::nullopt;
    Run run = tidy->run;
    run.items.clear();
    return run;
}

const QHash<quint32, QString> *JournalRuns::folders(quint64 run) const
{
    static const QHash<quint32, QString> none;
    if (!keepsItems(run))
        return nullptr;
    const Entry *e = find(run);
    return e ? &e->folders : &none;
}

quint32 JournalRuns::nextSeq(quint64 run) const
{
    const Entry *e = find(run);
    return e ? e->nextSeq : 1;
}

QSet<quint64> JournalRuns::beyondBounds(const QDateTime &now) const
{
    QSet<quint64> kept;
    for (const Entry &e : m_entries) {
        if (!e.ended)
            kept.insert(e.run.id);
    }
    for (auto e = m_entries.crbegin(); e != m_entries.crend(); ++e) {
        if (e->run.kind == RunKind::Tidy) {
            kept.insert(e->run.id);
            break;
        }
    }
    if (const Entry *tidy = undoCandidate()) {
        kept.insert(tidy->run.id);
        const QString undoneBy = QString::number(tidy->run.id);
        for (const Entry &e : m_entries) {
            if (e.run.kind == RunKind::Undo && e.run.detail == undoneBy)
                kept.insert(e.run.id);
        }
    }

    // Down to half the bounds: the journal is written anew once in many runs,
    // not at the end of every run once it is full.
    const QDateTime oldest = now.addDays(-MoveJournal::kMaxAgeDays);
    const bool full = m_entries.size() > MoveJournal::kMaxRuns || m_bytes > MoveJournal::kMaxBytes;
    const qsizetype maxRuns = full ? MoveJournal::kMaxRuns / 2 : MoveJournal::kMaxRuns;
    const qint64 maxBytes = full ? MoveJournal::kMaxBytes / 2 : MoveJournal::kMaxBytes;
    qsizetype count = m_entries.size();
    qint64 bytes = m_bytes;
    QSet<quint64> dropped;
    for (const Entry &e : m_entries) {
        if (kept.contains(e.run.id))
            continue;
        if (count > maxRuns || bytes > maxBytes ||
            (e.run.started.isValid() && e.run.started < oldest)) {
            dropped.insert(e.run.id);
            --count;
            bytes -= e.bytes;
        }
    }
    return dropped;
}

JournalRuns::Entry &JournalRuns::entry(quint64 id)
{
    if (Entry *e = find(id))
        return *e;
    m_largestId = std::max(m_largestId, id);
    Entry &e = m_entries.emplace_back();
    e.run.id = id;
    return e;
}

const JournalRuns::Entry *JournalRuns::find(quint64 id) const
{
    // The run written to is nearly always the newest.
    for (auto e = m_entries.crbegin(); e != m_entries.crend(); ++e) {
        if (e->run.id == id)
            return &*e;
    }
    return nullptr;
}

JournalRuns::Entry *JournalRuns::find(quint64 id)
{
    return const_cast<Entry *>(std::as_const(*this).find(id));
}

MoveJournal::Item &JournalRuns::item(Entry &entry, quint32 seq)
{
    const auto at = entry.itemAt.constFind(seq);
    if (at != entry.itemAt.cend())
        return entry.run.items[*at];
    entry.itemAt.insert(seq, entry.run.items.size());
    MoveJournal::Item &item = entry.run.items.emplace_back();
    item.seq = seq;
    return item;
}

const JournalRuns::Entry *JournalRuns::undoCandidate() const
{
    for (auto e = m_entries.crbegin(); e != m_entries.crend(); ++e) {
        if (e->run.kind == RunKind::Tidy && e->run.moved > 0)
            return &*e;
    }
    return nullptr;
}
