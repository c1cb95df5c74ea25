#include "FreedesktopNotifier.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusReply>
#include <QThread>

FreedesktopNotifier::FreedesktopNotifier(QDBusConnection bus, QObject *parent)
    : QObject(parent), m_bus(std::move(bus))
{
    if (m_bus.isConnected())
        m_bus.connect(Service, Path, Service, QStringLiteral("ActionInvoked"), this,
                      SLOT(onActionInvoked(uint, QString)));
}

void FreedesktopNotifier::deliver(const UserNotification &notification)
{
    if (QCoreApplication::instance() &&
        QThread::currentThread() != QCoreApplication::instance()->thread())
        qWarning("Trying to register notification from other thread");
    if (!m_bus.isConnected())
        return;
    if (m_lastId != 0) {
        m_bus.call(QDBusMessage::createMethodCall(Service, Path, Service,
                                                  QStringLiteral("CloseNotification"))
                       << m_lastId,
                   QDBus::NoBlock);
    }
    const bool hasAction = notification.userInfo.contains(QStringLiteral("ActionSelector"));
    QVariantMap hints;
    hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("brevano"));
    QDBusMessage call =
        QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("Notify"));
    call << QStringLiteral("Brevano") << m_lastId << QStringLiteral("brevano") << notification.title
         << notification.text
         << (hasAction ? QStringList{QStringLiteral("default"), QStringLiteral("Postpone")}
                       : QStringList())
         << hints << -1;
    // A short, synchronous call keeps the order of notifications; a missing or
    // hung service costs at most this long and shows nothing.
    const QDBusReply<uint> reply = m_bus.call(call, QDBus::Block, 2000);
    if (!reply.isValid())
        return;
    m_lastId = reply.value();
    m_lastUserInfo = notification.userInfo;
}

void FreedesktopNotifier::onActionInvoked(uint id, const QString &actionKey)
{
    if (id != m_lastId || actionKey != u"default" || m_lastUserInfo.isEmpty() || !m_handler)
        return;
    m_handler(m_lastUserInfo);
}
