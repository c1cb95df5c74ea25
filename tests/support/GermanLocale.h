#pragma once

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

// The C library's de_DE.UTF-8 locale (a decimal comma), built into a private
// folder: with LOCPATH=path() a process finds it even where the system has no
// German locale installed.
class GermanLocale
{
public:
    static constexpr const char *Name = "de_DE.UTF-8";

    GermanLocale()
    {
        const QString localedef = QStandardPaths::findExecutable(QStringLiteral("localedef"));
        if (localedef.isEmpty() || !m_dir.isValid())
            return;
        const QString target = m_dir.path() + u'/' + QLatin1String(Name);
        QProcess build;
        build.start(localedef, {"-c", "-i", "de_DE", "-f", "UTF-8", target});
        build.waitForFinished(120000);
        m_valid = QFileInfo::exists(target + "/LC_NUMERIC");
    }

    bool isValid() const { return m_valid; }
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    bool m_valid = false;
};
