#include "MenubarController.h"

#include "StatusIcons.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QSystemTrayIcon>

MenubarController::MenubarController(Scheduler &scheduler, QObject *parent)
    : QObject(parent), m_view(scheduler)
{
    createStatusItem();
    connect(&m_view, &StatusItemView::imageChanged, this, [this](const QString &name) {
        if (m_statusItem)
            m_statusItem->setIcon(StatusIcons::icon(name));
    });
    if (QDBusConnection::sessionBus().isConnected()) {
        m_watcher = new QDBusServiceWatcher(QStringLiteral("org.kde.StatusNotifierWatcher"),
                                            QDBusConnection::sessionBus(),
                                            QDBusServiceWatcher::WatchForRegistration, this);
        connect(m_watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
            createStatusItem();
            emit trayHostAvailabilityChanged(trayHostAvailable());
        });
    }
}

MenubarController::~MenubarController() = default; // the icon leaves the panel with it

bool MenubarController::trayHostAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void MenubarController::createStatusItem()
{
    m_statusItem = std::make_unique<QSystemTrayIcon>(StatusIcons::icon(m_view.imageName()));
    m_statusItem->setToolTip(QStringLiteral("Brevano"));
    connect(m_statusItem.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                switch (reason) {
                case QSystemTrayIcon::Trigger:
                    m_view.mouseDown();
                    break;
                case QSystemTrayIcon::Context:
                    emit statusMenuRequested();
                    break;
                case QSystemTrayIcon::MiddleClick:
                    emit m_view.revealShadowDesktop();
                    break;
                default:
                    break;
                }
            });
    m_statusItem->show();
}
