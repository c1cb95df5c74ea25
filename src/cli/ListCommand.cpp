#include "ListCommand.h"

#include "BackgroundFileListBuilder.h"
#include "Brevano.h"
#include "CliContext.h"

#include <QEventLoop>

QString ListCommand::summary() const
{
    return QStringLiteral("list what is in the Shadow Desktop");
}

QString ListCommand::help() const
{
    return QStringLiteral("Usage: brevano list [--recursive]\n\n"
                          "Prints the Shadow Desktop's entries relative to it, one a line: its\n"
                          "folders first, then everything else, in the file system's order.\n\n"
                          "  --recursive  every file at any depth, and no folder lines\n");
}

int ListCommand::run(CliContext &context, const QStringList &args)
{
    const bool recursive = args == QStringList{QStringLiteral("--recursive")};
    if (!args.isEmpty() && !recursive)
        return context.fail(QStringLiteral("list takes only --recursive"), CliContext::BadUsage);
    context.loadStore();
    const QString root = context.engine().getTargetFilename();
    auto view = std::make_shared<QuickFilterItem>();
    view->setFolderStyle(recursive ? 1 : 0);
    BackgroundFileListBuilder builder(root, view, QString(), root, context.engine().itemInfo());
    QStringList paths;
    QEventLoop loop;
    QObject::connect(&builder, &BackgroundFileListBuilder::fileListCompleted, &loop,
                     [&](const QStringList &completed) {
                         paths = completed;
                         loop.quit();
                     });
    builder.startBackgroundTask();
    loop.exec();
    for (const QString &path : std::as_const(paths))
        context.out() << path.mid(root.size() + 1) << '\n';
    return CliContext::Success;
}
