#pragma once

class AlertPresenter;
class Brevano;
class BrevanoData;
class FileChooser;
class LaunchAtLoginController;
class NotificationSettings;

// What the settings windows work with: the store and the engine, and the
// desktop services the application made for them (fakes in tests).
struct SettingsServices
{
    BrevanoData &data;
    Brevano &engine;
    FileChooser &chooser;
    LaunchAtLoginController &launchAtLogin;
    NotificationSettings &notificationSettings;
    AlertPresenter &alerts;
};
