#include "AppServices.h"

#include "NotificationCenter.h"
#include "QtScheduler.h"

#include <QFileInfo>

AppServices::AppServices(AlertPresenter &alerts)
    : m_data(QtScheduler::instance(), NotificationCenter::defaultCenter(), alerts),
      m_engine(m_data,
               EngineServices{QtScheduler::instance(), NotificationCenter::defaultCenter(),
                              m_itemInfo, m_trash, m_notifier, m_fileViewer, m_modifierKeys}),
      m_journal(MoveJournal::defaultPath())
{
    BrevanoData::setSharedInstance(&m_data);
    Brevano::setSharedInstance(&m_engine);
}

AppServices::~AppServices()
{
    m_engine.setJournal(nullptr);
    Brevano::setSharedInstance(nullptr);
    BrevanoData::setSharedInstance(nullptr);
}

void AppServices::loadStore()
{
    m_data.loadDataFile();
    m_engine.linkSaveData(m_data.saveData());
    m_data.setTidyStatusSource(&m_engine);
}

JournalRecovery::Report AppServices::startJournal(QString *problem, bool create,
                                                  std::chrono::milliseconds lockWait)
{
    loadStore();
    if (qgetenv("BREVANO_JOURNAL") == "off")
        return {};
    m_engine.setJournal(&m_journal);
    // Nothing to recover where there is no journal yet.
    if (!create && !QFileInfo::exists(MoveJournal::defaultPath())) {
        m_journal.openOnFirstRun();
        return {};
    }
    return openJournal(lockWait, problem);
}

JournalRecovery::Report AppServices::openJournal(std::chrono::milliseconds lockWait,
                                                 QString *problem)
{
    const bool opened = m_journal.open(lockWait);
    // Another Brevano moving items now would find its run "cut short" in our
    // recovery, and our tidies would be missing from its undo: none here
    // until it is done.
    m_engine.setTidiesHeld(!opened && m_journal.isInUseElsewhere());
    if (!opened) {
        if (problem)
            *problem =
                m_journal.isInUseElsewhere()
                    ? QStringLiteral("another Brevano is moving items; try again when it "
                                     "is done")
                    : QStringLiteral("moves are not recorded: %1").arg(m_journal.lastError());
        return {};
    }
    if (problem)
        *problem = m_journal.openingNote();
    return JournalRecovery(m_journal, m_trash)
        .recover({m_engine.getDesktopFolder(), m_engine.getTargetFilename()},
                 QDateTime::currentDateTimeUtc());
}

bool AppServices::journalInUseElsewhere() const
{
    return !m_journal.isOpen() && m_journal.isInUseElsewhere();
}
