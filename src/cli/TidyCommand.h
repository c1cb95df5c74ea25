#pragma once

#include "Command.h"

class TidyCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("tidy"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;

private:
    int dryRun(CliContext &context);
};
