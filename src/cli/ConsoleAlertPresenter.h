#pragma once

#include "AlertPresenter.h"

#include <QTextStream>

// Alerts on a terminal: the text goes to standard error. A question with more
// than one answer is asked on standard input when it is a terminal; otherwise
// the last (safest) answer is taken.
class ConsoleAlertPresenter : public AlertPresenter
{
public:
    explicit ConsoleAlertPresenter(QTextStream &err) : m_err(err) {}
    int runModal(const Alert &alert) override;

private:
    QTextStream &m_err;
};
