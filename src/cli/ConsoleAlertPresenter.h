#pragma once

#include "AlertPresenter.h"

#include <QTextStream>

// Alerts on a terminal: the text goes to standard error. A question with more
// than one answer is asked on standard input when it is a terminal; without
// one, or at the end of the input, it is left unanswered (Dismissed).
class ConsoleAlertPresenter : public AlertPresenter
{
public:
    explicit ConsoleAlertPresenter(QTextStream &err) : m_err(err) {}
    int runModal(const Alert &alert) override;

private:
    QTextStream &m_err;
};
