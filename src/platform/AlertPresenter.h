#pragma once

#include <QString>
#include <QStringList>

// A modal alert: the question as the title, the default button first.
struct Alert
{
    QString title;
    QString message;
    QStringList buttons{QStringLiteral("OK")};
};

// Shows alerts the way the running front end can: a message box, or a terminal.
class AlertPresenter
{
public:
    // What runModal answers when the alert was put away without a button: Escape,
    // the window's close button, the end of the input. No answer: the caller
    // does nothing, as for the safest button.
    static constexpr int Dismissed = -1;

    virtual ~AlertPresenter() = default;
    // Blocks until answered; returns the index of the chosen button, or Dismissed.
    virtual int runModal(const Alert &alert) = 0;
};
