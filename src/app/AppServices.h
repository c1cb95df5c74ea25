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
    // what a run cut short left in flight. Before anything else moves; the
    // tray application and every command run here (not handed to a running
    // application) start so. Without the journal (it is locked by another
    // Brevano, or cannot be written) moves go on unrecorded and nothing is
    // recovered; problem says why. BREVANO_JOURNAL=off (for benchmarks) runs
    // without one. Without create, a journal that does not exist is made only
    // when the first run begins.
    JournalRecovery::Report startJournal(QString *problem, bool create,
                                         std::chrono::milliseconds lockWait);
    // Opens the journal (waiting for the lock up to lockWait) and recovers.
    // While another Brevano holds it, the engine holds its tidies.
    JournalRecovery::Report openJournal(std::chrono::milliseconds lockWait, QString *problem);
    bool journalInUseElsewhere() const;

private:
    LocalItemInfo m_itemInfo;
    FreedesktopTrash m_trash;
    FreedesktopNotifier m_notifier;
    FreedesktopFileViewer m_fileViewer;
    FreedesktopThumbnailService m_thumbnails;
    QtModifierKeys m_modifierKeys;
    BrevanoData m_data;
    Brevano m_engine;
    MoveJournal m_journal;
};
