#include "DesktopNotificationSettings.h"

#include <QProcess>
#include <QStandardPaths>

#include <array>

namespace {
struct Candidate
{
    const char16_t *desktop; // as XDG_CURRENT_DESKTOP names it
    const char16_t *program;
    const char16_t *argument;
};

// In order of preference within a desktop.
constexpr std::array<Candidate, 5> kCandidates{{
    {u"GNOME", u"gnome-control-center", u"notifications"},
    {u"KDE", u"systemsettings", u"kcm_notifications"},
    {u"KDE", u"kcmshell6", u"kcm_notifications"},
    {u"KDE", u"kcmshell5", u"kcm_notifications"},
    {u"XFCE", u"xfce4-notifyd-config", nullptr},
}};

QStringList commandOf(const Candidate &candidate)
{
    const QString path = QStandardPaths::findExecutable(QString::fromUtf16(candidate.program));
    if (path.isEmpty())
        return {};
    QStringList command{path};
    if (candidate.argument)
        command.append(QString::fromUtf16(candidate.argument));
    return command;
}
} // namespace

QStringList DesktopNotificationSettings::command() const
{
    // A colon-separated list, most specific first ("ubuntu:GNOME").
    const QStringList desktops =
        qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    for (const QString &desktop : desktops) {
        for (const Candidate &candidate : kCandidates) {
            if (desktop.compare(QString::fromUtf16(candidate.desktop), Qt::CaseInsensitive) != 0)
                continue;
            if (QStringList found = commandOf(candidate); !found.isEmpty())
                return found;
        }
    }
    // Another desktop's settings would set up a notification service that is not
    // the one running (or refuse to start at all): none is better.
    return {};
}

bool DesktopNotificationSettings::open()
{
    const QStringList found = command();
    return !found.isEmpty() && QProcess::startDetached(found.first(), found.mid(1));
}
