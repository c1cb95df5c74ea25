#pragma once

#include "Command.h"

class MoveJournal;

class HistoryCommand : public Command
{
public:
    static constexpr int kDefaultLimit = 10;

    QString name() const override { return QStringLiteral("history"); }
    QString summary() const override;
    QString help() const override;
    int run(CliContext &context, const QStringList &args) override;

private:
    static int showRun(CliContext &context, const MoveJournal &journal, quint64 id);
};
