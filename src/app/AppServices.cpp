#include "AppServices.h"

#include "NotificationCenter.h"
#include "QtScheduler.h"

#include <QFileInfo>

AppServices::AppServices(AlertPresenter &alerts)
    : m_journal(MoveJournal::defaultPath()),
      m_data(QtScheduler::instance(), NotificationCenter::defaultCenter(), alerts),
      m_engine(m_data,
               EngineServices{QtScheduler::instance(), NotificationCenter::defaultCenter(),
                              m_itemInfo, m_trash, m_notifier, m_fileViewer, m_modifierKeys})
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
    // Nothing to recover where there is no journal yet, and none is made
    // before the first run; but where another Brevano holds its lock (and is
    // about to write it), a command must know now, not move unrecorded.
    const QString path = MoveJournal::defaultPath();
    if (!create && !QFileInfo::exists(path) && !QFileInfo::exists(path + QStringLiteral(".lock"))) {
        m_journal.openOnFirstRun();
        return {};
    }
    const Opening opening = open(m_journal, m_trash, lockWait, sweepFolders());
    m_engine.setTidiesHeld(opening.inUseElsewhere);
    if (problem)
        *problem = opening.problem;
    return opening.recovered;
}

AppServices::Opening AppServices::open(MoveJournal &journal, Trash &trash,
                                       std::chrono::milliseconds lockWait,
                                       const QStringList &sweepFolders)
{
    Opening opening;
    if (!journal.open(lockWait)) {
        // Another Brevano moving items now would find its run "cut short" in
        // our recovery, and our tidies would be missing from its undo: none
        // here until it is done.
        opening.inUseElsewhere = journal.isInUseElsewhere();
        opening.problem =
            opening.inUseElsewhere
                ? QStringLiteral("another Brevano is moving items; try again when "
                                 "it is done")
                : QStringLiteral("moves are not recorded: %1").arg(journal.lastError());
        return opening;
    }
    opening.problem = journal.openingNote();
    opening.recovered =
        JournalRecovery(journal, trash).recover(sweepFolders, QDateTime::currentDateTimeUtc());
    return opening;
}

QStringList AppServices::sweepFolders() const
{
    return {m_engine.getDesktopFolder(), m_engine.getTargetFilename()};
}

// The worker gets strings that share no data with ours.
static QStringList ownCopies(const QStringList &list)
{
    QStringList copies;
    for (const QString &text : list)
        copies.append(QString(text.constData(), text.size()));
    return copies;
}

void AppServices::startJournalInBackground(std::chrono::milliseconds lockWait,
                                           JournalReporter report, std::function<void()> ready)
{
    loadStore();
    m_reportJournal = std::move(report);
    if (qgetenv("BREVANO_JOURNAL") == "off") {
        QTimer::singleShot(0, &m_journalOpening, std::move(ready));
        return;
    }
    m_engine.setJournal(&m_journal);
    m_journalRetry.setInterval(2000);
    QObject::connect(&m_journalRetry, &QTimer::timeout, &m_journalOpening,
                     [this] { tryJournalAgain(); });
    m_journalOpening.start([this, lockWait, folders = ownCopies(sweepFolders()),
                            ready = std::move(ready)]() -> BackgroundJob::Then {
        Opening opening = open(m_journal, m_trash, lockWait, folders);
        return [this, opening = std::move(opening), ready] {
            m_engine.setTidiesHeld(opening.inUseElsewhere);
            if (opening.inUseElsewhere)
                m_journalRetry.start();
            m_reportJournal(opening.recovered, opening.problem);
            ready();
        };
    });
}

// Our own moves go on meanwhile (restores, drops): their hidden names are
// left alone, and only what the journal names is finished.
void AppServices::tryJournalAgain()
{
    m_journalOpening.start([this]() -> BackgroundJob::Then {
        Opening opening = open(m_journal, m_trash, std::chrono::milliseconds(0), {});
        return [this, opening = std::move(opening)] {
            if (opening.inUseElsewhere)
                return;
            m_journalRetry.stop();
            m_engine.setTidiesHeld(false);
            m_reportJournal(opening.recovered, opening.problem);
        };
    });
}

bool AppServices::journalInUseElsewhere() const
{
    return !m_journal.isOpen() && m_journal.isInUseElsewhere();
}
