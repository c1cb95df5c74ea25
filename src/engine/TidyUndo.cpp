#include "TidyUndo.h"

#include "FileMover.h"
#include "FileNames.h"
#include "JournaledRun.h"
#include "ShadowDesktopPaths.h"

namespace {

using Status = MoveJournal::ItemStatus;
using Identity = MoveJournal::Identity;

// Lists that could run long name a few items and count the rest.
constexpr int kNamesShown = 5;

QString quotedNames(const QStringList &paths)
{
    QStringList names;
    for (const QString &path : paths.first(std::min<qsizetype>(paths.size(), kNamesShown)))
        names.append(QStringLiteral("“%1”").arg(
            FileNames::display(ShadowDesktopPaths::lastPathComponent(path))));
    QString text = names.join(QStringLiteral(", "));
    if (paths.size() > kNamesShown)
        text += QStringLiteral(" and %1 more").arg(paths.size() - kNamesShown);
    return text;
}

QString items(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(count);
}

// What undos of tidy that were cut short did with its items, by where the
// tidy put each: put back (Moved), or left split (Incomplete).
QHash<QString, Status> earlierUndos(const MoveJournal &journal, quint64 tidy)
{
    QHash<QString, Status> done;
    const QString undid = QString::number(tidy);
    for (const MoveJournal::Run &undo : journal.runs()) {
        if (undo.kind != MoveJournal::RunKind::Undo || undo.detail != undid)
            continue;
        for (const MoveJournal::Item &item : journal.run(undo.id).value_or(undo).items) {
            if (item.status == Status::Moved || item.status == Status::Incomplete)
                done.insert(item.source, item.status);
        }
    }
    return done;
}

} // namespace

std::optional<MoveJournal::Run> TidyUndo::candidate() const
{
    return m_journal.lastUndoableTidy();
}

TidyUndo::Report TidyUndo::undoLastTidy(const QDateTime &now)
{
    Report report;
    const std::optional<MoveJournal::Run> tidy = candidate();
    const std::optional<MoveJournal::Run> recorded = tidy ? m_journal.run(tidy->id) : std::nullopt;
    // A tidy whose records could not be read back cannot be taken back either.
    if (!recorded) {
        report.nothingToUndo = true;
        return report;
    }
    report.run = recorded->id;
    const QHash<QString, Status> earlier = earlierUndos(m_journal, recorded->id);
    // Only ending the undo marks the tidy as undone.
    JournaledRun run(&m_journal, MoveJournal::RunKind::Undo, QString::number(recorded->id), now);
    struct Planned
    {
        quint32 seq;
        const MoveJournal::Item *item;
    };
    std::vector<Planned> planned;
    for (const MoveJournal::Item &item : recorded->items) {
        // What an undo cut short did with the item stands.
        const auto done =
            item.status == Status::Moved ? earlier.constFind(item.target) : earlier.cend();
        const Status status = done != earlier.cend() ? *done : item.status;
        // Half here, half there: which half is the item is not ours to decide.
        if (status == Status::Incomplete)
            report.split.append(item.source);
        else if (status == Status::Moved && done == earlier.cend())
            planned.push_back({run.announce(item.target, item.source), &item});
    }
    run.sync();

    for (const auto &[seq, item] : planned) {
        run.perform(seq, [&, item = item]() -> JournaledRun::Outcome {
            // Gone, or something else has taken its name since: never looked
            // for elsewhere. Asked just before its move, as the undo may be long.
            if (Identity::of(item->target) != item->targetIdentity) {
                report.notThere.append(item->target);
                return {Status::Skipped, item->target, QStringLiteral("not where the tidy put it")};
            }
            const FileMover::Result result = FileMover::move(item->target, item->source);
            if (result.status == FileMover::Status::TargetExists) {
                report.nameTaken.append(item->source);
                return {Status::Skipped, item->target, QStringLiteral("its Desktop name is taken")};
            }
            if (result.moved())
                ++report.restored;
            else
                report.failed.append(
                    QStringLiteral("%1: %2").arg(FileNames::display(item->target), result.message));
            return JournaledRun::outcomeOf(result, item->source);
        });
    }
    return report;
}

QStringList TidyUndo::Report::lines() const
{
    if (nothingToUndo)
        return {QStringLiteral("There is nothing to undo.")};
    QStringList lines;
    if (restored > 0 ||
        (nameTaken.isEmpty() && split.isEmpty() && notThere.isEmpty() && failed.isEmpty()))
        lines.append(QStringLiteral("Put back %1 on the Desktop.").arg(items(restored)));
    if (!nameTaken.isEmpty())
        lines.append(QStringLiteral("Left %1 in the Shadow Desktop: %2: %3")
                         .arg(items(nameTaken.size()),
                              nameTaken.size() == 1
                                  ? QStringLiteral("its name on the Desktop is taken")
                                  : QStringLiteral("their names on the Desktop are taken"),
                              quotedNames(nameTaken)));
    if (!split.isEmpty())
        lines.append(QStringLiteral("Left %1 split between the Desktop and the Shadow Desktop (%2 "
                                    "changed while being moved): %3")
                         .arg(items(split.size()),
                              split.size() == 1 ? QStringLiteral("it") : QStringLiteral("they"),
                              quotedNames(split)));
    if (!notThere.isEmpty())
        lines.append(QStringLiteral("Skipped %1 no longer where the tidy put %2: %3")
                         .arg(items(notThere.size()),
                              notThere.size() == 1 ? QStringLiteral("it") : QStringLiteral("them"),
                              quotedNames(notThere)));
    for (const QString &failure : failed)
        lines.append(QStringLiteral("Could not put back %1").arg(failure));
    return lines;
}
