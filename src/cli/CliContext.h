#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>

class AlertPresenter;
class Brevano;
class BrevanoData;
class MoveJournal;

// What a subcommand works with: the store and engine, loaded from the data file,
// and the two output streams.
class CliContext
{
public:
    enum ExitCode
    {
        Success = 0,
        Failed = 1,
        BadUsage = 2
    };

    CliContext(BrevanoData &data, Brevano &engine, AlertPresenter &alerts, QTextStream &out,
               QTextStream &err)
        : m_data(data), m_engine(engine), m_alerts(alerts), m_out(out), m_err(err)
    {
    }

    BrevanoData &data() { return m_data; }
    Brevano &engine() { return m_engine; }
    AlertPresenter &alerts() { return m_alerts; }
    // The engine's move journal; null, having said why on standard error, when
    // there is none to read or write.
    MoveJournal *journal();
    // name (as given on the command line) inside the Shadow Desktop root.
    QString shadowPath(const QString &name);
    // Commands that name items take plain names of items directly in the Shadow
    // Desktop: no "/", not "." or "..", not empty, so that no argument reaches
    // outside it. Says which argument is not such a name and answers false.
    bool checkItemNames(const QStringList &names);
    QTextStream &out() { return m_out; }
    QTextStream &err() { return m_err; }

    // Loads the data file and links the engine to it; warns when the file could
    // not be read and defaults are used. In the running application the store
    // is live and already loaded, and nothing is read again.
    void loadStore();
    void setStoreIsLive(bool live) { m_storeIsLive = live; }
    // True when the running application carries the command out.
    bool storeIsLive() const { return m_storeIsLive; }
    // Where relative paths on the command line start from.
    QString workingDirectory() const { return m_workingDirectory; }
    void setWorkingDirectory(const QString &folder) { m_workingDirectory = folder; }
    // Saves the data file; on failure says why and answers false.
    bool saveStore();
    // Prints "brevano: message" on standard error and returns code.
    int fail(const QString &message, ExitCode code);

private:
    BrevanoData &m_data;
    Brevano &m_engine;
    AlertPresenter &m_alerts;
    QTextStream &m_out;
    QTextStream &m_err;
    bool m_storeIsLive = false;
    QString m_workingDirectory;
};
