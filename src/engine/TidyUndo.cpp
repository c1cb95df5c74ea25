#include "TidyUndo.h"

#include "FileMover.h"
#include "FileNames.h"
#include "JournalObserver.h"
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
    // Beginning the undo marks the tidy as undone, whatever comes of it.
    const quint64 undo =
        m_journal.beginRun(MoveJournal::RunKind::Undo, QString::number(recorded->id), now);

    struct Planned
    {
        quint32 seq;
        const MoveJournal::Item *item;
    };
    std::vector<Planned> planned;
    for (const MoveJournal::Item &item : recorded->items) {
        if (item.status != Status::Moved)
            continue;
        const Identity there = Identity::of(item.target);
        const quint32 seq = m_journal.addIntent(undo, item.target, item.source, there);
        if (there == item.targetIdentity) {
            planned.push_back({seq, &item});
            continue;
        }
        // Gone, or something else has taken its name since: never looked for elsewhere.
        report.notThere.append(item.target);
        m_journal.noteOutcome(undo, seq, Status::Skipped, item.target, there,
                              QStringLiteral("not where the tidy put it"));
    }
    m_journal.sync();

    for (const auto &[seq, item] : planned) {
        FileMover::Result result;
        {
            const JournalObserver observer(&m_journal, undo, seq);
            result = FileMover::move(item->target, item->source);
        }
        switch (result.status) {
        case FileMover::Status::Moved:
            ++report.restored;
            m_journal.noteOutcome(undo, seq, Status::Moved, item->source,
                                  Identity::of(item->source), QString());
            break;
        case FileMover::Status::TargetExists:
            report.nameTaken.append(item->source);
            m_journal.noteOutcome(undo, seq, Status::Skipped, item->target, item->targetIdentity,
                                  QStringLiteral("its Desktop name is taken"));
            break;
        case FileMover::Status::Incomplete:
        case FileMover::Status::Failed: {
            // Incomplete: the copy is on the Desktop, and what changed during it stayed.
            const bool landed = result.status == FileMover::Status::Incomplete;
            const QString where = landed ? item->source : item->target;
            report.failed.append(
                QStringLiteral("%1: %2").arg(FileNames::display(item->target), result.message));
            m_journal.noteOutcome(undo, seq, landed ? Status::Incomplete : Status::Failed, where,
                                  Identity::of(where), result.message);
            break;
        }
        }
    }
    m_journal.endRun(undo, now);
    return report;
}

QStringList TidyUndo::Report::lines() const
{
    if (nothingToUndo)
        return {QStringLiteral("There is nothing to undo.")};
    QStringList lines;
    if (restored > 0 || (nameTaken.isEmpty() && notThere.isEmpty() && failed.isEmpty()))
        lines.append(QStringLiteral("Put back %1 on the Desktop.").arg(items(restored)));
    if (!nameTaken.isEmpty())
        lines.append(QStringLiteral("Left %1 in the Shadow Desktop: %2: %3")
                         .arg(items(nameTaken.size()),
                              nameTaken.size() == 1
                                  ? QStringLiteral("its name on the Desktop is taken")
                                  : QStringLiteral("their names on the Desktop are taken"),
                              quotedNames(nameTaken)));
    if (!notThere.isEmpty())
        lines.append(QStringLiteral("Skipped %1 no longer where the tidy put %2: %3")
                         .arg(items(notThere.size()),
                              notThere.size() == 1 ? QStringLiteral("it") : QStringLiteral("them"),
                              quotedNames(notThere)));
    for (const QString &failure : failed)
        lines.append(QStringLiteral("Could not put back %1").arg(failure));
    return lines;
}
