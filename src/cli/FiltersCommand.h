#pragma once

#include "Command.h"

class FiltersCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("filters"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
