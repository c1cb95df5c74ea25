#include "Brevano.h"
#include "BrevanoData.h"
#include "CommandLine.h"
#include "ConsoleAlertPresenter.h"
#include "FileNames.h"
#include "FreedesktopFileViewer.h"
#include "InstanceChannel.h"
#include "KVBrevanoAppDelegate.h"
#include "QtScheduler.h"
#include "StatusIcons.h"
#include "UnixSignalWatcher.h"

#include <QApplication>
#include <QDir>
#include <QTextStream>

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

// Arguments may name items whose names are not UTF-8: decoded as file names,
// they keep their bytes.
QStringList arguments(int argc, char *argv[])
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(FileNames::decode(argv[i]));
    return args;
}

// The running application cannot ask on this terminal, so "empty" asks here.
std::optional<int> confirmEmptyHere(QStringList &args, QTextStream &err)
{
    if (args.value(0) != u"empty" || args.contains(QStringLiteral("--yes")))
        return std::nullopt;
    if (!::isatty(STDIN_FILENO)) {
        err << "brevano: empty asks first, and there is no terminal to ask on; give --yes to empty "
               "without asking\n";
        return 2;
    }
    ConsoleAlertPresenter alerts(err);
    const int answer = alerts.runModal(
        Alert{QStringLiteral("All items in the Shadow Desktop folder will be moved to the Trash. "
                             "Would you like to continue?"),
              QString(),
              {QStringLiteral("Continue"), QStringLiteral("Cancel")}});
    if (answer != 0)
        return 0;
    args.append(QStringLiteral("--yes"));
    return std::nullopt;
}

int runCommand(int argc, char *argv[], QStringList args)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    if (!CommandLine::runsWithoutStore(args)) {
        if (const auto answered = confirmEmptyHere(args, err))
            return *answered;
        // When the application runs it carries the command out: one writer only.
        if (const auto reply = InstanceChannel::send({args, QDir::currentPath()})) {
            std::fwrite(reply->out.constData(), 1, size_t(reply->out.size()), stdout);
            std::fwrite(reply->err.constData(), 1, size_t(reply->err.size()), stderr);
            return reply->status;
        }
    }
    CommandLine commandLine(BrevanoData::sharedInstance(), Brevano::sharedInstance(), out, err);
    const int status = commandLine.run(args);
    out.flush();
    err.flush();
    return status;
}

InstanceChannel::Reply carryOut(const InstanceChannel::Request &request,
                                KVBrevanoAppDelegate &delegate)
{
    if (request.args.isEmpty()) {
        delegate.applicationShouldHandleReopen();
        return {};
    }
    QByteArray outBytes, errBytes;
    QTextStream out(&outBytes), err(&errBytes);
    CommandLine commandLine(BrevanoData::sharedInstance(), Brevano::sharedInstance(), out, err);
    commandLine.setStoreIsLive(true);
    commandLine.setWorkingDirectory(request.workingDirectory);
    const int status = commandLine.run(request.args);
    BrevanoData::sharedInstance().setAlertPresenter(&delegate.alerts());
    // A command may have switched the periodic tidy or its interval.
    BrevanoData::sharedInstance().updateStatusIcon();
    out.flush();
    err.flush();
    return {status, outBytes, errBytes};
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

enum : int
{
    RestartStatus = -1
};

int runTrayApplication(int argc, char *argv[])
{
    {
        QCoreApplication probe(argc, argv);
        if (InstanceChannel::send({{}, QDir::currentPath()}, 10000))
            return 0; // the running Brevano shows that it is running
    }
    if (!hasDisplay()) {
        std::fputs("brevano: there is no display to show the tray icon on (DISPLAY and "
                   "WAYLAND_DISPLAY are unset). Start it in a desktop session, or use the commands "
                   "(brevano --help).\n",
                   stderr);
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Brevano"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(StatusIcons::icon(QStringLiteral("brevano.svg")));
    static FreedesktopFileViewer fileViewer;
    KVBrevanoAppDelegate delegate(BrevanoData::sharedInstance(), Brevano::sharedInstance(),
                                  QtScheduler::instance(), fileViewer);
    InstanceServer server([&delegate](const InstanceChannel::Request &request) {
        return carryOut(request, delegate);
    });
    if (!server.listen()) {
        // Another Brevano started at the same moment and won.
        InstanceChannel::send({{}, QDir::currentPath()}, 10000);
        return 0;
    }
    UnixSignalWatcher quitSignals({SIGTERM, SIGINT});
    QObject::connect(&quitSignals, &UnixSignalWatcher::received, &app, &QCoreApplication::quit);
    delegate.applicationDidFinishLaunching();
    const int status = app.exec();
    delegate.applicationWillTerminate();
    return delegate.wantsRestart() ? RestartStatus : status;
}

} // namespace

int main(int argc, char *argv[])
{
    Q_INIT_RESOURCE(shell); // the shell library's icons and help page
    const QStringList args = arguments(argc, argv);
    if (!args.isEmpty())
        return runCommand(argc, argv, args);
    const int status = runTrayApplication(argc, argv);
    if (status == RestartStatus) {
        // Everything is saved and every Qt object gone; start afresh in this process.
        ::execv("/proc/self/exe", argv);
        std::perror("brevano: could not start again");
        return 1;
    }
    return status;
}
