#pragma once

#include "EngineFixture.h"
#include "FakeFileChooser.h"
#include "LaunchAtLoginController.h"
#include "NotificationSettings.h"
#include "SettingsServices.h"

// The desktop's notification settings, as a test sets them up.
class FakeNotificationSettings : public NotificationSettings
{
public:
    bool isAvailable() const override { return m_available; }
    bool open() override { return ++m_opened; }
    bool m_available = true;
    int m_opened = 0;
};

// What the settings windows work with, over a sandbox store on virtual time.
struct SettingsFixture
{
    EngineFixture f;
    FakeFileChooser chooser;
    FakeNotificationSettings notificationSettings;
    LaunchAtLoginController launchAtLogin{QStringLiteral("/opt/brevano/bin/brevano")};
    SettingsServices services{f.data,  f.engine, chooser, launchAtLogin, notificationSettings,
                              f.alerts};
};
