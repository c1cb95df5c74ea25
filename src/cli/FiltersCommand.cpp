#include "FiltersCommand.h"

#include "BrevanoData.h"
#include "CliContext.h"

QString FiltersCommand::summary() const
{
    return QStringLiteral("list the quick filters");
}

QString FiltersCommand::help() const
{
    return QStringLiteral("Usage: brevano filters\n\n"
                          "Prints each quick filter in order as NAME, a tab, and its\n"
                          "extensions, lower-cased and separated by commas.\n");
}

int FiltersCommand::run(CliContext &context, const QStringList &args)
{
    if (!args.isEmpty())
        return context.fail(QStringLiteral("filters takes no arguments"), CliContext::BadUsage);
    context.loadStore();
    for (const auto &item : context.data().filterItems())
        context.out() << item->getName() << '\t' << item->getExtensionsText() << '\n';
    return CliContext::Success;
}
