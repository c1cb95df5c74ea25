#include "CliContext.h"

#include "Brevano.h"
#include "BrevanoData.h"
#include "MoveJournal.h"

void CliContext::loadStore()
{
    if (m_storeIsLive)
        return;
    m_data.loadDataFile();
    m_engine.linkSaveData(m_data.saveData());
    if (!m_data.loadError().isEmpty()) {
        m_err << "brevano: warning: " << m_data.pathForDataFile() << " could not be read ("
              << m_data.loadError()
              << "); using the defaults. It is kept as Brevano.data.bad at the next save.\n";
        m_err.flush();
    }
}

bool CliContext::saveStore()
{
    QString error;
    if (m_data.saveDataFile(&error))
        return true;
    fail(QStringLiteral("could not save %1: %2").arg(m_data.pathForDataFile(), error), Failed);
    return false;
}

int CliContext::fail(const QString &message, ExitCode code)
{
    m_err << "brevano: " << message << '\n';
    m_err.flush();
    return code;
}

QString CliContext::shadowPath(const QString &name)
{
    return m_engine.getTargetFilename() + u'/' + name;
}

bool CliContext::checkItemNames(const QStringList &names)
{
    for (const QString &name : names) {
        if (name.isEmpty() || name == u"." || name == u".." || name.contains(u'/')) {
            fail(QStringLiteral("\"%1\" is not the name of an item in the Shadow Desktop; give "
                                "plain names of items directly in it, without \"/\"")
                     .arg(name),
                 BadUsage);
            return false;
        }
    }
    return true;
}

MoveJournal *CliContext::journal()
{
    MoveJournal *journal = m_engine.journal();
    // A command in its own process opens a journal not made yet; the running
    // application opened its own at start, and never waits for it here.
    if (journal &&
        (journal->isOpen() || (!m_storeIsLive && journal->open(std::chrono::milliseconds(0)))))
        return journal;
    QString message = QStringLiteral("the move journal is not available");
    if (journal && !journal->lastError().isEmpty())
        message += QStringLiteral(": ") + journal->lastError();
    fail(message, Failed);
    return nullptr;
}
