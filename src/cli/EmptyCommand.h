#pragma once

#include "Command.h"

#include <optional>

class AlertPresenter;
class QTextStream;

class EmptyCommand : public Command
{
public:
    // Asks on the terminal before emptying, unless args say --yes. Answers the
    // exit status when the command ends here (declined, no terminal to ask on,
    // bad usage), nothing when the emptying is to go ahead.
    static std::optional<int> askFirst(const QStringList &args, AlertPresenter &alerts,
                                       QTextStream &err);

    QString name() const override { return QStringLiteral("empty"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
