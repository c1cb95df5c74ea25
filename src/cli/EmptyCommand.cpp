#include "EmptyCommand.h"

#include "AlertPresenter.h"
#include "Brevano.h"
#include "CliContext.h"
#include "ShadowDesktopQuestions.h"

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

std::optional<int> EmptyCommand::askFirst(const QStringList &args, AlertPresenter &alerts,
                                          QTextStream &err)
{
    const bool yes = args == QStringList{QStringLiteral("--yes")};
    if (!args.isEmpty() && !yes) {
        err << "brevano: empty takes only --yes\n";
        return CliContext::BadUsage;
    }
    if (yes)
        return std::nullopt;
    if (!::isatty(STDIN_FILENO)) {
        err << "brevano: empty asks first, and there is no terminal to ask on; give --yes to "
               "empty without asking\n";
        return CliContext::BadUsage;
    }
    if (alerts.runModal(ShadowDesktopQuestions::empty()) != 0)
        return CliContext::Success;
    return std::nullopt;
}

int EmptyCommand::run(CliContext &context, const QStringList &args)
{
    if (const auto answered = askFirst(args, context.alerts(), context.err()))
        return *answered;
    context.loadStore();
    context.engine().deleteShadowDesktopContents();
    const qsizetype left = context.engine().shadowDesktopItems().size();
    if (left > 0)
        return context.fail(QStringLiteral("%1 items could not be moved to the Trash").arg(left),
                            CliContext::Failed);
    context.out() << "The contents of the Shadow Desktop have been moved to the trash\n";
    return CliContext::Success;
}
