#pragma once

#include "UserNotifier.h"

#include <QList>

// Notifier for tests: keeps what was delivered and lets a test click the
// listed (newest) notification.
class RecordingNotifier : public UserNotifier
{
public:
    void deliver(const UserNotification &notification) override
    {
        m_delivered.append(notification);
    }
    void setActivationHandler(ActivationHandler handler) override
    {
        m_handler = std::move(handler);
    }

    void activateListed()
    {
        if (m_handler && !m_delivered.isEmpty())
            m_handler(m_delivered.last().userInfo);
    }
    QStringList identifiers() const
    {
        QStringList ids;
        for (const UserNotification &n : m_delivered)
            ids.append(n.identifier);
        return ids;
    }

    QList<UserNotification> m_delivered;

private:
    ActivationHandler m_handler;
};
