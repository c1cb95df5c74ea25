#include "StatusItemView.h"

StatusItemView::StatusItemView(Scheduler &scheduler, QObject *parent)
    : QObject(parent), m_scheduler(scheduler)
{
}

StatusItemView::~StatusItemView()
{
    m_scheduler.cancel(m_pendingTidy);
}

void StatusItemView::setHighlighted(bool highlighted)
{
    m_isHighlighted = highlighted;
    emit imageChanged(imageName());
}

void StatusItemView::setEnabled(bool enabled)
{
    m_isEnabled = enabled;
    emit imageChanged(imageName());
}

QString StatusItemView::imageName() const
{
    if (!m_isEnabled)
        return QStringLiteral("statusIconUserDisabled.png");
    return m_isHighlighted ? QStringLiteral("statusIconMenu.png")
                           : QStringLiteral("statusIcon.png");
}

void StatusItemView::mouseDown()
{
    emit action();
}

void StatusItemView::rightMouseDown()
{
    m_tidied = false;
    m_scheduler.cancel(m_pendingTidy);
    m_pendingTidy = m_scheduler.schedule(kHoldToTidy, [this] {
        m_pendingTidy = 0;
        m_tidied = true;
        emit startTidy();
    });
}

void StatusItemView::rightMouseUp()
{
    m_scheduler.cancel(m_pendingTidy);
    m_pendingTidy = 0;
    if (!m_tidied)
        emit revealShadowDesktop();
}
