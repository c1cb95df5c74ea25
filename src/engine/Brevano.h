#pragma once

#include "BackgroundJob.h"
#include "CandidateSelector.h"
#include "EngineServices.h"
#include "FileMover.h"
#include "FolderSize.h"
#include "JournaledRun.h"
#include "OverwriteMover.h"
#include "PropertyValue.h"
#include "Scheduler.h"
#include "ShadowDesktopMenuBuilder.h"
#include "ShadowDesktopPaths.h"
#include "TidyStatusSource.h"
#include "TidyUndo.h"
#include "Trash.h"

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>
#include <memory>

class BrevanoData;
class QFileSystemWatcher;

// The tidy engine: which Desktop items to move, the tidy itself, its schedule,
// the notifications it sends, and restoring, trashing and sizing what it moved.
// Its own settings ("Enabled", "Locations", "Rules") live in a dictionary inside
// the store's tree, so saving the store saves them too.
class Brevano : public QObject, public TidyStatusSource
{
    Q_OBJECT
public:
    enum TidyRequest : int
    {
        TidyRequestManual = 0,
        TidyRequestScheduled = 1,
        TidyRequestRepeat = 2
    };
    enum MenuTag : int
    {
        RevealFolderTag = 1,
        OpenTag = 2,
        RevealTag = 3,
        DeleteTag = 4,
        RestoreTag = 5
    };
    enum class ItemResult
    {
        Moved,
        Failed,
        Deferred
    };

    static inline const QString SaveDataKey = QStringLiteral("KVBrevanoSaveData");
    static constexpr std::chrono::milliseconds kTimerUpdateInterval{61000};
    static constexpr std::chrono::milliseconds kAnnouncementDelay{10000};
    static constexpr std::chrono::milliseconds kRetryDelay{30000};
    static constexpr std::chrono::milliseconds kChangeWatchLatency{3000};
    static constexpr std::chrono::milliseconds kChangeWatchDelay{10000};

    Brevano(BrevanoData &data, const EngineServices &services, QObject *parent = nullptr);
    ~Brevano() override;

    // The process's engine, as the composition root registered it.
    static Brevano &sharedInstance();
    static void setSharedInstance(Brevano *engine);

    // Adopts the root's engine dictionary (creating it, "Locations" and "Rules"
    // when missing) as this engine's own, shared with the store.
    void linkSaveData(PropertyDictionary root);
    PropertyDictionary saveData() const { return m_saveData; }

    bool getEnabled() const override;
    void setEnabled(bool enabled);
    PropertyArray getLocations() const
    {
        return m_saveData.value(QStringLiteral("Locations")).toArray();
    }
    PropertyArray getCommonRules() const
    {
        return m_saveData.value(QStringLiteral("Rules")).toArray();
    }

    // ---- candidates ----
    quint32 getFileFlags(const QString &path) const;
    bool isFileHidden(const QString &path, bool isFolder = false) const;
    bool isFileAlias(const QString &path) const;
    bool isFilePackage(const QString &path) const;
    bool getRecentChangesInFolder(const QString &folder) const;
    // The verdict; a changing item also arms the retry and may notify.
    quint32 shouldIgnoreFile(const QString &path, bool ignoreChangingFiles, bool isRepeatTidy);
    // The same, with the item's facts already read.
    quint32 shouldIgnoreFile(const QString &path, const ItemInfo::Facts &facts,
                             bool ignoreChangingFiles, bool isRepeatTidy);
    bool filePassesDateFilter(const QString &path) const;
    // The Desktop entries a tidy looks at. None when the Desktop is the home
    // folder or holds the Shadow Desktop itself: tidying those would move the
    // user's whole home or the Shadow Desktop into itself.
    QStringList desktopEntries() const;
    // What lies in the Shadow Desktop, but for items under a working name (a
    // move under way, or one cut short that recovery is to finish).
    QStringList shadowDesktopItems() const;
    // The same entries one at a time; visit returns false to stop the listing.
    void forEachDesktopEntry(const std::function<bool(const QString &path)> &visit) const;

    // ---- the tidy ----
    void performTidyFromRequest(int request);
    void performManualTidy() { performTidyFromRequest(TidyRequestManual); }
    void repeatTidy() { performTidyFromRequest(TidyRequestRepeat); }
    void performTidyNow();
    // The items a move pass takes up, in the Desktop's order, each with its
    // verdict at the engine's clock: moved or deferred (invisible and ignored
    // items are passed over). With announce, a changing item arms the retry and
    // may notify, as in the pass itself; without, nothing but the look happens.
    void forEachTidyItem(bool announce,
                         const std::function<void(const QString &entry, quint32 verdict,
                                                  const ItemInfo::Facts &facts)> &visit);
    bool doMoveFileFrom(const QString &source, const QString &target, qint64 *filesMoved);
    // The same move without ever replacing, whatever the overwrite mode, with
    // the mover's account: a taken name leaves the item where it is
    // (TargetExists). Items dropped on the panel move so, off the main thread:
    // it touches nothing of the engine, and records the move in run (the
    // drop's, on a thread-safe journal).
    static FileMover::Result
    doMoveFileFromWithoutReplacing(const QString &source, const QString &target, JournaledRun &run);
    bool isRepeatTidy() const { return m_isRepeatTidy; }
    void setIsRepeatTidy(bool repeat) { m_isRepeatTidy = repeat; }
    bool hasPendingTidy() const { return !m_pendingPasses.isEmpty(); }
    bool hasPendingRetry() const { return m_retry != 0; }

    // ---- schedule ----
    static double getTimerUpdateInterval() { return kTimerUpdateInterval.count() / 1000.0; }
    void restartUpdateTimer();
    void delayAutomatedTidy() { restartUpdateTimer(); }
    void performTidy(); // the check timer's tick
    QDateTime nextCheckDate() const { return m_nextCheckDate; }
    void setNextCheckDate(const QDateTime &date) { m_nextCheckDate = date; }
    QDateTime getNextTidyDate() const;
    QDateTime getEarliestTidyDate() const override;
    // The Desktop change watcher; nothing starts it, and nothing reads earliestTidy.
    void initializeEventStream();
    void closeEventStream();
    void delayAutomatedTidyDueToChange();
    QDateTime earliestTidy() const { return m_earliestTidy; }
    // The current opening's flag. Set from the main thread (the menu closed); the
    // menu worker reads it and never clears it.
    bool abortMenuPopulate() const { return *m_abortMenuPopulate; }
    void setAbortMenuPopulate(bool abort) { *m_abortMenuPopulate = abort; }

    // ---- the Shadow Desktop menu ----
    // On the main thread, as the menu opens: a new, cleared abort flag for this
    // opening (the one before keeps its own, set) and a snapshot of every setting
    // the build reads.
    std::shared_ptr<ShadowDesktopMenuBuilder::Run> beginMenuPopulate();
    // On the worker: fills the run's tree and its quick filters' submenus.
    int buildShadowDesktopMenu(ShadowDesktopMenuBuilder::Run &run) const;

    // ---- notifications ----
    void notifyUser(const QString &title, const QString &description,
                    const QString &actionSelectorName, const QString &identifier);
    void userNotificationActivated(const QVariantMap &userInfo);
    void userNotificationActionCancelTidy(const QVariantMap &userInfo);
    void growlNotificationWasClicked(const QVariantMap &context);

    // ---- restore, delete, empty, size ----
    // While one lives, the restores (or trashings) asked for are one run of
    // the journal, not a run each.
    class Batch
    {
    public:
        // moves: those to come, if known, announced at once.
        Batch(Brevano &engine, MoveJournal::RunKind kind,
              const QList<JournaledRun::Move> &moves = {});
        ~Batch();
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;

    private:
        Brevano &m_engine;
        JournaledRun *m_previous;
        JournaledRun m_run;
    };
    bool restoreItemAtPath(const QString &path, bool addToIgnore)
    {
        return restoreItem(path, addToIgnore).moved();
    }
    // The same, with the mover's account of what happened.
    FileMover::Result restoreItem(const QString &path, bool addToIgnore);
    void restoreAllFiles(bool addToIgnore);
    bool deleteItemAtPath(const QString &path) { return trashItem(path).ok; }
    // The moves a Batch of restores or trashings of these Shadow Desktop items announces.
    QList<JournaledRun::Move> restoresOf(const QStringList &paths) const;
    static QList<JournaledRun::Move> trashingsOf(const QStringList &paths);
    Trash::Result trashItem(const QString &path);
    void deleteShadowDesktopContents();
    void menuItemPressed(int tag, const QString &path);
    quint64 getFolderSize(const QString &path, const std::optional<QDateTime> &start) const;
    QString humanReadableFileType(const QString &path) const;
    bool isOptionPressed() const;

    // ---- paths ----
    const ShadowDesktopPaths &paths() const { return m_paths; }
    QString getDesktopFolder() const { return m_paths.getDesktopFolder(); }
    QString getDefaultShadowDesktopFolder() const
    {
        return m_paths.getDefaultShadowDesktopFolder();
    }
    QString getTargetFilename(const QString &name = QString()) const
    {
        return m_paths.getTargetFilename(name);
    }
    QString getTargetPathFromSourcePath(const QString &path) const
    {
        return m_paths.getTargetPathFromSourcePath(path);
    }
    QString getOriginalPathFromShadowPath(const QString &path) const
    {
        return m_paths.getOriginalPathFromShadowPath(path);
    }
    bool fileResidesInShadowDesktopRoot(const QString &path) const
    {
        return m_paths.fileResidesInShadowDesktopRoot(path);
    }
    static QString generateUniqueFilename(const QString &path)
    {
        return ShadowDesktopPaths::generateUniqueFilename(path);
    }

    // The journal every move is recorded in; null when there is none (it
    // could not be opened, or a benchmark runs without it).
    MoveJournal *journal() const { return m_journal; }
    void setJournal(MoveJournal *journal) { m_journal = journal; }
    // While held, tidies are skipped: another Brevano holds the journal and
    // is moving items.
    void setTidiesHeld(bool held) { m_tidiesHeld = held; }
    // Why a tidy asked for now would be skipped; empty when it would not.
    QString whyTidiesWait() const;

    // Takes the last tidy back on a worker, so that menus stay live while
    // items move; tidies wait meanwhile, and undoFinished() tells what came
    // of it. False when an undo is under way already or there is no journal.
    bool undoLastTidyInBackground();
    bool isUndoing() const { return m_undo.isBusy(); }

    const CandidateSelector &candidates() const { return m_candidates; }
    // Safe to use from a worker too.
    const ItemInfo &itemInfo() const { return m_services.itemInfo; }
    NotificationCenter &notifications() const { return m_services.notifications; }
    OverwriteMover &mover() { return m_mover; }

signals:
    // One per item the move pass took up: moved (to target; reason notes what else
    // happened, if anything), failed (reason) or deferred.
    void tidyItemProcessed(const QString &path, Brevano::ItemResult result, const QString &target,
                           const QString &reason);
    void tidySkipped();
    // A tidy was asked for while tidies wait (see whyTidiesWait()).
    void tidyHeld(const QString &why);
    void undoFinished(const TidyUndo::Report &report);
    void tidyPassFinished(qint64 moved, qint64 found);

private:
    bool notificationsAllow(bool setting) const;
    // True, having said why, when tidies wait now.
    bool tidyIsHeld();
    // A move recorded in the open batch of its kind, or in a run of its own.
    JournaledRun::Outcome moveInRun(MoveJournal::RunKind kind, const QString &source,
                                    const QString &target,
                                    const std::function<JournaledRun::Outcome()> &move);
    void armRetry();

    BrevanoData &m_data;
    EngineServices m_services;
    ShadowDesktopPaths m_paths;
    CandidateSelector m_candidates;
    OverwriteMover m_mover;
    FolderSize m_folderSize;
    PropertyDictionary m_saveData;
    QHash<QString, std::function<void(const QVariantMap &)>> m_actions;

    MoveJournal *m_journal = nullptr;
    JournaledRun *m_batch = nullptr;
    bool m_tidiesHeld = false;
    QString m_tidyKind = QStringLiteral("manual"); // how the pass to come was asked for
    bool m_isRepeatTidy = false;
    std::shared_ptr<std::atomic<bool>> m_abortMenuPopulate =
        std::make_shared<std::atomic<bool>>(false);
    Scheduler::TaskId m_timer = 0;
    Scheduler::TaskId m_retry = 0;
    QSet<Scheduler::TaskId> m_pendingPasses;
    QDateTime m_nextCheckDate;
    QDateTime m_earliestTidy;
    std::unique_ptr<QFileSystemWatcher> m_watcher;
    Scheduler::TaskId m_watchLatency = 0;
    BackgroundJob m_undo; // last: its worker is waited for before the rest goes
};
