#include "OpenCommand.h"

#include "CliContext.h"

#include <array>

namespace {
constexpr std::array kWindows{OpenCommand::Window::Panel,       OpenCommand::Window::Menu,
                              OpenCommand::Window::Restore,     OpenCommand::Window::About,
                              OpenCommand::Window::Preferences, OpenCommand::Window::Tutorial};

QString accepted()
{
    QStringList names;
    for (const OpenCommand::Window window : kWindows)
        names.append(OpenCommand::argument(window));
    return names.join(QStringLiteral(", "));
}
} // namespace

QString OpenCommand::argument(Window window)
{
    switch (window) {
    case Window::Panel:
        return QStringLiteral("panel");
    case Window::Menu:
        return QStringLiteral("menu");
    case Window::Restore:
        return QStringLiteral("restore");
    case Window::About:
        return QStringLiteral("about");
    case Window::Preferences:
        return QStringLiteral("preferences");
    case Window::Tutorial:
        return QStringLiteral("tutorial");
    }
    return {};
}

std::optional<OpenCommand::Window> OpenCommand::find(const QString &argument)
{
    for (const Window window : kWindows) {
        if (OpenCommand::argument(window) == argument)
            return window;
    }
    return std::nullopt;
}

QString OpenCommand::summary() const
{
    return QStringLiteral("show the panel, the menu or a window of the tray application");
}

QString OpenCommand::help() const
{
    return QStringLiteral(
        "Usage: brevano open WHAT\n\n"
        "Has the running tray application show WHAT, in front of other windows:\n"
        "  panel        the panel listing the Shadow Desktop (as a left click on the icon)\n"
        "  menu         the status menu, at the pointer (as a right click on the icon)\n"
        "  restore      the Restore Files window\n"
        "  about        the About window\n"
        "  preferences  the Preferences window\n"
        "  tutorial     the welcome tutorial (another window each time)\n\n"
        "Bind \"brevano open panel\" to a key in your desktop's keyboard settings to open\n"
        "the panel without the mouse, or where the tray never passes on a left click.\n"
        "When Brevano is not running, it starts here and then shows WHAT; without a\n"
        "display it cannot start, and the command exits 1. Prints nothing on success.\n");
}

int OpenCommand::run(CliContext &context, const QStringList &args)
{
    if (args.size() != 1)
        return context.fail(QStringLiteral("open takes one of: %1").arg(accepted()),
                            CliContext::BadUsage);
    const std::optional<Window> window = find(args.first());
    if (!window)
        return context.fail(QStringLiteral("cannot open \"%1\": open takes one of: %2")
                                .arg(args.first(), accepted()),
                            CliContext::BadUsage);
    if (!m_opener)
        return context.fail(QStringLiteral("\"open %1\" needs the tray application, which is "
                                           "not running and cannot start without a display "
                                           "(DISPLAY and WAYLAND_DISPLAY are unset).")
                                .arg(args.first()),
                            CliContext::Failed);
    m_opener(*window);
    return CliContext::Success;
}
