#include "RestoreCommand.h"

#include "Brevano.h"
#include "BrevanoData.h"
#include "CliContext.h"
#include "FileStat.h"

QString RestoreCommand::summary() const
{
    return QStringLiteral("move items back to the Desktop");
}

QString RestoreCommand::help() const
{
    return QStringLiteral(
        "Usage: brevano restore NAME... [--ignore]\n"
        "       brevano restore --all [--ignore]\n\n"
        "Moves items that lie directly in the Shadow Desktop back to the Desktop under\n"
        "their own names. NAME is a plain name, without \"/\"; with any other argument\n"
        "nothing is restored. An item of the same name on the Desktop is never\n"
        "replaced: that restore fails and both stay. Exits 1 when one failed, 2 for a\n"
        "bad NAME.\n\n"
        "  --all     every item of the Shadow Desktop\n"
        "  --ignore  add the restored items to the ignore list, so tidies leave them\n");
}

int RestoreCommand::run(CliContext &context, const QStringList &args)
{
    QStringList names = args;
    const bool addToIgnore = names.removeAll(QStringLiteral("--ignore")) > 0;
    const bool all = names.removeAll(QStringLiteral("--all")) > 0;
    if (all == !names.isEmpty())
        return context.fail(
            QStringLiteral("restore takes NAME... or --all (see brevano restore --help)"),
            CliContext::BadUsage);
    if (!context.checkItemNames(names))
        return CliContext::BadUsage;
    context.loadStore();
    Brevano &engine = context.engine();
    QStringList paths;
    if (all) {
        paths = engine.shadowDesktopItems();
    } else {
        for (const QString &name : std::as_const(names))
            paths.append(context.shadowPath(name));
    }
    int status = CliContext::Success;
    const Brevano::Batch batch(engine, MoveJournal::RunKind::Restore, engine.restoresOf(paths));
    for (const QString &path : std::as_const(paths)) {
        const QString name = path.mid(engine.getTargetFilename().size() + 1);
        const FileMover::Result result = engine.restoreItem(path, addToIgnore);
        if (result.moved()) {
            context.out() << "restored " << name << '\n';
            continue;
        }
        // Say why; the move itself never replaces anything.
        QString reason = result.message;
        if (result.status == FileMover::Status::TargetExists)
            reason = QStringLiteral("an item of that name is on the Desktop");
        else if (!FileStat::exists(path))
            reason = QStringLiteral("there is no such item in the Shadow Desktop");
        status = context.fail(QStringLiteral("not restored %1: %2").arg(name, reason),
                              CliContext::Failed);
    }
    if (addToIgnore && !context.saveStore())
        return CliContext::Failed;
    return status;
}
