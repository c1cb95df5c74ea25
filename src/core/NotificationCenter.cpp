#include "NotificationCenter.h"

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::post(const QString &name, const QVariant &object)
{
    emit posted(name, object);
}

QMetaObject::Connection NotificationCenter::observe(const QString &name, const QObject *context,
                                                    std::function<void(const QVariant &)> handler)
{
    return connect(
        this, &NotificationCenter::posted, context,
        [name, handler = std::move(handler)](const QString &posted, const QVariant &object) {
            if (posted == name)
                handler(object);
        });
}
