#pragma once

#include "NotificationSettings.h"

#include <QStringList>

// The notification settings of the running desktop: GNOME's Settings, KDE
// Plasma's System Settings or Xfce's notification settings, for the desktop
// named in XDG_CURRENT_DESKTOP only; on any other desktop there is none.
// Programs are looked up on PATH at each call, so installing one needs no restart.
class DesktopNotificationSettings : public NotificationSettings
{
public:
    bool isAvailable() const override { return !command().isEmpty(); }
    bool open() override;

    // The program (a full path) and its arguments; empty when there is none.
    QStringList command() const;
};
