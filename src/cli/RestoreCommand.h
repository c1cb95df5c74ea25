#pragma once

#include "Command.h"

class RestoreCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("restore"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
