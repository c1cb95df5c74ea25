#pragma once

#include <QFile>
#include <QTemporaryDir>

// A private HOME for a benchmark, made before the application object so that
// the settings and the data file are its own; the offscreen platform unless
// another is asked for.
class BenchHome
{
public:
    BenchHome()
    {
        for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            qunsetenv(name);
        qputenv("HOME", QFile::encodeName(m_dir.path()));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir.path()));
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    bool isValid() const { return m_dir.isValid(); }

private:
    QTemporaryDir m_dir;
};
