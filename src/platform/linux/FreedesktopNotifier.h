#pragma once

#include "UserNotifier.h"

#include <QDBusConnection>
#include <QObject>

// org.freedesktop.Notifications on the session bus. Each notification replaces
// the previous one (CloseNotification, then Notify with its replaces_id); a
// click arrives as the "default" action, which the server signals back to this
// connection only.
class FreedesktopNotifier : public QObject, public UserNotifier
{
    Q_OBJECT
public:
    explicit FreedesktopNotifier(QDBusConnection bus = QDBusConnection::sessionBus(),
                                 QObject *parent = nullptr);

    void deliver(const UserNotification &notification) override;
    void setActivationHandler(ActivationHandler handler) override
    {
        m_handler = std::move(handler);
    }

    static inline const QString Service = QStringLiteral("org.freedesktop.Notifications");
    static inline const QString Path = QStringLiteral("/org/freedesktop/Notifications");

private slots:
    void onActionInvoked(uint id, const QString &actionKey);

private:
    QDBusConnection m_bus;
    ActivationHandler m_handler;
    uint m_lastId = 0;
    QVariantMap m_lastUserInfo;
};
