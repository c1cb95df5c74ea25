#pragma once

#include "Command.h"

#include <functional>
#include <optional>

// "brevano open WHAT": has the tray application show one of its windows or its
// menu, for desktop keyboard shortcuts and for tests. Whoever can show them
// hands in an opener; without one there is no application to show anything.
class OpenCommand : public Command
{
public:
    enum class Window
    {
        Panel,
        Menu,
        Restore,
        About,
        Preferences,
        Tutorial
    };
    using Opener = std::function<void(Window)>;

    QString name() const override { return QStringLiteral("open"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;

    void setOpener(Opener opener) { m_opener = std::move(opener); }
    // The argument that names window.
    static QString argument(Window window);

private:
    static std::optional<Window> find(const QString &argument);

    Opener m_opener;
};
