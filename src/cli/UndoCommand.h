#pragma once

#include "Command.h"

class UndoCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("undo"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;
};
