#include "SizeCommand.h"

#include "Brevano.h"
#include "CliContext.h"
#include "SizeText.h"

QString SizeCommand::summary() const
{
    return QStringLiteral("print the size of the Shadow Desktop");
}

QString SizeCommand::help() const
{
    return QStringLiteral("Usage: brevano size\n\n"
                          "Prints the size of everything in the Shadow Desktop (bytes of content,\n"
                          "links counted as links) as text and as a byte count: \"1.5 MB (1572864 "
                          "bytes)\".\n");
}

int SizeCommand::run(CliContext &context, const QStringList &args)
{
    if (!args.isEmpty())
        return context.fail(QStringLiteral("size takes no arguments"), CliContext::BadUsage);
    context.loadStore();
    // No time limit here: nothing waits on the answer but the user who asked.
    const quint64 bytes =
        context.engine().getFolderSize(context.engine().getTargetFilename(), std::nullopt);
    context.out() << SizeText::format(bytes) << " (" << bytes << " bytes)\n";
    return CliContext::Success;
}
