#include "TrashCommand.h"

#include "Brevano.h"
#include "CliContext.h"

QString TrashCommand::summary() const
{
    return QStringLiteral("move Shadow Desktop items to the Trash");
}

QString TrashCommand::help() const
{
    return QStringLiteral("Usage: brevano trash NAME...\n\n"
                          "Moves the named items that lie directly in the Shadow Desktop to the\n"
                          "Trash. NAME is a plain name, without \"/\"; with any other argument\n"
                          "nothing is trashed. An item that cannot be trashed stays where it is.\n"
                          "Exits 1 when one could not be trashed, 2 for a bad NAME.\n");
}

int TrashCommand::run(CliContext &context, const QStringList &args)
{
    if (args.isEmpty())
        return context.fail(QStringLiteral("trash takes NAME... (see brevano trash --help)"),
                            CliContext::BadUsage);
    if (!context.checkItemNames(args))
        return CliContext::BadUsage;
    context.loadStore();
    int status = CliContext::Success;
    QStringList paths;
    for (const QString &name : args)
        paths.append(context.shadowPath(name));
    const Brevano::Batch batch(context.engine(), MoveJournal::RunKind::Trash,
                               Brevano::trashingsOf(paths));
    for (const QString &name : args) {
        const Trash::Result result = context.engine().trashItem(context.shadowPath(name));
        if (result.ok)
            context.out() << "trashed " << name << '\n';
        else
            status = context.fail(QStringLiteral("not trashed %1: %2").arg(name, result.message),
                                  CliContext::Failed);
    }
    return status;
}
