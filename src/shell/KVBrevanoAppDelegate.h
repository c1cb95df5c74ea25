#pragma once

#include "PanelControllerDelegate.h"
#include "SettingsServices.h"

#include <QObject>
#include <QPointer>

#include <memory>

class AboutWindow;
class AlertPresenter;
class AlreadyRunningWindow;
class Brevano;
class BrevanoData;
class FileViewer;
class MenubarController;
class NoTrayWindow;
class PanelController;
class Scheduler;
class StatusMenu;
class ThumbnailService;
class WelcomeWindowController;

// The tray application: starts the store, the engine, the status menu and the
// status item in their order, opens the windows, and saves on the way out.
class KVBrevanoAppDelegate : public QObject, public PanelControllerDelegate
{
    Q_OBJECT
public:
    // settings holds the store, the engine and what the settings windows need.
    KVBrevanoAppDelegate(const SettingsServices &settings, Scheduler &scheduler,
                         FileViewer &fileViewer, ThumbnailService &thumbnails,
                         AlertPresenter &alerts, QObject *parent = nullptr);
    ~KVBrevanoAppDelegate() override;

    void applicationDidFinishLaunching();
    // Removes the status item and saves the data file.
    void applicationWillTerminate();
    void applicationShouldHandleReopen() { openAlreadyRunningWindow(); }

    // The status item's click: the panel opens or closes, its icon with it.
    void togglePanel();
    // Opens the panel if it is not open (a keyboard shortcut's way in).
    void openPanel();
    PanelController &getPanelController();
    PanelController *panelController() const { return m_panelController.get(); }
    // The status menu at the pointer.
    void showStatusMenu();
    void toggleEnabled();
    void openAlreadyRunningWindow();
    void openPreferencesWindow();
    // The tutorial of a first start, while the store asks for it.
    void openWelcomeWindowIfRequired();
    void revealShadowDesktop();

    // What the panel asks of the application.
    QRect statusItemRectForPanelController(PanelController &panel) override;
    void doTidy() override;
    void restoreFiles() override;
    void restoreAllFiles() override;
    void emptyShadowDesktop() override;
    void emailSupport() override;
    void reviewApp() override;
    void openSupport() override;
    void openHelp() override;
    void openAboutWindow() override;
    void checkForUpdates() override;
    void terminate() override;
    bool canOpenTutorial() const override { return true; }
    // Another tutorial window each time.
    void openTutorial() override;
    bool canOpenPreferences() const override { return true; }

    StatusMenu *statusMenu() const { return m_statusMenu.get(); }
    // Set when Brevano should start again once it has quit (a tray host came late).
    bool wantsRestart() const { return m_wantsRestart; }
    MenubarController *menubarController() const { return m_menubarController.get(); }
    static QString supportMailUrl();

private:
    // togglePanel's flip of the active icon and the panel, without its guard.
    void flipPanel();
    void updateTrayHostWindow(bool available);
    void openWelcomeWindow(bool tutorialMode);

    SettingsServices m_settings;
    BrevanoData &m_data;
    Brevano &m_engine;
    Scheduler &m_scheduler;
    FileViewer &m_fileViewer;
    ThumbnailService &m_thumbnails;
    AlertPresenter &m_alerts;
    std::unique_ptr<StatusMenu> m_statusMenu;
    std::unique_ptr<MenubarController> m_menubarController;
    std::unique_ptr<PanelController> m_panelController;
    QPointer<AboutWindow> m_about;
    QPointer<AlreadyRunningWindow> m_alreadyRunning;
    QPointer<NoTrayWindow> m_noTray;
    QList<QPointer<WelcomeWindowController>> m_tutorials;
    bool m_wantsRestart = false;
};
