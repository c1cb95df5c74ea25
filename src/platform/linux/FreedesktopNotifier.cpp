#include "FreedesktopNotifier.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QThread>

namespace {
// A missing or hung service costs at most this long per call, and shows nothing.
constexpr int CallTimeoutMs = 2000;

// The body as a server that reads markup shows it: the markup characters and
// quotes as references ("'" by number, which XML and HTML parsers read alike),
// characters XML cannot carry as U+FFFD.
QString markupEscaped(const QString &text)
{
    QString escaped = text.toHtmlEscaped().replace(u'\'', QStringLiteral("&#39;"));
    for (QChar &c : escaped) {
        if (c.unicode() < 0x20 && c != u'\n' && c != u'\t')
            c = QChar::ReplacementCharacter;
    }
    return escaped;
}
} // namespace

FreedesktopNotifier::FreedesktopNotifier(QDBusConnection bus, QObject *parent)
    : QObject(parent), m_bus(std::move(bus))
{
    if (!m_bus.isConnected())
        return;
    m_bus.connect(Service, Path, Service, QStringLiteral("ActionInvoked"), this,
                  SLOT(onActionInvoked(uint, QString)));
    m_ownerWatcher.setConnection(m_bus);
    m_ownerWatcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_ownerWatcher.addWatchedService(Service);
    connect(&m_ownerWatcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                onOwnerChanged(newOwner);
            });
}

FreedesktopNotifier::~FreedesktopNotifier() = default;

void FreedesktopNotifier::deliver(const UserNotification &notification)
{
    if (QCoreApplication::instance() &&
        QThread::currentThread() != QCoreApplication::instance()->thread())
        qWarning("Trying to register notification from other thread");
    if (!m_bus.isConnected())
        return;
    const Markup markup = bodyMarkup();
    if (markup == Markup::NoAnswer)
        return; // it would not answer Notify either
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
         << (markup == Markup::Parsed ? markupEscaped(notification.text) : notification.text)
         << (hasAction ? QStringList{QStringLiteral("default"), QStringLiteral("Postpone")}
                       : QStringList())
         << hints << -1;
    // A short, synchronous call keeps the order of notifications.
    const QDBusReply<uint> reply = m_bus.call(call, QDBus::Block, CallTimeoutMs);
    if (!reply.isValid())
        return;
    m_lastId = reply.value();
    m_lastUserInfo = notification.userInfo;
}

// Asked when first needed (which may start the server on demand), or ahead when
// a new server takes the name; a notification waits only for an answer not in yet.
FreedesktopNotifier::Markup FreedesktopNotifier::bodyMarkup()
{
    if (!m_bodyMarkup && !m_asking)
        askCapabilities();
    if (!m_bodyMarkup) {
        m_asking->waitForFinished();
        takeCapabilities(m_asking.get());
    }
    if (!m_bodyMarkup)
        return Markup::NoAnswer;
    return *m_bodyMarkup ? Markup::Parsed : Markup::Plain;
}

void FreedesktopNotifier::askCapabilities()
{
    m_bodyMarkup.reset();
    const QDBusPendingCall call = m_bus.asyncCall(
        QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("GetCapabilities")),
        CallTimeoutMs);
    // Replacing an earlier question drops its answer: it came from a server now gone.
    m_asking = std::make_unique<QDBusPendingCallWatcher>(call);
    connect(m_asking.get(), &QDBusPendingCallWatcher::finished, this,
            &FreedesktopNotifier::takeCapabilities);
}

void FreedesktopNotifier::takeCapabilities(QDBusPendingCallWatcher *answered)
{
    if (!m_asking || answered != m_asking.get() || !answered->isFinished())
        return; // taken already, a superseded question, or no answer yet
    const QDBusPendingReply<QStringList> reply = *answered;
    // Deleted later: this may run inside the watcher's own signal.
    m_asking.release()->deleteLater();
    if (reply.isValid()) {
        m_bodyMarkup = reply.value().contains(QStringLiteral("body-markup"));
        m_answeredBy = reply.reply().service();
        return;
    }
    const QDBusError::ErrorType error = reply.error().type();
    if (error == QDBusError::NoReply || error == QDBusError::Timeout)
        return; // still unknown: asked again with the next notification
    // No server, or one without the call: its text is not read as markup.
    m_bodyMarkup = false;
    m_answeredBy.clear();
}

void FreedesktopNotifier::onOwnerChanged(const QString &newOwner)
{
    if (!newOwner.isEmpty() && newOwner == m_answeredBy)
        return; // the server that answered (one started by that very question)
    m_asking.reset();
    m_bodyMarkup.reset();
    m_answeredBy.clear();
    if (!newOwner.isEmpty())
        askCapabilities(); // the answer is then in before the next notification
}

void FreedesktopNotifier::onActionInvoked(uint id, const QString &actionKey)
{
    if (id != m_lastId || actionKey != u"default" || m_lastUserInfo.isEmpty() || !m_handler)
        return;
    m_handler(m_lastUserInfo);
}
