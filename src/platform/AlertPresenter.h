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
    virtual ~AlertPresenter() = default;
    // Blocks until answered; returns the index of the chosen button.
    virtual int runModal(const Alert &alert) = 0;
};
