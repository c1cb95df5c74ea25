#pragma once

#include "Command.h"

class EmptyCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("empty"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
