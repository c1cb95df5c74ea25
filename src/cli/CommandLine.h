#pragma once

#include "Command.h"
#include "OpenCommand.h"

#include <QTextStream>

#include <memory>
#include <vector>

class BrevanoData;
class Brevano;

// "brevano COMMAND ...": finds the subcommand and runs it. Exit status 0 for
// success, 1 when an operation failed, 2 for bad usage.
class CommandLine
{
public:
    CommandLine(BrevanoData &data, Brevano &engine, QTextStream &out, QTextStream &err);
    ~CommandLine();

    // args without the program name.
    int run(const QStringList &args);
    // In the running application: the store is live; paths are the caller's.
    void setStoreIsLive(bool live) { m_storeIsLive = live; }
    void setWorkingDirectory(const QString &folder) { m_workingDirectory = folder; }
    // What shows the tray application's windows for "open"; none where nothing can.
    void setWindowOpener(OpenCommand::Opener opener) { m_open->setOpener(std::move(opener)); }
    static bool runsWithoutStore(const QStringList &args);
    // Whether the command moves items (a dry run does not).
    static bool movesItems(const QStringList &args);
    QString usage() const;

private:
    Command *find(const QString &name) const;

    BrevanoData &m_data;
    Brevano &m_engine;
    QTextStream &m_out;
    QTextStream &m_err;
    std::vector<std::unique_ptr<Command>> m_commands;
    OpenCommand *m_open = nullptr;
    bool m_storeIsLive = false;
    QString m_workingDirectory;
};
