#pragma once

#include "Command.h"

class SetCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("set"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
