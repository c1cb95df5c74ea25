#pragma once

#include <QString>
#include <QStringList>

class CliContext;

// One subcommand of "brevano".
class Command
{
public:
    virtual ~Command() = default;

    virtual QString name() const = 0;
    // One line for the command list.
    virtual QString summary() const = 0;
    // The full text of "brevano NAME --help".
    virtual QString help() const = 0;
    // args are what follows the command's name; returns the exit status.
    virtual int run(CliContext &context, const QStringList &args) = 0;
};
