#include "UndoCommand.h"

#include "Brevano.h"
#include "CliContext.h"
#include "TidyUndo.h"

#include <QDateTime>

QString UndoCommand::summary() const
{
    return QStringLiteral("put back what the last tidy moved");
}

QString UndoCommand::help() const
{
    return QStringLiteral(
        "Usage: brevano undo\n\n"
        "Takes the last tidy back: every item it moved returns from the Shadow Desktop\n"
        "to its own name on the Desktop. Nothing is ever replaced: an item whose\n"
        "Desktop name is taken now stays in the Shadow Desktop. An item that is no\n"
        "longer where the tidy put it (moved, restored or trashed since) is skipped.\n"
        "The ignore list is left as it is. A tidy is taken back once; brevano history\n"
        "lists the tidies and what they moved.\n"
        "Prints what happened. Exits 0 when everything still there went back (or\n"
        "there was nothing to undo), 1 when an item stayed because its Desktop name\n"
        "is taken, its move failed, or the tidy left it split between the Desktop and\n"
        "the Shadow Desktop.\n");
}

int UndoCommand::run(CliContext &context, const QStringList &args)
{
    if (!args.isEmpty())
        return context.fail(QStringLiteral("undo takes no arguments"), CliContext::BadUsage);
    // One undo at a time: the running Brevano may be taking it back already.
    if (context.engine().isUndoing())
        return context.fail(QStringLiteral("an undo is under way; try again when it is done"),
                            CliContext::Failed);
    MoveJournal *journal = context.journal();
    if (!journal)
        return CliContext::Failed;
    const TidyUndo::Report report =
        TidyUndo(*journal).undoLastTidy(QDateTime::currentDateTimeUtc());
    for (const QString &line : report.lines())
        context.out() << line << '\n';
    return report.nameTaken.isEmpty() && report.split.isEmpty() && report.failed.isEmpty()
               ? CliContext::Success
               : CliContext::Failed;
}
