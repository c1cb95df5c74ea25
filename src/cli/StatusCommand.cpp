#include "StatusCommand.h"

#include "Brevano.h"
#include "BrevanoData.h"
#include "CliContext.h"
#include "OperationMode.h"
#include "StatusDisplay.h"

QString StatusCommand::summary() const
{
    return QStringLiteral("print whether and when Brevano tidies");
}

QString StatusCommand::help() const
{
    return QStringLiteral("Usage: brevano status\n\n"
                          "Prints six lines: enabled (true or false), frequency (the tidy\n"
                          "interval), last-tidy (ISO 8601 UTC), next (\"Automatic tidy in ...\"\n"
                          "while the tray application runs; without it nothing tidies on a\n"
                          "schedule, and the line says how to start it), items (how many\n"
                          "items lie in the Shadow Desktop) and mode (basic, or advanced,\n"
                          "in which no tidy moves anything).\n");
}

int StatusCommand::run(CliContext &context, const QStringList &args)
{
    if (!args.isEmpty())
        return context.fail(QStringLiteral("status takes no arguments"), CliContext::BadUsage);
    context.loadStore();
    const Brevano &engine = context.engine();
    const BrevanoData &data = context.data();
    // Only the running application tidies on a schedule; without it no tidy is due.
    QString next = QStringLiteral(
        "none while Brevano is not running: automatic tidies need the tray application; start "
        "it with \"brevano\" (no arguments) in your desktop session");
    if (context.storeIsLive())
        next = StatusDisplay::nextTidyLine(std::max<qint64>(
            0, QDateTime::currentDateTimeUtc().secsTo(engine.getEarliestTidyDate())));
    context.out() << "enabled: " << (engine.getEnabled() ? "true" : "false") << '\n'
                  << "frequency: " << data.getTidyIntervalText() << '\n'
                  << "last-tidy: "
                  << data.getLastTidyTime().toUTC().toString(u"yyyy-MM-ddTHH:mm:ssZ") << '\n'
                  << "next: " << next << '\n'
                  << "items: " << engine.shadowDesktopItems().size() << '\n';
    // Without this line nobody would know why the Desktop is no longer tidied.
    if (OperationMode::tidies(data.getOperationMode()))
        context.out() << "mode: basic\n";
    else
        context.out() << "mode: advanced: " << OperationMode::nothingMovesNote()
                      << " (brevano set OperationMode 0)\n";
    return CliContext::Success;
}
