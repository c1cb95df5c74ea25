#include "KVBrevanoAppDelegate.h"

#include "AboutWindow.h"
#include "AlreadyRunningWindow.h"
#include "BackgroundFileListBuilder.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "FileViewer.h"
#include "MenubarController.h"
#include "NoTrayWindow.h"
#include "NotificationCenter.h"
#include "PanelController.h"
#include "PreferencesWindowController.h"
#include "ProductLinks.h"
#include "RestoreFilesWindow.h"
#include "StatusMenu.h"
#include "WelcomeWindowController.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QMenu>
#include <QUrl>
#include <QUrlQuery>

KVBrevanoAppDelegate::KVBrevanoAppDelegate(const SettingsServices &settings, Scheduler &scheduler,
                                           FileViewer &fileViewer, ThumbnailService &thumbnails,
                                           AlertPresenter &alerts, QObject *parent)
    : QObject(parent), m_settings(settings), m_data(settings.data), m_engine(settings.engine),
      m_scheduler(scheduler), m_fileViewer(fileViewer), m_thumbnails(thumbnails), m_alerts(alerts)
{
}

// The windows it opened go with it.
KVBrevanoAppDelegate::~KVBrevanoAppDelegate()
{
    delete m_noTray;
    delete m_about;
    delete m_alreadyRunning;
    delete PreferencesWindowController::openInstance();
    for (const QPointer<WelcomeWindowController> &tutorial : std::as_const(m_tutorials))
        delete tutorial;
}

void KVBrevanoAppDelegate::applicationDidFinishLaunching()
{
    m_engine.notifications().observe(NotificationCenter::OpenPreferences, this,
                                     [this](const QVariant &) { openPreferencesWindow(); });
    m_data.loadDataFile();
    m_engine.linkSaveData(m_data.saveData());
    m_data.setTidyStatusSource(&m_engine);
    m_statusMenu = std::make_unique<StatusMenu>(m_data, m_engine, m_alerts);
    m_statusMenu->updateDateFilterSelection();
    m_statusMenu->updateQuickFiltersSelection();
    m_data.updateStatusIcon();
    connect(m_statusMenu.get(), &StatusMenu::openPanelRequested, this,
            &KVBrevanoAppDelegate::openPanel);
    connect(m_statusMenu.get(), &StatusMenu::toggleEnabledRequested, this,
            &KVBrevanoAppDelegate::toggleEnabled);
    connect(m_statusMenu.get(), &StatusMenu::aboutRequested, this,
            &KVBrevanoAppDelegate::openAboutWindow);
    connect(m_statusMenu.get(), &StatusMenu::restoreFilesRequested, this,
            &KVBrevanoAppDelegate::restoreFiles);
    connect(m_statusMenu.get(), &StatusMenu::revealShadowDesktopRequested, this,
            &KVBrevanoAppDelegate::revealShadowDesktop);
    connect(m_statusMenu.get(), &StatusMenu::helpRequested, this, &KVBrevanoAppDelegate::openHelp);
    connect(m_statusMenu.get(), &StatusMenu::supportRequested, this,
            &KVBrevanoAppDelegate::openSupport);
    connect(m_statusMenu.get(), &StatusMenu::reviewRequested, this,
            &KVBrevanoAppDelegate::reviewApp);
    connect(m_statusMenu.get(), &StatusMenu::emailSupportRequested, this,
            &KVBrevanoAppDelegate::emailSupport);
    connect(m_statusMenu.get(), &StatusMenu::quitRequested, qApp, &QCoreApplication::quit);
    connect(m_statusMenu.get(), &StatusMenu::preferencesRequested, this,
            &KVBrevanoAppDelegate::openPreferencesWindow);
    connect(m_statusMenu.get(), &StatusMenu::tutorialRequested, this,
            &KVBrevanoAppDelegate::openTutorial);
    // Closing the status menu stops every time-remaining tick, the open panel's too.
    connect(m_statusMenu->menu(), &QMenu::aboutToHide, this, [this] {
        if (m_panelController && m_panelController->hasActivePanel())
            m_data.startUpdatingTimeRemaining();
    });

    openWelcomeWindowIfRequired();

    // The status item comes last, with its state set here: the icon update above
    // ran before it existed.
    m_menubarController = std::make_unique<MenubarController>(m_scheduler);
    m_menubarController->setEnabled(m_engine.getEnabled());
    connect(&m_data.statusDisplay(), &StatusDisplay::statusIconChanged, m_menubarController.get(),
            [this](bool enabled) { m_menubarController->setEnabled(enabled); });
    StatusItemView &view = m_menubarController->statusItemView();
    connect(&view, &StatusItemView::action, this, &KVBrevanoAppDelegate::togglePanel);
    connect(&view, &StatusItemView::revealShadowDesktop, this,
            &KVBrevanoAppDelegate::revealShadowDesktop);
    connect(&view, &StatusItemView::startTidy, this,
            [this] { m_engine.performTidyFromRequest(Brevano::TidyRequestManual); });
    connect(m_menubarController.get(), &MenubarController::statusMenuRequested, this,
            &KVBrevanoAppDelegate::showStatusMenu);
    connect(m_menubarController.get(), &MenubarController::trayHostAvailabilityChanged, this,
            &KVBrevanoAppDelegate::updateTrayHostWindow);
    connect(m_menubarController.get(), &MenubarController::restartForTrayHost, this, [this] {
        m_wantsRestart = true;
        QCoreApplication::quit();
    });
    updateTrayHostWindow(MenubarController::trayHostAvailable());
}

void KVBrevanoAppDelegate::applicationWillTerminate()
{
    if (m_panelController)
        m_panelController->setHasActivePanel(false); // keeps its size and view
    m_panelController.reset();
    // Listings still running read through the engine's services, which go next.
    BackgroundFileListBuilder::waitForWorkers(std::chrono::seconds(2));
    m_menubarController.reset();
    m_data.saveDataFile();
}

void KVBrevanoAppDelegate::updateTrayHostWindow(bool available)
{
    if (available && m_noTray)
        m_noTray->close();
    if (!available && !m_noTray) {
        m_noTray = new NoTrayWindow;
        m_noTray->setAttribute(Qt::WA_DeleteOnClose);
        m_noTray->show();
    }
}

void KVBrevanoAppDelegate::showStatusMenu()
{
    m_statusMenu->menu()->popup(QCursor::pos());
}

PanelController &KVBrevanoAppDelegate::getPanelController()
{
    if (!m_panelController) {
        m_panelController = std::make_unique<PanelController>(
            PanelController::Services{m_data, m_engine, m_fileViewer, m_scheduler,
                                      m_engine.notifications(), m_thumbnails, m_alerts},
            *this);
        // hasActivePanel drives the active icon, whoever changes it.
        connect(m_panelController.get(), &PanelController::hasActivePanelChanged, this,
                [this](bool active) {
                    if (m_menubarController)
                        m_menubarController->setHasActiveIcon(active);
                });
    }
    return *m_panelController;
}

void KVBrevanoAppDelegate::togglePanel()
{
    PanelController &panel = getPanelController();
    // A click on the icon first takes the focus from an open panel, which
    // closes it; that same click must not open it again.
    if (!panel.hasActivePanel() && panel.justClosedByFocusLoss())
        return;
    flipPanel();
}

void KVBrevanoAppDelegate::flipPanel()
{
    PanelController &panel = getPanelController();
    if (!m_menubarController) {
        panel.setHasActivePanel(!panel.hasActivePanel());
        return;
    }
    m_menubarController->setHasActiveIcon(!m_menubarController->hasActiveIcon());
    panel.setHasActivePanel(m_menubarController->hasActiveIcon());
}

void KVBrevanoAppDelegate::openPanel()
{
    PanelController &panel = getPanelController();
    if (panel.hasActivePanel())
        panel.bringToFront();
    else
        flipPanel(); // asked for, not a click: it opens even just after a close
}

QRect KVBrevanoAppDelegate::statusItemRectForPanelController(PanelController &)
{
    return m_menubarController ? m_menubarController->globalRect()
                               : QRect(QCursor::pos(), QSize(1, 1));
}

void KVBrevanoAppDelegate::doTidy()
{
    m_engine.performManualTidy();
}

void KVBrevanoAppDelegate::restoreAllFiles()
{
    m_statusMenu->restoreAllFiles();
}

void KVBrevanoAppDelegate::emptyShadowDesktop()
{
    m_statusMenu->emptyShadowDesktop();
}

void KVBrevanoAppDelegate::reviewApp()
{
    QDesktopServices::openUrl(QUrl(ProductLinks::Review));
}

void KVBrevanoAppDelegate::openSupport()
{
    QDesktopServices::openUrl(QUrl(ProductLinks::Support));
}

void KVBrevanoAppDelegate::openHelp()
{
    QDesktopServices::openUrl(QUrl(ProductLinks::UserGuide));
}

void KVBrevanoAppDelegate::checkForUpdates()
{
    QDesktopServices::openUrl(QUrl(ProductLinks::Releases));
}

void KVBrevanoAppDelegate::terminate()
{
    QCoreApplication::quit();
}

void KVBrevanoAppDelegate::toggleEnabled()
{
    m_engine.setEnabled(!m_engine.getEnabled());
    m_data.saveDataFile();
    m_data.updateStatusIcon();
}

void KVBrevanoAppDelegate::openAboutWindow()
{
    if (!m_about) {
        m_about = new AboutWindow;
        m_about->show();
    }
    m_about->raise();
    m_about->activateWindow();
}

void KVBrevanoAppDelegate::openAlreadyRunningWindow()
{
    if (!m_alreadyRunning) {
        m_alreadyRunning = new AlreadyRunningWindow(m_engine.notifications());
        connect(m_alreadyRunning, &AlreadyRunningWindow::revealShadowDesktop, this,
                &KVBrevanoAppDelegate::revealShadowDesktop);
        m_alreadyRunning->show();
    }
    m_alreadyRunning->raise();
    m_alreadyRunning->activateWindow();
}

void KVBrevanoAppDelegate::openPreferencesWindow()
{
    PreferencesWindowController::openOrBringToFront(
        [this] { return new PreferencesWindowController(m_settings); });
}

void KVBrevanoAppDelegate::openWelcomeWindowIfRequired()
{
    WelcomeWindowController::setTutorialMode(false);
    if (m_data.getShowWelcome())
        openWelcomeWindow(false);
}

void KVBrevanoAppDelegate::openTutorial()
{
    openWelcomeWindow(true);
}

void KVBrevanoAppDelegate::openWelcomeWindow(bool tutorialMode)
{
    WelcomeWindowController::setTutorialMode(tutorialMode);
    m_tutorials.removeAll(nullptr);
    auto *window = new WelcomeWindowController(m_data, m_engine);
    m_tutorials.append(window);
    window->show();
    window->raise();
    window->activateWindow();
}

void KVBrevanoAppDelegate::restoreFiles()
{
    RestoreFilesWindow::openOrBringToFront([this] { return new RestoreFilesWindow(m_engine); });
}

void KVBrevanoAppDelegate::revealShadowDesktop()
{
    m_fileViewer.openFolder(m_data.getShadowDesktopPath());
}

QString KVBrevanoAppDelegate::supportMailUrl()
{
    const QString version = BrevanoData::getAppVersion();
    QUrl url(QStringLiteral("mailto:") + ProductLinks::SupportMail);
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("subject"),
                       QStringLiteral("Support request from Brevano v%1 for OS X").arg(version));
    query.addQueryItem(QStringLiteral("body"),
                       QStringLiteral("\n\nSent from machine using OS %1\nBrevano v%2")
                           .arg(BrevanoData::getOSVersion(), version));
    url.setQuery(query);
    return QString::fromUtf8(url.toEncoded());
}

void KVBrevanoAppDelegate::emailSupport()
{
    QDesktopServices::openUrl(QUrl(supportMailUrl()));
}
