#include "StatusDisplay.h"

#include "NotificationCenter.h"
#include "TidyStatusSource.h"

#include <cstdio>

StatusDisplay::StatusDisplay(Scheduler &scheduler, NotificationCenter &notifications,
                             QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_notifications(notifications)
{
}

StatusDisplay::~StatusDisplay()
{
    stopUpdatingTimeRemaining();
}

void StatusDisplay::setStatusIcon(qint32 state, const QString &intervalText)
{
    m_currentStatusIcon = state;
    if (state != Enabled && state != DisabledByUser)
        return;
    const QString title = QStringLiteral("Tidy Periodically (Every %1)").arg(intervalText);
    if (state == Enabled)
        emit statusIconChanged(true, title, QStringLiteral("statusIcon.png"));
    else
        emit statusIconChanged(false, title, QStringLiteral("statusIconUserDisabled.png"));
}

void StatusDisplay::updateStatusIcon(const QString &intervalText)
{
    setStatusIcon(m_source && m_source->getEnabled() ? Enabled : DisabledByUser, intervalText);
}

void StatusDisplay::startUpdatingTimeRemaining()
{
    scheduleTick(std::chrono::milliseconds(0));
}

void StatusDisplay::stopUpdatingTimeRemaining()
{
    for (Scheduler::TaskId id : std::as_const(m_ticks))
        m_scheduler.cancel(id);
    m_ticks.clear();
}

void StatusDisplay::scheduleTick(std::chrono::milliseconds delay)
{
    auto id = std::make_shared<Scheduler::TaskId>();
    *id = m_scheduler.schedule(delay, [this, id] {
        m_ticks.remove(*id);
        updateTimeRemaining();
    });
    m_ticks.insert(*id);
}

void StatusDisplay::updateTimeRemaining()
{
    const QDateTime now = m_scheduler.now();
    const QDateTime earliest = m_source ? m_source->getEarliestTidyDate() : now;
    // Whole seconds, truncated toward zero, never below zero.
    const qint64 seconds = std::max<qint64>(0, now.msecsTo(earliest) / 1000);
    m_notifications.post(NotificationCenter::UpdateNextTidyText, nextTidyLine(seconds));
    scheduleTick(std::chrono::seconds(1));
}

// The C library's "%.0f" rounds halves to even (2.5 -> "2"); QString::asprintf
// would round them up, so format with snprintf.
static QString rounded(double value, const char *unit)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.0f %s", value, unit);
    return QString::fromLatin1(text);
}

QString StatusDisplay::timeRemainingText(qint64 seconds)
{
    const double t = double(seconds);
    if (seconds <= 60)
        return rounded(t, "seconds");
    if (seconds <= 3600)
        return rounded(t / 60, "minutes");
    if (seconds <= 86400)
        return rounded(t / 3600, "hours");
    return rounded(t / 86400, "days");
}

QString StatusDisplay::nextTidyLine(qint64 seconds)
{
    return QStringLiteral("Automatic tidy in %1").arg(timeRemainingText(seconds));
}
