#pragma once

#include <QString>

// Starting Brevano at login. Each platform's code implements it: on Linux an
// XDG autostart entry in $XDG_CONFIG_HOME/autostart. An entry is ours when its Exec runs our program;
// enabling twice leaves one entry, disabling when there is none changes nothing.
class LaunchAtLoginController
{
public:
    explicit LaunchAtLoginController(const QString &program);

    QString appURL() const { return m_program; }
    bool willLaunchAtLogin(const QString &program) const;
    bool launchAtLogin() const { return willLaunchAtLogin(m_program); }
    bool setLaunchAtLogin(bool enabled) { return setLaunchAtLogin(m_program, enabled); }
    // False when the autostart folder or entry could not be written.
    bool setLaunchAtLogin(const QString &program, bool enabled);

    static QString autostartFolder();

private:
    // The first autostart entry that starts program and is not hidden.
    QString findEntry(const QString &program) const;

    QString m_program;
};
