#pragma once

#include "UserNotifier.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>
#include <optional>

class QDBusPendingCallWatcher;

// org.freedesktop.Notifications on the session bus. Each notification replaces
// the previous one (CloseNotification, then Notify with its replaces_id); a
// click arrives as the "default" action, which the server signals back to this
// connection only. Servers that read markup in the body (the "body-markup"
// capability) get it escaped, so that names such as "a<b>.txt" show as they are;
// the capabilities are asked once per server, again only when another takes
// over the service name.
class FreedesktopNotifier : public QObject, public UserNotifier
{
    Q_OBJECT
public:
    explicit FreedesktopNotifier(QDBusConnection bus = QDBusConnection::sessionBus(),
                                 QObject *parent = nullptr);
    ~FreedesktopNotifier() override;

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
    enum class Markup
    {
        Plain,
        Parsed,
        NoAnswer // the server did not answer in time
    };

    void askCapabilities();
    void takeCapabilities(QDBusPendingCallWatcher *answered);
    void onOwnerChanged(const QString &newOwner);
    Markup bodyMarkup();

    QDBusConnection m_bus;
    QDBusServiceWatcher m_ownerWatcher;
    ActivationHandler m_handler;
    uint m_lastId = 0;
    QVariantMap m_lastUserInfo;
    std::unique_ptr<QDBusPendingCallWatcher> m_asking;
    std::optional<bool> m_bodyMarkup; // unknown until the server answered
    QString m_answeredBy;             // that server's unique name
};
