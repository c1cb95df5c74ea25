#include "CommandLine.h"

#include "BrevanoData.h"
#include "CliContext.h"

#include "ConsoleAlertPresenter.h"
#include "EmptyCommand.h"
#include "FiltersCommand.h"
#include "GetCommand.h"
#include "HistoryCommand.h"
#include "IgnoreCommand.h"
#include "ListCommand.h"
#include "PathsCommand.h"
#include "RestoreCommand.h"
#include "SetCommand.h"
#include "SizeCommand.h"
#include "StatusCommand.h"
#include "TidyCommand.h"
#include "TrashCommand.h"
#include "UndoCommand.h"
#include <QDir>

CommandLine::CommandLine(BrevanoData &data, Brevano &engine, QTextStream &out, QTextStream &err)
    : m_data(data), m_engine(engine), m_out(out), m_err(err)
{
    m_commands.push_back(std::make_unique<PathsCommand>());
    m_commands.push_back(std::make_unique<GetCommand>());
    m_commands.push_back(std::make_unique<SetCommand>());
    m_commands.push_back(std::make_unique<IgnoreCommand>());
    m_commands.push_back(std::make_unique<FiltersCommand>());
    m_commands.push_back(std::make_unique<TidyCommand>());
    m_commands.push_back(std::make_unique<ListCommand>());
    m_commands.push_back(std::make_unique<RestoreCommand>());
    m_commands.push_back(std::make_unique<UndoCommand>());
    m_commands.push_back(std::make_unique<HistoryCommand>());
    m_commands.push_back(std::make_unique<TrashCommand>());
    m_commands.push_back(std::make_unique<EmptyCommand>());
    m_commands.push_back(std::make_unique<SizeCommand>());
    m_commands.push_back(std::make_unique<StatusCommand>());
    auto open = std::make_unique<OpenCommand>();
    m_open = open.get();
    m_commands.push_back(std::move(open));
}

CommandLine::~CommandLine() = default;

QString CommandLine::usage() const
{
    QString text = QStringLiteral("Usage: brevano [COMMAND [ARGUMENTS...]]\n\n"
                                  "Keeps the Desktop clear by moving its items to the Shadow "
                                  "Desktop.\nWith no command, starts the tray application.\n\n"
                                  "Commands:\n");
    for (const auto &command : m_commands)
        text += QStringLiteral("  %1 %2\n").arg(command->name(), -10).arg(command->summary());
    text += QStringLiteral("\nbrevano COMMAND --help tells more of each. Exit status: 0 success, "
                           "1 an operation failed, 2 bad usage.\n");
    return text;
}

bool CommandLine::runsWithoutStore(const QStringList &args)
{
    static const QStringList local{QStringLiteral("--help"), QStringLiteral("-h"),
                                   QStringLiteral("help"), QStringLiteral("--version")};
    return args.isEmpty() || local.contains(args.first()) ||
           args.contains(QStringLiteral("--help")) || args.contains(QStringLiteral("-h"));
}

bool CommandLine::movesItems(const QStringList &args)
{
    static const QStringList moving{QStringLiteral("tidy"), QStringLiteral("restore"),
                                    QStringLiteral("trash"), QStringLiteral("empty"),
                                    QStringLiteral("undo")};
    return moving.contains(args.value(0)) && !args.contains(QStringLiteral("--dry-run"));
}

Command *CommandLine::find(const QString &name) const
{
    for (const auto &command : m_commands) {
        if (command->name() == name)
            return command.get();
    }
    return nullptr;
}

int CommandLine::run(const QStringList &args)
{
    ConsoleAlertPresenter alerts(m_err);
    CliContext context(m_data, m_engine, alerts, m_out, m_err);
    context.setStoreIsLive(m_storeIsLive);
    context.setWorkingDirectory(m_workingDirectory.isEmpty() ? QDir::currentPath()
                                                             : m_workingDirectory);
    const QString name = args.value(0);
    if (name == u"--help" || name == u"-h" || name == u"help") {
        const Command *topic = find(args.value(1));
        m_out << (topic ? topic->help() : usage());
        return CliContext::Success;
    }
    if (name == u"--version") {
        m_out << "brevano " << BrevanoData::getAppVersion() << '\n';
        return CliContext::Success;
    }
    Command *command = find(name);
    if (!command) {
        m_err << "brevano: unknown command \"" << name << "\"\n\n" << usage();
        return CliContext::BadUsage;
    }
    const QStringList rest = args.mid(1);
    if (rest.contains(QStringLiteral("--help")) || rest.contains(QStringLiteral("-h"))) {
        m_out << command->help();
        return CliContext::Success;
    }
    return command->run(context, rest);
}
