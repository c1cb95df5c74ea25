#include "AppServices.h"
#include "CommandLine.h"
#include "ConsoleAlertPresenter.h"
#include "DesktopNotificationSettings.h"
#include "EmptyCommand.h"
#include "FileNames.h"
#include "InstanceChannel.h"
#include "KVBrevanoAppDelegate.h"
#include "LaunchAtLoginController.h"
#include "MessageBoxAlertPresenter.h"
#include "QtFileChooser.h"
#include "QtScheduler.h"
#include "StatusIcons.h"
#include "UnixSignalWatcher.h"

#include <QApplication>
#include <QDir>
#include <QTextStream>

#include <csignal>
#include <cstdio>
#include <optional>
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

using Window = OpenCommand::Window;

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

void show(KVBrevanoAppDelegate &delegate, Window window)
{
    switch (window) {
    case Window::Panel:
        delegate.openPanel();
        break;
    case Window::Menu:
        delegate.showStatusMenu();
        break;
    case Window::Restore:
        delegate.restoreFiles();
        break;
    case Window::About:
        delegate.openAboutWindow();
        break;
    case Window::Preferences:
        delegate.openPreferencesWindow();
        break;
    case Window::Tutorial:
        delegate.openTutorial();
        break;
    }
}

// With no Brevano running, "open" sets startWith: this process then starts the
// tray application and shows that window.
int runCommand(int argc, char *argv[], QStringList args, std::optional<Window> &startWith)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    ConsoleAlertPresenter alerts(err);
    if (!CommandLine::runsWithoutStore(args)) {
        // The running application cannot ask on this terminal, so "empty" asks here.
        if (args.value(0) == u"empty") {
            if (const auto answered = EmptyCommand::askFirst(args.mid(1), alerts, err))
                return *answered;
            args = {args.value(0), QStringLiteral("--yes")};
        }
        // When the application runs it carries the command out: one writer only.
        if (const auto reply = InstanceChannel::send({args, QDir::currentPath()})) {
            std::fwrite(reply->out.constData(), 1, size_t(reply->out.size()), stdout);
            std::fwrite(reply->err.constData(), 1, size_t(reply->err.size()), stderr);
            return reply->status;
        }
    }
    AppServices services(alerts);
    // Help and the version touch nothing, and may run beside a Brevano that
    // holds the journal.
    if (!CommandLine::runsWithoutStore(args)) {
        // A command that moves waits for the journal (another command may be
        // finishing); the others only look, and do not wait.
        const bool moves = CommandLine::movesItems(args);
        QString journalProblem;
        const JournalRecovery::Report recovered = services.startJournal(
            &journalProblem, false,
            moves ? std::chrono::milliseconds(30000) : std::chrono::milliseconds(0));
        const bool inUse = services.journalInUseElsewhere();
        if (inUse && moves) {
            err << "brevano: " << journalProblem << '\n';
            return 1;
        }
        // A command that only looks says so where it needs the journal.
        if (!journalProblem.isEmpty() && !inUse)
            err << "brevano: warning: " << journalProblem << '\n';
        if (!recovered.isEmpty())
            err << recovered.line() << '\n';
        err.flush();
    }
    CommandLine commandLine(services.data(), services.engine(), out, err);
    if (hasDisplay())
        commandLine.setWindowOpener([&startWith](Window window) { startWith = window; });
    const int status = commandLine.run(args);
    out.flush();
    err.flush();
    return status;
}

InstanceChannel::Reply carryOut(const InstanceChannel::Request &request, AppServices &services,
                                KVBrevanoAppDelegate &delegate)
{
    if (request.args.isEmpty()) {
        delegate.applicationShouldHandleReopen();
        return {};
    }
    // Until the command holding the journal is done, nothing is moved here
    // unrecorded on its behalf.
    if (CommandLine::movesItems(request.args) && services.journalInUseElsewhere())
        return {1, {}, "brevano: another Brevano is moving items; try again when it is done\n"};
    QByteArray outBytes, errBytes;
    QTextStream out(&outBytes), err(&errBytes);
    CommandLine commandLine(services.data(), services.engine(), out, err);
    commandLine.setStoreIsLive(true);
    commandLine.setWorkingDirectory(request.workingDirectory);
    commandLine.setWindowOpener([&delegate](Window window) { show(delegate, window); });
    const int status = commandLine.run(request.args);
    // A command may have switched the periodic tidy or its interval.
    services.data().updateStatusIcon();
    out.flush();
    err.flush();
    return {status, outBytes, errBytes};
}

// A Wayland client cannot place its own windows, and the panel must open at the
// tray icon: where XWayland runs too, Brevano is an X11 client, unless the user
// chose a platform. True when it chose one for the application about to be made.
bool preferXWayland()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qEnvironmentVariableIsEmpty("DISPLAY") ||
        !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return false;
    qputenv("QT_QPA_PLATFORM", "xcb");
    return true;
}

enum : int
{
    RestartStatus = -1
};

// Started by "brevano open", window is what to show once start-up is done;
// another Brevano that runs by then is asked to show it instead.
int runTrayApplication(int argc, char *argv[], std::optional<Window> window)
{
    // Empty: a reopen, and the running Brevano shows that it is running.
    const InstanceChannel::Request handOver{
        window ? QStringList{QStringLiteral("open"), OpenCommand::argument(*window)}
               : QStringList(),
        QDir::currentPath()};
    {
        QCoreApplication probe(argc, argv);
        if (InstanceChannel::send(handOver, 10000))
            return 0;
    }
    if (!hasDisplay()) {
        std::fputs("brevano: there is no display to show the tray icon on (DISPLAY and "
                   "WAYLAND_DISPLAY are unset). Start it in a desktop session, or use the commands "
                   "(brevano --help).\n",
                   stderr);
        return 1;
    }
    const bool onXWayland = preferXWayland();
    QApplication app(argc, argv);
    if (onXWayland)
        qunsetenv("QT_QPA_PLATFORM"); // programs Brevano opens choose their own
    // The panel's size and view: ~/.config/Brevano/Brevano.conf.
    QApplication::setOrganizationName(QStringLiteral("Brevano"));
    QApplication::setApplicationName(QStringLiteral("Brevano"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(StatusIcons::icon(QStringLiteral("brevano.svg")));
    // Type icons where the desktop sets no icon theme (bare X sessions, tests).
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor")
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    MessageBoxAlertPresenter alerts;
    AppServices services(alerts);
    QtFileChooser chooser;
    LaunchAtLoginController launchAtLogin(QCoreApplication::applicationFilePath());
    DesktopNotificationSettings notificationSettings;
    KVBrevanoAppDelegate delegate(SettingsServices{services.data(), services.engine(), chooser,
                                                   launchAtLogin, notificationSettings, alerts},
                                  QtScheduler::instance(), services.fileViewer(),
                                  services.thumbnails(), alerts);
    InstanceServer server([&services, &delegate](const InstanceChannel::Request &request) {
        return carryOut(request, services, delegate);
    });
    // Commands wait in line, and nothing shows or moves, until the journal
    // has finished what a run cut short left in flight.
    server.setServing(false);
    if (!server.listen()) {
        // Another Brevano started at the same moment and won.
        InstanceChannel::send(handOver, 10000);
        return 0;
    }
    UnixSignalWatcher quitSignals({SIGTERM, SIGINT});
    QObject::connect(&quitSignals, &UnixSignalWatcher::received, &app, &QCoreApplication::quit);
    bool launched = false;
    services.startJournalInBackground(
        std::chrono::seconds(2),
        [&services](const JournalRecovery::Report &recovered, const QString &problem) {
            if (!problem.isEmpty())
                qWarning("Brevano: %s", qUtf8Printable(problem));
            if (!recovered.isEmpty())
                services.engine().notifyUser(JournalRecovery::kTitle, recovered.summary(),
                                             QString(), QStringLiteral("RecoveredRun"));
        },
        [&] {
            launched = true;
            delegate.applicationDidFinishLaunching();
            server.setServing(true);
            if (window)
                show(delegate, *window);
        });
    const int status = app.exec();
    if (launched)
        delegate.applicationWillTerminate();
    return delegate.wantsRestart() ? RestartStatus : status;
}

} // namespace

int main(int argc, char *argv[])
{
    Q_INIT_RESOURCE(shell); // the shell library's icons and help page
    const QStringList args = arguments(argc, argv);
    std::optional<Window> startWith;
    if (!args.isEmpty()) {
        const int status = runCommand(argc, argv, args, startWith);
        if (!startWith)
            return status;
    }
    const int status = runTrayApplication(argc, argv, startWith);
    if (status == RestartStatus) {
        // Everything is saved and every Qt object gone; start afresh in this
        // process, as the tray application alone (not "open" again).
        char *trayApplication[] = {argv[0], nullptr};
        ::execv("/proc/self/exe", trayApplication);
        std::perror("brevano: could not start again");
        return 1;
    }
    return status;
}
