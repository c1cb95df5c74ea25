#include "JournalIndex.h"

#include "JournalLine.h"

// Lines as in the journal (JournalLine):
//
//   brevano-journal-index  2  <next run>  <journal identity>  <journal size>
//                          <where its last line starts>  <that line's CRC-32C>
//   run  <id>  <kind>  <detail>  <started>  <ended>  <state>  <undone: 0 or 1>
//        <moved>  <failed>  <deferred>  <skipped>  <bytes>  <first>  <end>
//   ...
//   end  <the number of run lines>
//
// <kind> as in the journal; <state> is running, ended or recovered; <bytes>
// is the length of the run's lines, <first> where the first starts, <end>
// where the line after its last one starts.

namespace {

using RunKind = MoveJournal::RunKind;

constexpr QByteArrayView kMagic = "brevano-journal-index";
constexpr QByteArrayView kVersion = "3";
constexpr std::array<QByteArrayView, 5> kKinds = {"tidy", "undo", "restore", "drop", "trash"};
constexpr std::array<QByteArrayView, 3> kStates = {"running", "ended", "recovered"};
enum class State
{
    Running,
    Ended,
    Recovered
};

template <typename Number> bool readNumbers(const JournalLine::Fields &f, int from, Number &number)
{
    return f.number(from, number);
}

template <typename Number, typename... More>
bool readNumbers(const JournalLine::Fields &f, int from, Number &number, More &...more)
{
    return f.number(from, number) && readNumbers(f, from + 1, more...);
}

} // namespace

QByteArray JournalIndex::toBytes() const
{
    QByteArray out;
    JournalLine::Writer(out, kMagic)
        .word(kVersion)
        .number(nextRun)
        .identity(journal.file)
        .number(quint64(journal.size))
        .number(quint64(journal.lastLine))
        .number(journal.lastLineSum)
        .finish();
    for (const JournalRuns::Entry &e : runs) {
        const MoveJournal::Run &r = e.run;
        const State state = !e.ended      ? State::Running
                            : r.recovered ? State::Recovered
                                          : State::Ended;
        JournalLine::Writer(out, "run")
            .number(r.id)
            .word(kKinds[int(r.kind)])
            .text(r.detail)
            .time(r.started)
            .time(r.ended)
            .word(kStates[int(state)])
            .word(r.undone ? "1" : "0")
            .number(quint64(r.moved))
            .number(quint64(r.failed))
            .number(quint64(r.deferred))
            .number(quint64(r.skipped))
            .number(quint64(e.bytes))
            .number(quint64(e.first))
            .number(quint64(e.end))
            .finish();
    }
    JournalLine::Writer(out, "end").number(quint64(runs.size())).finish();
    return out;
}

std::optional<JournalIndex> JournalIndex::fromBytes(QByteArrayView bytes)
{
    JournalIndex index;
    JournalLine::Fields f;
    bool ended = false;
    bool first = true;
    for (qsizetype at = 0; at < bytes.size() && !ended;) {
        const qsizetype newline = bytes.indexOf('\n', at);
        if (newline < 0 || !f.read(bytes.sliced(at, newline - at)))
            return std::nullopt;
        at = newline + 1;
        if (std::exchange(first, false)) {
            if (f.count() != 7 || f[0] != kMagic || f[1] != kVersion ||
                !f.identity(3, index.journal.file) ||
                !readNumbers(f, 4, index.journal.size, index.journal.lastLine,
                             index.journal.lastLineSum) ||
                !f.number(2, index.nextRun))
                return std::nullopt;
        } else if (f.count() == 2 && f[0] == "end") {
            qsizetype count = 0;
            if (!f.number(1, count) || count != index.runs.size() || at != bytes.size())
                return std::nullopt;
            ended = true;
        } else {
            JournalRuns::Entry e;
            MoveJournal::Run &r = e.run;
            State state;
            if (f.count() != 15 || f[0] != "run" || !f.number(1, r.id) ||
                !f.word(2, kKinds, r.kind) || !f.time(4, r.started) || !f.time(5, r.ended) ||
                !f.word(6, kStates, state) || (f[7] != "0" && f[7] != "1") ||
                !readNumbers(f, 8, r.moved, r.failed, r.deferred, r.skipped, e.bytes, e.first,
                             e.end))
                return std::nullopt;
            r.detail = f.text(3);
            r.undone = f[7] == "1";
            e.ended = state != State::Running;
            r.recovered = state == State::Recovered;
            index.runs.append(e);
        }
    }
    return ended ? std::optional(index) : std::nullopt;
}
