#pragma once

#include "Command.h"

class GetCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("get"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
