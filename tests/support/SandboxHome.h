#pragma once

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

// A private HOME and XDG tree for one test, so that nothing touches the real
// user's files. The Desktop is $HOME/Desktop unless user-dirs.dirs says otherwise.
class SandboxHome
{
public:
    SandboxHome()
    {
        QVERIFY(m_dir.isValid());
        const QString home = m_dir.path();
        qputenv("HOME", home.toUtf8());
        qputenv("XDG_CONFIG_HOME", (home + "/.config").toUtf8());
        qputenv("XDG_DATA_HOME", (home + "/.local/share").toUtf8());
        qputenv("XDG_CACHE_HOME", (home + "/.cache").toUtf8());
        qputenv("XDG_RUNTIME_DIR", (home + "/run").toUtf8());
        // QSettings reads the configuration folder once per process: each
        // sandbox gets its own settings, not the first one's.
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home + "/.config");
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, home + "/.config");
        QDir(home).mkpath(QStringLiteral("Desktop"));
        QDir(home).mkpath(QStringLiteral("run"));
        QFile::setPermissions(home + "/run",
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QString home() const { return m_dir.path(); }
    QString desktop() const { return home() + "/Desktop"; }
    QString dataFolder() const { return home() + "/.local/share/Brevano"; }
    QString dataFile() const { return dataFolder() + "/Brevano.data"; }
    QString shadowDesktop() const { return dataFolder() + "/Shadow Desktop"; }

    // Writes bytes to path (relative to HOME), creating folders on the way.
    QString write(const QString &relativePath, const QByteArray &bytes) const
    {
        const QString path = home() + u'/' + relativePath;
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

private:
    QTemporaryDir m_dir;
};
