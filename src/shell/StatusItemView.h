#pragma once

#include "Scheduler.h"

#include <QObject>
#include <QString>

// The status item's state and its clicks: which of the three icons shows, a
// left click for the panel, and the right button's press-and-hold: released
// within half a second it reveals the Shadow Desktop, held longer it tidies.
class StatusItemView : public QObject
{
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds kHoldToTidy{500};

    explicit StatusItemView(Scheduler &scheduler, QObject *parent = nullptr);
    ~StatusItemView() override;

    bool isHighlighted() const { return m_isHighlighted; }
    void setHighlighted(bool highlighted);
    bool isEnabled() const { return m_isEnabled; }
    void setEnabled(bool enabled);
    bool tidied() const { return m_tidied; }

    // The disabled icon wins over the active one.
    QString imageName() const;

    void mouseDown();
    void rightMouseDown();
    void rightMouseUp();

signals:
    void action(); // a left click
    void startTidy();
    void revealShadowDesktop();
    void imageChanged(const QString &name);

private:
    Scheduler &m_scheduler;
    Scheduler::TaskId m_pendingTidy = 0;
    bool m_isHighlighted = false;
    bool m_isEnabled = false;
    bool m_tidied = false;
};
