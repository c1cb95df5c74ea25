#pragma once

#include "Command.h"

class StatusCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("status"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
