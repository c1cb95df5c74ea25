#include "IgnoreCommand.h"

#include "BrevanoData.h"
#include "CliContext.h"

#include <QDir>

QString IgnoreCommand::summary() const
{
    return QStringLiteral("list, add or remove Desktop items a tidy never moves");
}

QString IgnoreCommand::help() const
{
    return QStringLiteral(
        "Usage: brevano ignore list\n"
        "       brevano ignore add PATH...\n"
        "       brevano ignore remove PATH...\n\n"
        "The ignore list holds items that lie directly on the Desktop; a tidy leaves\n"
        "them where they are. Absolute paths are taken exactly as written; relative\n"
        "ones are taken from the current folder. add skips (and reports) paths that\n"
        "are not directly on the Desktop and exits 1 when it skipped any; the others\n"
        "are added all the same. A path ending in \".\" or \"..\" is bad usage, and\n"
        "then nothing is added.\n");
}

// Absolute paths stay as written, since the list compares text exactly.
static QStringList fullPaths(const QStringList &paths, const QString &workingDirectory)
{
    QStringList full;
    for (const QString &path : paths)
        full.append(QDir::isAbsolutePath(path)
                        ? path
                        : QDir::cleanPath(QDir(workingDirectory).absoluteFilePath(path)));
    return full;
}

int IgnoreCommand::run(CliContext &context, const QStringList &args)
{
    const QString action = args.value(0);
    const QStringList paths = args.mid(1);
    if (action == u"list" && paths.isEmpty())
        return list(context);
    if ((action == u"add" || action == u"remove") && !paths.isEmpty())
        return action == u"add" ? add(context, fullPaths(paths, context.workingDirectory()))
                                : remove(context, fullPaths(paths, context.workingDirectory()));
    return context.fail(QStringLiteral("ignore takes list, add PATH... or remove PATH... "
                                       "(see brevano ignore --help)"),
                        CliContext::BadUsage);
}

int IgnoreCommand::add(CliContext &context, const QStringList &paths)
{
    // ".." or "." after the Desktop's path names a folder, not an item on it.
    for (const QString &path : paths) {
        const QString name = path.section(u'/', -1);
        if (name == u"." || name == u"..")
            return context.fail(
                QStringLiteral("\"%1\" is not the path of an item on the Desktop").arg(path),
                CliContext::BadUsage);
    }
    context.loadStore();
    // Said on this command's terminal, not by the store (which in the running
    // application would ask in a window).
    const qsizetype skipped = context.data().addIgnoreFilesWithoutAlert(paths);
    if (skipped > 0)
        context.alerts().runModal(Alert{IgnoreList::skippedAlertTitle(skipped), QString()});
    if (!context.saveStore())
        return CliContext::Failed;
    return skipped > 0 ? CliContext::Failed : CliContext::Success;
}

int IgnoreCommand::remove(CliContext &context, const QStringList &paths)
{
    context.loadStore();
    int status = CliContext::Success;
    const IgnoreList ignored = context.data().ignoreList();
    for (const QString &path : paths) {
        if (!ignored.contains(path))
            status = context.fail(QStringLiteral("not on the ignore list: %1").arg(path),
                                  CliContext::Failed);
    }
    context.data().removeIgnoreFiles(paths);
    if (!context.saveStore())
        return CliContext::Failed;
    return status;
}

int IgnoreCommand::list(CliContext &context)
{
    context.loadStore();
    for (const QString &path : context.data().ignoreList().paths())
        context.out() << path << '\n';
    return CliContext::Success;
}
