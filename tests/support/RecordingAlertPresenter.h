#pragma once

#include "AlertPresenter.h"

#include <QList>

// Remembers every alert and answers with a chosen button.
class RecordingAlertPresenter : public AlertPresenter
{
public:
    int runModal(const Alert &alert) override
    {
        m_alerts.append(alert);
        return m_answer;
    }

    QList<Alert> m_alerts;
    int m_answer = 0;
};
