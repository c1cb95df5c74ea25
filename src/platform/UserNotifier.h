#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>

struct UserNotification
{
    QString title;
    QString text;
    QString identifier;
    QVariantMap userInfo; // {"ActionSelector": name} when a click should do something
};

// The desktop's notification service. Delivering a notification removes the
// ones delivered before it, so only the newest is ever listed.
class UserNotifier
{
public:
    using ActivationHandler = std::function<void(const QVariantMap &userInfo)>;

    virtual ~UserNotifier() = default;
    // Without a service nothing is shown and nothing is reported.
    virtual void deliver(const UserNotification &notification) = 0;
    // Called on the main thread when the user activates a notification.
    virtual void setActivationHandler(ActivationHandler handler) = 0;
};
