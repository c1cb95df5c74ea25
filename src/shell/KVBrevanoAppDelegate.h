#pragma once

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
class Scheduler;
class StatusMenu;

// The tray application: starts the store, the engine, the status menu and the
// status item in their order, opens the windows, and saves on the way out.
class KVBrevanoAppDelegate : public QObject
{
    Q_OBJECT
public:
    KVBrevanoAppDelegate(BrevanoData &data, Brevano &engine, Scheduler &scheduler,
                         FileViewer &fileViewer, AlertPresenter &alerts, QObject *parent = nullptr);
    ~KVBrevanoAppDelegate() override;

    void applicationDidFinishLaunching();
    // Removes the status item and saves the data file.
    void applicationWillTerminate();
    void applicationShouldHandleReopen() { openAlreadyRunningWindow(); }

    void togglePanel();
    // Opens the panel unless it is open.
    void openPanel();
    // The status menu at the pointer.
    void showStatusMenu();
    void toggleEnabled();
    void openAboutWindow();
    void openAlreadyRunningWindow();
    void restoreFiles();
    void revealShadowDesktop();
    void emailSupport();

    StatusMenu *statusMenu() const { return m_statusMenu.get(); }
    // Set when Brevano should start again once it has quit (a tray host came late).
    bool wantsRestart() const { return m_wantsRestart; }
    MenubarController *menubarController() const { return m_menubarController.get(); }
    static QString supportMailUrl();

private:
    void updateTrayHostWindow(bool available);

    BrevanoData &m_data;
    Brevano &m_engine;
    Scheduler &m_scheduler;
    FileViewer &m_fileViewer;
    AlertPresenter &m_alerts;
    std::unique_ptr<StatusMenu> m_statusMenu;
    std::unique_ptr<MenubarController> m_menubarController;
    QPointer<AboutWindow> m_about;
    QPointer<AlreadyRunningWindow> m_alreadyRunning;
    QPointer<NoTrayWindow> m_noTray;
    bool m_wantsRestart = false;
};
