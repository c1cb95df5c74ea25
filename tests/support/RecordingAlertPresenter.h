#pragma once

#include "AlertPresenter.h"

#include <QList>

#include <functional>

// Remembers every alert and answers with a chosen button.
class RecordingAlertPresenter : public AlertPresenter
{
public:
    int runModal(const Alert &alert) override
    {
        m_alerts.append(alert);
        if (m_whileShown)
            m_whileShown(alert);
        return m_answer;
    }

    QList<Alert> m_alerts;
    int m_answer = 0;
    // Runs while the alert is up, as events would (another window taking the focus, say).
    std::function<void(const Alert &)> m_whileShown;
};
