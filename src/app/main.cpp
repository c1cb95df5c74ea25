#include "Brevano.h"
#include "BrevanoData.h"
#include "CommandLine.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Brevano"));
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty()) {
        err << "brevano: the tray application is not part of this build yet; "
               "the commands below work without it.\n\n";
        err.flush();
        args = {QStringLiteral("--help")};
    }
    CommandLine commandLine(BrevanoData::sharedInstance(), Brevano::sharedInstance(), out, err);
    const int status = commandLine.run(args);
    out.flush();
    err.flush();
    return status;
}
