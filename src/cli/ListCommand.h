#pragma once

#include "Command.h"

class ListCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("list"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
