#include "LaunchAtLoginController.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSaveFile>
#include <QStandardPaths>

LaunchAtLoginController::LaunchAtLoginController(const QString &program) : m_program(program) {}

QString LaunchAtLoginController::autostartFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart");
}

// The program an Exec line runs: its first word, quotes taken off.
static QString execProgram(const QString &exec)
{
    const QString trimmed = exec.trimmed();
    if (trimmed.startsWith(u'"')) {
        const qsizetype end = trimmed.indexOf(u'"', 1);
        return end < 0 ? QString() : trimmed.mid(1, end - 1);
    }
    return trimmed.section(u' ', 0, 0);
}

// The keys of a desktop file's [Desktop Entry] group.
static QHash<QString, QString> desktopEntry(const QString &path)
{
    QHash<QString, QString> keys;
    QFile file(path);
    if (file.size() > 65536 || !file.open(QIODevice::ReadOnly))
        return keys;
    bool inEntry = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'['))
            inEntry = line == u"[Desktop Entry]";
        else if (inEntry && line.contains(u'=') && !line.startsWith(u'#'))
            keys.insert(line.section(u'=', 0, 0).trimmed(), line.section(u'=', 1).trimmed());
    }
    return keys;
}

QString LaunchAtLoginController::findEntry(const QString &program) const
{
    const QDir folder(autostartFolder());
    for (const QString &name :
         folder.entryList({QStringLiteral("*.desktop")}, QDir::Files, QDir::Name)) {
        const QHash<QString, QString> entry = desktopEntry(folder.filePath(name));
        if (entry.value(QStringLiteral("Hidden")) == u"true")
            continue;
        if (execProgram(entry.value(QStringLiteral("Exec"))) == program)
            return folder.filePath(name);
    }
    return QString();
}

bool LaunchAtLoginController::willLaunchAtLogin(const QString &program) const
{
    return !findEntry(program).isEmpty();
}

bool LaunchAtLoginController::setLaunchAtLogin(const QString &program, bool enabled)
{
    const QString existing = findEntry(program);
    if (!enabled)
        return existing.isEmpty() || QFile::remove(existing);
    if (!existing.isEmpty())
        return true;
    if (!QDir().mkpath(autostartFolder()))
        return false;
    // A name of our own that no other entry uses.
    QString path = autostartFolder() + QStringLiteral("/brevano.desktop");
    for (int n = 2; QFile::exists(path); ++n)
        path = autostartFolder() + QStringLiteral("/brevano-%1.desktop").arg(n);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QString quoted = program;
    quoted.replace(u'"', QStringLiteral("\\\""));
    file.write(QStringLiteral("[Desktop Entry]\nType=Application\nName=Brevano\n"
                              "Comment=Keeps the Desktop clear\nExec=\"%1\"\nIcon=brevano\n"
                              "X-GNOME-Autostart-enabled=true\n")
                   .arg(quoted)
                   .toUtf8());
    return file.commit();
}
