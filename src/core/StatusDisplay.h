#pragma once

#include "Scheduler.h"

#include <QObject>
#include <QSet>

class NotificationCenter;
class TidyStatusSource;

// The two pieces of status every view shares: the enabled/disabled icon state
// with its menu title, and the "Automatic tidy in ..." line, refreshed every second
// while a menu or the panel shows it.
class StatusDisplay : public QObject
{
    Q_OBJECT
public:
    enum State : qint32
    {
        Enabled = 0,
        DisabledByUser = 1
    };

    StatusDisplay(Scheduler &scheduler, NotificationCenter &notifications,
                  QObject *parent = nullptr);
    ~StatusDisplay() override;

    void setSource(const TidyStatusSource *source) { m_source = source; }

    qint32 currentStatusIcon() const { return m_currentStatusIcon; }
    void setCurrentStatusIcon(qint32 state) { m_currentStatusIcon = state; }
    // States other than Enabled and DisabledByUser are stored and change nothing else.
    void setStatusIcon(qint32 state, const QString &intervalText);
    void updateStatusIcon(const QString &intervalText);

    // Every start runs a tick of its own until stopped; keep them paired.
    void startUpdatingTimeRemaining();
    void stopUpdatingTimeRemaining();
    void updateTimeRemaining();

    // "%.0f seconds" up to a minute, then minutes, hours, days, rounded.
    static QString timeRemainingText(qint64 seconds);
    static QString nextTidyLine(qint64 seconds);

signals:
    // The enable entry's title and check mark, the status image, the menubar's state.
    void statusIconChanged(bool enabled, const QString &enableTitle, const QString &imageName);

private:
    void scheduleTick(std::chrono::milliseconds delay);

    Scheduler &m_scheduler;
    NotificationCenter &m_notifications;
    const TidyStatusSource *m_source = nullptr;
    qint32 m_currentStatusIcon = Enabled;
    QSet<Scheduler::TaskId> m_ticks;
};
