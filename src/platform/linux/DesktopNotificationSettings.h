#pragma once

#include "NotificationSettings.h"

#include <QStringList>

// The notification settings of the running desktop: GNOME's Settings, KDE
// Plasma's System Settings or Xfce's notification settings. The desktop named in
// XDG_CURRENT_DESKTOP comes first; elsewhere whichever of them is installed.
// Programs are looked up on PATH at each call, so installing one needs no restart.
class DesktopNotificationSettings : public NotificationSettings
{
public:
    bool isAvailable() const override { return !command().isEmpty(); }
    bool open() override;

    // The program (a full path) and its arguments; empty when none is installed.
    QStringList command() const;
};
