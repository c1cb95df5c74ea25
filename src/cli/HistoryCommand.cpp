#include "HistoryCommand.h"

#include "CliContext.h"
#include "FileNames.h"
#include "MoveJournal.h"
#include "RunDescription.h"

#include <optional>

namespace {

QString statusWord(MoveJournal::ItemStatus status)
{
    switch (status) {
    case MoveJournal::ItemStatus::Pending:
        return QStringLiteral("pending");
    case MoveJournal::ItemStatus::Moved:
        return QStringLiteral("moved");
    case MoveJournal::ItemStatus::Failed:
        return QStringLiteral("failed");
    case MoveJournal::ItemStatus::Deferred:
        return QStringLiteral("deferred");
    case MoveJournal::ItemStatus::Incomplete:
        return QStringLiteral("incomplete");
    case MoveJournal::ItemStatus::Skipped:
        return QStringLiteral("skipped");
    }
    return QString();
}

QString runLine(const MoveJournal::Run &run)
{
    return QStringLiteral("%1  %2").arg(run.id).arg(RunDescription::line(run));
}

// A whole number above zero, or nothing.
std::optional<quint64> positive(const QString &text)
{
    bool ok = false;
    const quint64 value = text.toULongLong(&ok);
    if (!ok || value == 0 || text.startsWith(u'+'))
        return std::nullopt;
    return value;
}

} // namespace

QString HistoryCommand::summary() const
{
    return QStringLiteral("list what the last tidies and restores moved");
}

QString HistoryCommand::help() const
{
    return QStringLiteral(
               "Usage: brevano history [--limit N]\n"
               "       brevano history RUN\n\n"
               "Lists the runs of the move journal, newest first, one a line: its number\n"
               "(RUN), when it began (local time), what it was (a tidy and what started it,\n"
               "an undo and the run it took back, a restore, a drop, trashing) and how many\n"
               "items it moved, failed to move and deferred. A run cut short says\n"
               "\"(interrupted)\", or \"(interrupted, recovered)\" once a later start finished\n"
               "it; a tidy taken back by brevano undo says \"(undone)\".\n"
               "With RUN, that run's line, then one line per item: what became of it, where\n"
               "it was -> where it went, and in brackets what else happened.\n"
               "Exits 1 when there is no such run, 2 for a bad N or RUN.\n\n"
               "  --limit N  the N newest runs (%1 unless given)\n")
        .arg(kDefaultLimit);
}

int HistoryCommand::run(CliContext &context, const QStringList &args)
{
    std::optional<quint64> limit = kDefaultLimit;
    std::optional<quint64> id;
    if (args.size() == 2 && args.first() == u"--limit") {
        limit = positive(args.at(1));
        if (!limit)
            return context.fail(QStringLiteral("--limit takes a number of runs above 0, not \"%1\"")
                                    .arg(args.at(1)),
                                CliContext::BadUsage);
    } else if (args.size() == 1 && args.first() == u"--limit") {
        return context.fail(QStringLiteral("--limit needs a number"), CliContext::BadUsage);
    } else if (args.size() == 1) {
        id = positive(args.first());
        if (!id)
            return context.fail(QStringLiteral("\"%1\" is not a run number (see brevano history)")
                                    .arg(args.first()),
                                CliContext::BadUsage);
    } else if (!args.isEmpty()) {
        return context.fail(
            QStringLiteral("history takes RUN or --limit N (see brevano history --help)"),
            CliContext::BadUsage);
    }
    const MoveJournal *journal = context.journal();
    if (!journal)
        return CliContext::Failed;
    if (id)
        return showRun(context, *journal, *id);
    const QList<MoveJournal::Run> runs = journal->runs();
    if (runs.isEmpty())
        context.out() << "The move journal holds no runs yet.\n";
    const qsizetype shown = std::min<qsizetype>(runs.size(), qsizetype(*limit));
    for (qsizetype i = runs.size() - 1; i >= runs.size() - shown; --i)
        context.out() << runLine(runs.at(i)) << '\n';
    return CliContext::Success;
}

int HistoryCommand::showRun(CliContext &context, const MoveJournal &journal, quint64 id)
{
    const std::optional<MoveJournal::Run> run = journal.run(id);
    if (!run)
        return context.fail(
            QStringLiteral("the move journal holds no run %1 (brevano history lists them)").arg(id),
            CliContext::Failed);
    QTextStream &out = context.out();
    out << runLine(*run) << '\n';
    for (const MoveJournal::Item &item : run->items) {
        out << "  " << statusWord(item.status) << ' ' << FileNames::display(item.source);
        if (!item.target.isEmpty())
            out << " -> " << FileNames::display(item.target);
        if (!item.message.isEmpty())
            out << " (" << item.message << ')';
        out << '\n';
    }
    return CliContext::Success;
}
