#pragma once

#include <QProcess>
#include <QtTest>

// The built binary, run as a user would run it.
struct CliResult
{
    int status = -1;
    QString out;
    QString err;
};

inline CliResult runCli(const QStringList &args,
                        const QProcessEnvironment &env = QProcessEnvironment::systemEnvironment(),
                        const QString &workingDirectory = QString(),
                        const QString &program = QStringLiteral(BREVANO_BINARY))
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(workingDirectory);
    process.start(program, args);
    if (!process.waitForFinished(30000))
        qFatal("brevano did not finish");
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}
