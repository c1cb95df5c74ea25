#include "MenubarController.h"

#include "StatusIcons.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QSystemTrayIcon>
#include <QTimer>

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
            if (!m_createdWithWatcher) {
                emit restartForTrayHost();
                return;
            }
            createStatusItem(); // the host restarted: register again
        });
    }
    m_available = trayHostAvailable();
    if (!m_available) {
        // An XEmbed tray sends no signal when it appears; look now and then.
        auto *look = new QTimer(this);
        connect(look, &QTimer::timeout, this, &MenubarController::lookForTrayHost);
        look->start(3000);
    }
}

bool MenubarController::watcherRegistered()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface() &&
           bus.interface()->isServiceRegistered(QStringLiteral("org.kde.StatusNotifierWatcher"));
}

void MenubarController::lookForTrayHost()
{
    if (m_available || !trayHostAvailable())
        return;
    m_available = true;
    createStatusItem();
    emit trayHostAvailabilityChanged(true);
}

MenubarController::~MenubarController() = default; // the icon leaves the panel with it

bool MenubarController::trayHostAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void MenubarController::createStatusItem()
{
    if (!m_statusItem)
        m_createdWithWatcher = watcherRegistered();
    m_statusItem = std::make_unique<QSystemTrayIcon>(StatusIcons::icon(m_view.imageName()));
    m_statusItem->setToolTip(QStringLiteral("Brevano"));
    connect(m_statusItem.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                m_lastClick = QCursor::pos();
                m_clicked = true;
                switch (reason) {
                case QSystemTrayIcon::Trigger:
                case QSystemTrayIcon::DoubleClick: // the second of two quick clicks
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

QRect MenubarController::globalRect() const
{
    if (m_statusItem) {
        const QRect geometry = m_statusItem->geometry();
        if (geometry.isValid() && !geometry.isEmpty())
            return geometry;
    }
    return QRect(m_clicked ? m_lastClick : QCursor::pos(), QSize(1, 1));
}
