#pragma once

#include "Brevano.h"
#include "BrevanoData.h"
#include "FreedesktopFileViewer.h"
#include "FreedesktopNotifier.h"
#include "FreedesktopThumbnailService.h"
#include "FreedesktopTrash.h"
#include "JournalRecovery.h"
#include "LocalItemInfo.h"
#include "MoveJournal.h"
#include "QtModifierKeys.h"

#include <QTimer>

#include <functional>

class AlertPresenter;

// The process's real services, store and engine, made once by main() after the
// application object and handed down to whatever runs: the tray application or
// a command. Nothing below this picks a platform service itself.
class AppServices
{
public:
    explicit AppServices(AlertPresenter &alerts);
    ~AppServices();
    AppServices(const AppServices &) = delete;
    AppServices &operator=(const AppServices &) = delete;

    BrevanoData &data() { return m_data; }
    Brevano &engine() { return m_engine; }
    FileViewer &fileViewer() { return m_fileViewer; }
    ThumbnailService &thumbnails() { return m_thumbnails; }
    // Loads the data file and links the engine to it, as the tray application
    // starts (for programs that start from these services without it).
    void loadStore();
    // Loads the store, opens the move journal for the engine and finishes
    // what a run cut short left in flight. Before anything else moves; every
    // command run here (not handed to a running application) starts so.
    // Without the journal (it is locked by another Brevano, or cannot be
    // written) moves go on unrecorded and nothing is recovered; problem says
    // why. BREVANO_JOURNAL=off (for benchmarks) runs without one. Without
    // create, a journal that does not exist is made only when the first run
    // begins.
    JournalRecovery::Report startJournal(QString *problem, bool create,
                                         std::chrono::milliseconds lockWait);
    // What the journal's opening came to, for the tray application.
    using JournalReporter =
        std::function<void(const JournalRecovery::Report &recovered, const QString &problem)>;
    // The tray application's start: as startJournal(), with the journal opened
    // (waiting for its lock up to lockWait) and recovered on a worker; ready is
    // called on this thread when that is done, and nothing is to move before.
    // While another Brevano holds the journal, ready is called all the same,
    // tidies wait, and the journal is asked for again every two seconds until
    // it is free. report is called for each opening that says something.
    void startJournalInBackground(std::chrono::milliseconds lockWait, JournalReporter report,
                                  std::function<void()> ready);
    bool journalInUseElsewhere() const;

private:
    struct Opening
    {
        JournalRecovery::Report recovered;
        QString problem;
        bool inUseElsewhere = false;
    };
    // Any thread: touches the journal and the Trash only.
    static Opening open(MoveJournal &journal, Trash &trash, std::chrono::milliseconds lockWait,
                        const QStringList &sweepFolders);
    // The folders whose leftover hidden names a recovery may remove: only
    // while nothing of ours is moving.
    QStringList sweepFolders() const;
    void tryJournalAgain();

    // The journal outlives the engine that records in it.
    MoveJournal m_journal;
    LocalItemInfo m_itemInfo;
    FreedesktopTrash m_trash;
    FreedesktopNotifier m_notifier;
    FreedesktopFileViewer m_fileViewer;
    FreedesktopThumbnailService m_thumbnails;
    QtModifierKeys m_modifierKeys;
    BrevanoData m_data;
    Brevano m_engine;
    JournalReporter m_reportJournal;
    QTimer m_journalRetry;
    BackgroundJob m_journalOpening; // last: its worker ends before the rest goes
};
