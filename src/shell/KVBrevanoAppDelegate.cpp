#include "KVBrevanoAppDelegate.h"

#include "AboutWindow.h"
#include "AlreadyRunningWindow.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "FileViewer.h"
#include "MenubarController.h"
#include "NoTrayWindow.h"
#include "ProductLinks.h"
#include "RestoreFilesWindow.h"
#include "StatusMenu.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QMenu>
#include <QUrl>
#include <QUrlQuery>

KVBrevanoAppDelegate::KVBrevanoAppDelegate(BrevanoData &data, Brevano &engine, Scheduler &scheduler,
                                           FileViewer &fileViewer, AlertPresenter &alerts,
                                           QObject *parent)
    : QObject(parent), m_data(data), m_engine(engine), m_scheduler(scheduler),
      m_fileViewer(fileViewer), m_alerts(alerts)
{
}

KVBrevanoAppDelegate::~KVBrevanoAppDelegate() = default;

void KVBrevanoAppDelegate::applicationDidFinishLaunching()
{
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
    connect(m_statusMenu.get(), &StatusMenu::helpRequested, this,
            [] { QDesktopServices::openUrl(QUrl(ProductLinks::UserGuide)); });
    connect(m_statusMenu.get(), &StatusMenu::supportRequested, this,
            [] { QDesktopServices::openUrl(QUrl(ProductLinks::Support)); });
    connect(m_statusMenu.get(), &StatusMenu::reviewRequested, this,
            [] { QDesktopServices::openUrl(QUrl(ProductLinks::Review)); });
    connect(m_statusMenu.get(), &StatusMenu::emailSupportRequested, this,
            &KVBrevanoAppDelegate::emailSupport);
    connect(m_statusMenu.get(), &StatusMenu::quitRequested, qApp, &QCoreApplication::quit);

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

// Until the panel exists, a left click opens the status menu as well.
void KVBrevanoAppDelegate::togglePanel()
{
    showStatusMenu();
}

void KVBrevanoAppDelegate::openPanel()
{
    if (m_menubarController && !m_menubarController->hasActiveIcon())
        togglePanel();
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
        m_alreadyRunning = new AlreadyRunningWindow;
        connect(m_alreadyRunning, &AlreadyRunningWindow::revealShadowDesktop, this,
                &KVBrevanoAppDelegate::revealShadowDesktop);
        m_alreadyRunning->show();
    }
    m_alreadyRunning->raise();
    m_alreadyRunning->activateWindow();
}

void KVBrevanoAppDelegate::restoreFiles()
{
    if (RestoreFilesWindow::isOpen()) {
        RestoreFilesWindow::bringToFront();
        return;
    }
    auto *window = new RestoreFilesWindow(m_engine);
    window->show();
    window->raise();
    window->activateWindow();
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
