#include "TidyCommand.h"

#include "Brevano.h"
#include "BrevanoData.h"
#include "CliContext.h"
#include "FileNames.h"
#include "OperationMode.h"

QString TidyCommand::summary() const
{
    return QStringLiteral("tidy the Desktop now");
}

QString TidyCommand::help() const
{
    return QStringLiteral(
        "Usage: brevano tidy [--dry-run]\n\n"
        "Moves what lies directly on the Desktop into the Shadow Desktop, as a tidy\n"
        "from the menu does, and sends the notifications the settings allow. Prints\n"
        "one line per item: \"moved NAME -> TARGET\" (with a note in brackets when\n"
        "something else happened, such as a replaced item kept because the Trash\n"
        "refused it), \"failed NAME: REASON\" or \"deferred NAME\" (still being\n"
        "written; tidy again later), then the summary.\n"
        "Hidden items, ignored items and (by the settings) folders and links stay.\n"
        "Exits 1 when a move failed.\n\n"
        "  --dry-run  print what would move, and touch nothing\n");
}

int TidyCommand::run(CliContext &context, const QStringList &args)
{
    if (args == QStringList{QStringLiteral("--dry-run")})
        return dryRun(context);
    if (!args.isEmpty())
        return context.fail(QStringLiteral("tidy takes only --dry-run"), CliContext::BadUsage);
    context.loadStore();
    if (!OperationMode::tidies(context.data().getOperationMode())) {
        context.out() << OperationMode::nothingMovesNote() << '\n';
        return CliContext::Success;
    }
    Brevano &engine = context.engine();
    if (const QString why = engine.whyTidiesWait(); !why.isEmpty())
        return context.fail(QStringLiteral("no tidy now: %1; try again when it is done").arg(why),
                            CliContext::Failed);
    QTextStream &out = context.out();
    bool anyFailed = false;
    QObject receiver;
    QObject::connect(&engine, &Brevano::tidyItemProcessed, &receiver,
                     [&](const QString &path, Brevano::ItemResult result, const QString &target,
                         const QString &reason) {
                         const QString name =
                             FileNames::display(ShadowDesktopPaths::lastPathComponent(path));
                         if (result == Brevano::ItemResult::Moved) {
                             out << "moved " << name << " -> " << FileNames::display(target);
                             if (!reason.isEmpty())
                                 out << " (" << reason << ')';
                             out << '\n';
                         } else if (result == Brevano::ItemResult::Deferred) {
                             out << "deferred " << name << '\n';
                         } else {
                             out << "failed " << name << ": " << reason << '\n';
                         }
                         anyFailed = anyFailed || result == Brevano::ItemResult::Failed;
                     });
    QObject::connect(&engine, &Brevano::tidySkipped, &receiver, [&] {
        out << "Brevano found no files on the Desktop and will skip this Tidy\n";
    });
    QObject::connect(&engine, &Brevano::tidyPassFinished, &receiver,
                     [&](qint64 moved, qint64 found) {
                         out << QStringLiteral("Moved %1 of %2 items found to Shadow Desktop\n")
                                    .arg(moved)
                                    .arg(found);
                     });
    engine.performManualTidy();
    return anyFailed ? CliContext::Failed : CliContext::Success;
}

int TidyCommand::dryRun(CliContext &context)
{
    context.loadStore();
    Brevano &engine = context.engine();
    BrevanoData &data = context.data();
    if (!OperationMode::tidies(data.getOperationMode())) {
        context.out() << OperationMode::nothingMovesNote() << '\n';
        return CliContext::Success;
    }
    engine.forEachTidyItem(false, [&](const QString &entry, quint32 verdict,
                                      const ItemInfo::Facts &) {
        const QString name = FileNames::display(ShadowDesktopPaths::lastPathComponent(entry));
        if (verdict == CandidateSelector::CandidateDeferred) {
            context.out() << "deferred " << name << '\n';
            return;
        }
        const QString target = OverwriteMover::plannedTarget(
            engine.getTargetPathFromSourcePath(entry), data.getOverwriteMode());
        if (target.isEmpty())
            context.out() << "would fail " << name << ": overwrite mode " << data.getOverwriteMode()
                          << " moves nothing\n";
        else
            context.out() << "would move " << name << " -> " << FileNames::display(target) << '\n';
    });
    return CliContext::Success;
}
