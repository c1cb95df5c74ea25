#include "PathsCommand.h"

#include "Brevano.h"
#include "BrevanoData.h"
#include "CliContext.h"

QString PathsCommand::summary() const
{
    return QStringLiteral("print the Desktop, Shadow Desktop and data file locations");
}

QString PathsCommand::help() const
{
    return QStringLiteral("Usage: brevano paths\n\n"
                          "Prints three lines:\n"
                          "  desktop: PATH          the folder that is tidied\n"
                          "  shadow-desktop: PATH   the folder tidied items are moved to\n"
                          "  data-file: PATH        where settings are saved\n");
}

int PathsCommand::run(CliContext &context, const QStringList &args)
{
    if (!args.isEmpty())
        return context.fail(QStringLiteral("paths takes no arguments"), CliContext::BadUsage);
    context.loadStore();
    context.out() << "desktop: " << context.engine().getDesktopFolder() << '\n'
                  << "shadow-desktop: " << context.engine().getTargetFilename() << '\n'
                  << "data-file: " << context.data().pathForDataFile() << '\n';
    return CliContext::Success;
}
