#pragma once

#include "Command.h"

class IgnoreCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("ignore"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;

private:
    int add(CliContext &context, const QStringList &paths);
    int remove(CliContext &context, const QStringList &paths);
    int list(CliContext &context);
};
