#include "EmptyCommand.h"

#include "AlertPresenter.h"
#include "Brevano.h"
#include "CliContext.h"
#include "DirectoryListing.h"

#include <unistd.h>

QString EmptyCommand::summary() const
{
    return QStringLiteral("move everything in the Shadow Desktop to the Trash");
}

QString EmptyCommand::help() const
{
    return QStringLiteral("Usage: brevano empty [--yes]\n\n"
                          "Moves every item of the Shadow Desktop to the Trash, after asking on\n"
                          "the terminal. Without a terminal it refuses unless --yes is given.\n"
                          "Exits 1 when some items could not be trashed.\n\n"
                          "  --yes  do not ask\n");
}

int EmptyCommand::run(CliContext &context, const QStringList &args)
{
    const bool yes = args == QStringList{QStringLiteral("--yes")};
    if (!args.isEmpty() && !yes)
        return context.fail(QStringLiteral("empty takes only --yes"), CliContext::BadUsage);
    if (!yes && !::isatty(STDIN_FILENO))
        return context.fail(QStringLiteral("empty asks first, and there is no terminal to ask "
                                           "on; give --yes to empty without asking"),
                            CliContext::BadUsage);
    context.loadStore();
    if (!yes) {
        const int answer = context.alerts().runModal(Alert{
            QStringLiteral("All items in the Shadow Desktop folder will be moved to the Trash. "
                           "Would you like to continue?"),
            QString(),
            {QStringLiteral("Continue"), QStringLiteral("Cancel")}});
        if (answer != 0)
            return CliContext::Success;
    }
    context.engine().deleteShadowDesktopContents();
    const qsizetype left = DirectoryListing::entries(context.engine().getTargetFilename()).size();
    if (left > 0)
        return context.fail(QStringLiteral("%1 items could not be moved to the Trash").arg(left),
                            CliContext::Failed);
    context.out() << "The contents of the Shadow Desktop have been moved to the trash\n";
    return CliContext::Success;
}
