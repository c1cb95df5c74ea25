#pragma once

#include "Command.h"

class PathsCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("paths"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
