#pragma once

#include "Command.h"

class TrashCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("trash"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
