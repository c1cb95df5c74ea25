#pragma once

#include "Command.h"

class SizeCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("size"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
