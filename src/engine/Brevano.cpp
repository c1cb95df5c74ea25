#include "Brevano.h"

#include "BrevanoData.h"
#include "DirectoryListing.h"
#include "FileMover.h"
#include "FileNames.h"
#include "FileStat.h"
#include "FileViewer.h"
#include "ItemInfo.h"
#include "JournaledRun.h"
#include "ModifiedDateFilter.h"
#include "ModifierKeys.h"
#include "NotificationCenter.h"
#include "TidyFrequency.h"
#include "Trash.h"
#include "UserNotifier.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>

static const QString kEnabled = QStringLiteral("Enabled");
static const QString kLocations = QStringLiteral("Locations");
static const QString kRules = QStringLiteral("Rules");
static const QString kCancelTidyAction = QStringLiteral("userNotificationActionCancelTidy:");
static const QString kGrowlClickedAction = QStringLiteral("growlNotificationWasClicked:");

Brevano::Brevano(BrevanoData &data, const EngineServices &services, QObject *parent)
    : QObject(parent), m_data(data), m_services(services), m_paths(data),
      m_candidates(data, services.itemInfo), m_mover(services.trash),
      m_folderSize([&scheduler = services.scheduler] { return scheduler.now(); })
{
    // Operations a notification may name as its action.
    m_actions.insert(kCancelTidyAction,
                     [this](const QVariantMap &info) { userNotificationActionCancelTidy(info); });
    m_actions.insert(kGrowlClickedAction,
                     [this](const QVariantMap &info) { growlNotificationWasClicked(info); });
    m_services.notifier.setActivationHandler(
        [this](const QVariantMap &userInfo) { userNotificationActivated(userInfo); });
    restartUpdateTimer();
}

Brevano::~Brevano()
{
    m_services.notifier.setActivationHandler({});
    m_services.scheduler.cancel(m_timer);
    m_services.scheduler.cancel(m_retry);
    m_services.scheduler.cancel(m_watchLatency);
    for (Scheduler::TaskId pass : std::as_const(m_pendingPasses))
        m_services.scheduler.cancel(pass);
}

static Brevano *g_sharedEngine = nullptr;

Brevano &Brevano::sharedInstance()
{
    Q_ASSERT(g_sharedEngine);
    return *g_sharedEngine;
}

void Brevano::setSharedInstance(Brevano *engine)
{
    g_sharedEngine = engine;
}

void Brevano::linkSaveData(PropertyDictionary root)
{
    const PropertyValue stored = root.value(SaveDataKey);
    if (stored.isDictionary()) {
        m_saveData = stored.toDictionary();
    } else {
        m_saveData = PropertyDictionary();
        root.insert(SaveDataKey, m_saveData);
    }
    if (!m_saveData.contains(kLocations)) {
        PropertyArray locations;
        locations.append(getDesktopFolder());
        m_saveData.insert(kLocations, locations);
    }
    if (!m_saveData.contains(kRules))
        m_saveData.insert(kRules, PropertyArray());
}

bool Brevano::getEnabled() const
{
    return m_saveData.value(kEnabled).boolValue(false);
}

void Brevano::setEnabled(bool enabled)
{
    m_saveData.insert(kEnabled, enabled);
}

// ---- candidates ----

quint32 Brevano::getFileFlags(const QString &path) const
{
    return m_services.itemInfo.flags(path);
}

bool Brevano::isFileHidden(const QString &path, bool) const
{
    return getFileFlags(path) & ItemInfo::Invisible;
}

bool Brevano::isFileAlias(const QString &path) const
{
    return getFileFlags(path) & ItemInfo::AliasFile;
}

bool Brevano::isFilePackage(const QString &path) const
{
    return getFileFlags(path) & ItemInfo::Package;
}

bool Brevano::getRecentChangesInFolder(const QString &folder) const
{
    return m_candidates.getRecentChangesInFolder(folder, m_services.scheduler.now());
}

quint32 Brevano::shouldIgnoreFile(const QString &path, bool ignoreChangingFiles, bool isRepeatTidy)
{
    return shouldIgnoreFile(path, m_services.itemInfo.facts(path), ignoreChangingFiles,
                            isRepeatTidy);
}

quint32 Brevano::shouldIgnoreFile(const QString &path, const ItemInfo::Facts &facts,
                                  bool ignoreChangingFiles, bool isRepeatTidy)
{
    const auto assessment =
        m_candidates.assess(path, facts, ignoreChangingFiles, m_services.scheduler.now());
    using Change = CandidateSelector::Change;
    if (assessment.change == Change::FolderChanging || assessment.change == Change::FileChanging) {
        armRetry();
        const bool folder = assessment.change == Change::FolderChanging;
        if (!isRepeatTidy && notificationsAllow(m_data.getGrowlDeferredTidy())) {
            notifyUser(folder ? QStringLiteral("Skipping Folder") : QStringLiteral("Skipping File"),
                       folder ? QStringLiteral("Folder was skipped because the folder or its "
                                               "contents are currently being changed. Brevano will "
                                               "try again when no further changes are detected")
                              : QStringLiteral("File was skipped because it is currently being "
                                               "changed. Brevano will try again when no more "
                                               "changes are detected"),
                       QString(),
                       folder ? QStringLiteral("SkippingFolder") : QStringLiteral("SkippingFile"));
        }
    }
    return assessment.verdict;
}

bool Brevano::filePassesDateFilter(const QString &path) const
{
    return ModifiedDateFilter::passes(m_data.getDateFilter(), FileStat::modificationDate(path),
                                      m_services.scheduler.now());
}

void Brevano::forEachDesktopEntry(const std::function<bool(const QString &)> &visit) const
{
    const QString desktop = QDir::cleanPath(getDesktopFolder());
    const QString shadow = QDir::cleanPath(getTargetFilename());
    // A Shadow Desktop reached through a link is also where the link leads.
    const QString realDesktop = QFileInfo(desktop).canonicalFilePath();
    const QString realShadow = QFileInfo(shadow).canonicalFilePath();
    if (desktop == QDir::cleanPath(QDir::homePath()) || desktop == u"/" || desktop == shadow ||
        (!realShadow.isEmpty() && realDesktop == realShadow)) {
        qWarning("Brevano: not tidying %s: it is the home folder or the Shadow Desktop itself",
                 qPrintable(desktop));
        return;
    }
    const auto holds = [](const QString &item, const QString &folder) {
        return folder == item || folder.startsWith(item + u'/');
    };
    DirectoryListing::forEach(desktop, [&](QString &&entry, unsigned char) {
        // A Shadow Desktop kept on the Desktop is never moved into itself.
        if (holds(entry, shadow) ||
            (!realShadow.isEmpty() &&
             holds(realDesktop + entry.mid(entry.lastIndexOf(u'/')), realShadow)))
            return true;
        return visit(entry);
    });
}

QStringList Brevano::desktopEntries() const
{
    QStringList entries;
    forEachDesktopEntry([&entries](const QString &entry) {
        entries.append(entry);
        return true;
    });
    return entries;
}

QStringList Brevano::shadowDesktopItems() const
{
    QStringList items = DirectoryListing::entries(getTargetFilename());
    items.removeIf([](const QString &path) {
        return OverwriteMover::isWorkingName(ShadowDesktopPaths::lastPathComponent(path));
    });
    return items;
}

void Brevano::armRetry()
{
    m_services.scheduler.cancel(m_retry); // at most one retry is ever pending
    m_retry = m_services.scheduler.schedule(kRetryDelay, [this] {
        m_retry = 0;
        repeatTidy();
    });
}

// ---- the tidy ----

QString Brevano::whyTidiesWait() const
{
    if (m_tidiesHeld)
        return QStringLiteral("another Brevano is moving items");
    if (m_undo.isBusy())
        return QStringLiteral("an undo is under way");
    return {};
}

bool Brevano::undoLastTidyInBackground()
{
    MoveJournal *journal = m_journal;
    if (!journal)
        return false;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    return m_undo.start([this, journal, now]() -> BackgroundJob::Then {
        TidyUndo::Report report = TidyUndo(*journal).undoLastTidy(now);
        return [this, report = std::move(report)] {
            emit undoFinished(report);
        };
    });
}

bool Brevano::tidyIsHeld()
{
    const QString why = whyTidiesWait();
    if (why.isEmpty())
        return false;
    qWarning("Brevano: tidy skipped: %s", qUtf8Printable(why));
    emit tidyHeld(why);
    return true;
}

void Brevano::performTidyFromRequest(int request)
{
    if (tidyIsHeld())
        return;
    if (request == TidyRequestManual || request == TidyRequestRepeat)
        delayAutomatedTidy();
    else if (request == TidyRequestScheduled && !getEnabled())
        return;

    // Is there anything to move at all? The change tests stay off here.
    bool anyCandidate = false;
    forEachDesktopEntry([&](const QString &entry) {
        const ItemInfo::Facts facts = m_services.itemInfo.facts(entry);
        if (!(facts.flags & ItemInfo::Invisible))
            anyCandidate =
                shouldIgnoreFile(entry, facts, true, false) == CandidateSelector::CandidateMove;
        return !anyCandidate;
    });
    if (!anyCandidate) {
        if (notificationsAllow(m_data.getGrowlBeforeTidy()) &&
            !m_data.getGrowlBeforeTidyOnlyIfFiles())
            notifyUser(
                QStringLiteral("Tidy Skipped"),
                QStringLiteral("Brevano found no files on the Desktop and will skip this Tidy"),
                QString(), QStringLiteral("TidySkipped"));
        emit tidySkipped();
        return;
    }

    m_tidyKind = request == TidyRequestRepeat      ? QStringLiteral("repeat")
                 : request == TidyRequestScheduled ? QStringLiteral("scheduled")
                                                   : QStringLiteral("manual");
    if (request == TidyRequestRepeat) {
        m_isRepeatTidy = true;
        performTidyNow();
    } else if (request == TidyRequestManual) {
        if (notificationsAllow(m_data.getGrowlBeforeTidy()))
            notifyUser(QStringLiteral("Manual Tidy Started"),
                       QStringLiteral("Manual Tidy has started"), QString(),
                       QStringLiteral("ManualStart"));
        m_isRepeatTidy = false;
        performTidyNow();
    } else {
        if (notificationsAllow(m_data.getGrowlBeforeTidy()))
            notifyUser(QStringLiteral("Scheduled Tidy Will Start"),
                       QStringLiteral("Brevano will tidy your desktop in 10 seconds. Click here to "
                                      "postpone"),
                       kCancelTidyAction, QStringLiteral("ScheduledStart"));
        m_isRepeatTidy = false;
        auto id = std::make_shared<Scheduler::TaskId>();
        *id = m_services.scheduler.schedule(kAnnouncementDelay, [this, id] {
            m_pendingPasses.remove(*id);
            performTidyNow();
        });
        m_pendingPasses.insert(*id);
    }
}

void Brevano::forEachTidyItem(
    bool announce,
    const std::function<void(const QString &, quint32, const ItemInfo::Facts &)> &visit)
{
    for (const QString &entry : desktopEntries()) {
        const ItemInfo::Facts facts = m_services.itemInfo.facts(entry);
        if (facts.flags & ItemInfo::Invisible)
            continue;
        const quint32 verdict =
            announce ? shouldIgnoreFile(entry, facts, false, m_isRepeatTidy)
                     : m_candidates.assess(entry, facts, false, m_services.scheduler.now()).verdict;
        if (verdict != CandidateSelector::CandidateIgnored)
            visit(entry, verdict, facts);
    }
}

void Brevano::performTidyNow()
{
    // An undo may have begun since this pass was announced.
    if (tidyIsHeld())
        return;
    // What went unrecorded before (a restore, a drop) is not this tidy's to tell.
    if (const QString earlier = m_journal ? m_journal->takeWriteFailure() : QString();
        !earlier.isEmpty())
        qWarning("Brevano: moves were not recorded: %s", qUtf8Printable(earlier));
    m_services.scheduler.cancel(m_retry);
    m_retry = 0;
    qint64 found = 0;
    qint64 moved = 0;
    if (m_data.getOperationMode() == 0) {
        // Asked once per pass: finding the default folder reads the XDG directories.
        const QString shadowRoot = getTargetFilename();
        const quint32 overwriteMode = m_data.getOverwriteMode();
        // Every verdict first, so that all the moves are announced in the
        // journal at once, and durable before the first one starts.
        struct Planned
        {
            QString entry;
            bool deferred;
            MoveJournal::Identity identity;
            quint32 seq;
        };
        std::vector<Planned> plan;
        forEachTidyItem(true,
                        [&](const QString &entry, quint32 verdict, const ItemInfo::Facts &facts) {
                            plan.push_back({entry,
                                            verdict == CandidateSelector::CandidateDeferred,
                                            {facts.device, facts.inode},
                                            0});
                        });
        // A pass that only found items still being written moves nothing:
        // no run to record (retries come every 30 seconds).
        const bool movesAny = std::any_of(plan.cbegin(), plan.cend(),
                                          [](const Planned &item) { return !item.deferred; });
        JournaledRun run(movesAny ? m_journal : nullptr, MoveJournal::RunKind::Tidy, m_tidyKind,
                         m_services.scheduler.now());
        for (Planned &item : plan) {
            if (item.deferred)
                run.noteDeferred(item.entry);
            else
                item.seq = run.announce(item.entry,
                                        shadowRoot + u'/' +
                                            ShadowDesktopPaths::lastPathComponent(item.entry),
                                        item.identity);
        }
        run.sync();
        for (const Planned &item : plan) {
            ++found;
            if (item.deferred) {
                emit tidyItemProcessed(item.entry, ItemResult::Deferred, QString(), QString());
                continue;
            }
            const QString name = ShadowDesktopPaths::lastPathComponent(item.entry);
            OverwriteMover::Outcome outcome;
            run.perform(item.seq, [&] {
                outcome = m_mover.move(item.entry, shadowRoot + u'/' + name, overwriteMode);
                using Status = MoveJournal::ItemStatus;
                // Part of it copied, part of it left: both halves are told.
                return JournaledRun::Outcome{outcome.moved        ? Status::Moved
                                             : outcome.incomplete ? Status::Incomplete
                                                                  : Status::Failed,
                                             outcome.target, outcome.reason};
            });
            const QString shownName = FileNames::display(name);
            if (outcome.moved) {
                ++moved;
                if (notificationsAllow(m_data.getGrowlFileMoved()))
                    notifyUser(QStringLiteral("Moved File"),
                               QStringLiteral("Moved file '%1' to Shadow Desktop").arg(shownName),
                               QString(), QStringLiteral("MovedFile"));
            } else if (notificationsAllow(m_data.getGrowlFileMoveFailed())) {
                notifyUser(
                    QStringLiteral("Move File Failed"),
                    QStringLiteral("File '%1' could not be moved to Shadow Desktop").arg(shownName),
                    QString(), QStringLiteral("MoveFailed"));
            }
            emit tidyItemProcessed(item.entry,
                                   outcome.moved ? ItemResult::Moved : ItemResult::Failed,
                                   outcome.target, outcome.reason);
        }
        run.setEndTime(m_services.scheduler.now());
    }
    // The items moved all the same; what is lost is the undo.
    if (const QString failure = m_journal ? m_journal->takeWriteFailure() : QString();
        !failure.isEmpty()) {
        qWarning("Brevano: this tidy is not recorded: %s", qUtf8Printable(failure));
        if (notificationsAllow(true))
            notifyUser(QStringLiteral("Tidy Not Recorded"),
                       QStringLiteral("This tidy cannot be undone: %1").arg(failure), QString(),
                       QStringLiteral("TidyNotRecorded"));
    }
    if (notificationsAllow(m_data.getGrowlOnComplete()) && found > 0)
        notifyUser(
            QStringLiteral("Tidy Complete"),
            QStringLiteral("Moved %1 of %2 items found to Shadow Desktop").arg(moved).arg(found),
            QString(), QStringLiteral("TidyComplete"));
    m_services.notifications.post(NotificationCenter::TidyComplete);
    emit tidyPassFinished(moved, found);
}

bool Brevano::doMoveFileFrom(const QString &source, const QString &target, qint64 *filesMoved)
{
    const bool moved = m_mover.move(source, target, m_data.getOverwriteMode()).moved;
    if (moved && filesMoved)
        ++*filesMoved;
    return moved;
}

// ---- schedule ----

void Brevano::restartUpdateTimer()
{
    m_services.scheduler.cancel(m_timer);
    m_timer =
        m_services.scheduler.scheduleRepeating(kTimerUpdateInterval, [this] { performTidy(); });
    m_nextCheckDate = m_services.scheduler.now().addMSecs(kTimerUpdateInterval.count());
}

void Brevano::performTidy()
{
    const QDateTime now = m_services.scheduler.now();
    m_nextCheckDate = now.addMSecs(kTimerUpdateInterval.count());
    if (!getEnabled())
        return;
    if (getNextTidyDate() < now) {
        m_data.setLastTidyTime(now);
        performTidyFromRequest(TidyRequestScheduled);
    }
}

QDateTime Brevano::getNextTidyDate() const
{
    return TidyFrequency::addPeriod(m_data.getLastTidyTime(), m_data.getTidyFrequency());
}

QDateTime Brevano::getEarliestTidyDate() const
{
    return std::max(m_nextCheckDate, getNextTidyDate());
}

void Brevano::initializeEventStream()
{
    closeEventStream();
    m_watcher = std::make_unique<QFileSystemWatcher>(QStringList{getDesktopFolder()});
    // Changes are gathered for the latency and then reported once.
    connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this, [this] {
        if (m_watchLatency != 0)
            return;
        m_watchLatency = m_services.scheduler.schedule(kChangeWatchLatency, [this] {
            m_watchLatency = 0;
            delayAutomatedTidyDueToChange();
        });
    });
}

void Brevano::closeEventStream()
{
    m_watcher.reset();
    m_services.scheduler.cancel(m_watchLatency);
    m_watchLatency = 0;
}

void Brevano::delayAutomatedTidyDueToChange()
{
    m_earliestTidy = m_services.scheduler.now().addMSecs(kChangeWatchDelay.count());
}

// ---- notifications ----

bool Brevano::notificationsAllow(bool setting) const
{
    return m_data.getGrowlEnabled() && setting;
}

void Brevano::notifyUser(const QString &title, const QString &description,
                         const QString &actionSelectorName, const QString &identifier)
{
    UserNotification notification{title, description, identifier, {}};
    if (!actionSelectorName.isEmpty())
        notification.userInfo.insert(QStringLiteral("ActionSelector"), actionSelectorName);
    m_services.notifier.deliver(notification);
}

void Brevano::userNotificationActivated(const QVariantMap &userInfo)
{
    const auto action =
        m_actions.constFind(userInfo.value(QStringLiteral("ActionSelector")).toString());
    if (action != m_actions.constEnd())
        (*action)(userInfo);
}

void Brevano::userNotificationActionCancelTidy(const QVariantMap &)
{
    for (Scheduler::TaskId pass : std::as_const(m_pendingPasses))
        m_services.scheduler.cancel(pass);
    m_pendingPasses.clear();
}

void Brevano::growlNotificationWasClicked(const QVariantMap &context)
{
    userNotificationActionCancelTidy(context);
}

// ---- restore, delete, empty, size ----

Brevano::Batch::Batch(Brevano &engine, MoveJournal::RunKind kind,
                      const QList<JournaledRun::Move> &moves)
    : m_engine(engine), m_previous(engine.m_batch),
      m_run(engine.m_journal, kind, QString(), engine.m_services.scheduler.now())
{
    engine.m_batch = &m_run;
    m_run.prepare(moves);
}

Brevano::Batch::~Batch()
{
    m_run.setEndTime(m_engine.m_services.scheduler.now());
    m_engine.m_batch = m_previous;
}

JournaledRun::Outcome Brevano::moveInRun(MoveJournal::RunKind kind, const QString &source,
                                         const QString &target,
                                         const std::function<JournaledRun::Outcome()> &move)
{
    if (m_batch && m_batch->kind() == kind)
        return m_batch->moveOne(source, target, move);
    JournaledRun run(m_journal, kind, QString(), m_services.scheduler.now());
    const JournaledRun::Outcome outcome = run.moveOne(source, target, move);
    run.setEndTime(m_services.scheduler.now());
    return outcome;
}

FileMover::Result Brevano::doMoveFileFromWithoutReplacing(const QString &source,
                                                          const QString &target, JournaledRun &run)
{
    FileMover::Result result;
    run.moveOne(source, target, [&] {
        result = FileMover::move(source, target);
        return JournaledRun::outcomeOf(result, target);
    });
    return result;
}

FileMover::Result Brevano::restoreItem(const QString &path, bool addToIgnore)
{
    if (!fileResidesInShadowDesktopRoot(path))
        return {FileMover::Status::Failed,
                QStringLiteral("it does not lie directly in the Shadow Desktop")};
    if (OverwriteMover::isWorkingName(ShadowDesktopPaths::lastPathComponent(path)))
        return {FileMover::Status::Failed,
                QStringLiteral("its name is one Brevano gives an item only while moving it")};
    const QString target = getOriginalPathFromShadowPath(path);
    FileMover::Result result;
    moveInRun(MoveJournal::RunKind::Restore, path, target, [&] {
        result = FileMover::move(path, target);
        return JournaledRun::outcomeOf(result, target);
    });
    // A copy that landed while part of the item stayed behind is on the
    // Desktop all the same: the tidy is to leave it there.
    if (addToIgnore && (result.moved() || result.status == FileMover::Status::Incomplete))
        m_data.addIgnoreFiles({target});
    return result;
}

void Brevano::restoreAllFiles(bool addToIgnore)
{
    const QStringList entries = shadowDesktopItems();
    const Batch batch(*this, MoveJournal::RunKind::Restore, restoresOf(entries));
    for (const QString &entry : entries)
        restoreItemAtPath(entry, addToIgnore);
}

QList<JournaledRun::Move> Brevano::restoresOf(const QStringList &paths) const
{
    QList<JournaledRun::Move> moves;
    for (const QString &path : paths)
        moves.append({path, getOriginalPathFromShadowPath(path)});
    return moves;
}

QList<JournaledRun::Move> Brevano::trashingsOf(const QStringList &paths)
{
    QList<JournaledRun::Move> moves;
    for (const QString &path : paths) {
        if (!path.isEmpty())
            moves.append({path, QString()});
    }
    return moves;
}

Trash::Result Brevano::trashItem(const QString &path)
{
    if (OverwriteMover::isWorkingName(ShadowDesktopPaths::lastPathComponent(path)))
        return {false, QString(),
                QStringLiteral("its name is one Brevano gives an item only while moving it")};
    Trash::Result result;
    moveInRun(MoveJournal::RunKind::Trash, path, QString(), [&] {
        result = m_services.trash.trash(path);
        using Status = MoveJournal::ItemStatus;
        // Not trashed, yet a path: the copy is there and part of the item stayed.
        return JournaledRun::Outcome{
            result.ok ? Status::Moved
                      : (result.trashedPath.isEmpty() ? Status::Failed : Status::Incomplete),
            result.trashedPath, result.message};
    });
    return result;
}

void Brevano::deleteShadowDesktopContents()
{
    {
        const QStringList entries = shadowDesktopItems();
        const Batch batch(*this, MoveJournal::RunKind::Trash, trashingsOf(entries));
        for (const QString &entry : entries)
            deleteItemAtPath(entry);
    }
    if (notificationsAllow(m_data.getGrowlOnEmpty()))
        notifyUser(
            QStringLiteral("Empty Shadow Desktop Complete"),
            QStringLiteral("The contents of the Shadow Desktop have been moved to the trash"),
            QString(), QStringLiteral("EmptyComplete"));
}

void Brevano::menuItemPressed(int tag, const QString &path)
{
    switch (tag) {
    case RevealFolderTag:
        m_services.fileViewer.openFolder(path);
        break;
    case OpenTag:
        m_services.fileViewer.open(path);
        break;
    case RevealTag:
        m_services.fileViewer.reveal(path);
        break;
    case DeleteTag:
        // Trashed, the restore finds nothing; not trashed, the item goes back to the Desktop.
        deleteItemAtPath(path);
        restoreItemAtPath(path, m_data.getAutoIgnoreRestoredFiles());
        break;
    case RestoreTag:
        restoreItemAtPath(path, m_data.getAutoIgnoreRestoredFiles());
        break;
    default:
        break;
    }
}

quint64 Brevano::getFolderSize(const QString &path, const std::optional<QDateTime> &start) const
{
    return m_folderSize.getFolderSize(path, start);
}

QString Brevano::humanReadableFileType(const QString &path) const
{
    const QString expanded =
        path.startsWith(u"~/") || path == u"~" ? QDir::homePath() + path.mid(1) : path;
    return m_services.itemInfo.kindText(expanded);
}

bool Brevano::isOptionPressed() const
{
    return m_services.modifierKeys.isOptionPressed();
}

// ---- the Shadow Desktop menu ----

std::shared_ptr<ShadowDesktopMenuBuilder::Run> Brevano::beginMenuPopulate()
{
    // A run still going belongs to an opening that is over.
    *m_abortMenuPopulate = true;
    m_abortMenuPopulate = std::make_shared<std::atomic<bool>>(false);
    auto run = std::make_shared<ShadowDesktopMenuBuilder::Run>();
    run->abort = m_abortMenuPopulate;
    run->root = getTargetFilename();
    run->dateFilter = m_data.getDateFilter();
    run->now = m_services.scheduler.now();
    run->organiseMode = m_data.getQuickFiltersMode();
    for (const auto &filter : m_data.filterItems())
        run->addFilter(*filter);
    return run;
}

int Brevano::buildShadowDesktopMenu(ShadowDesktopMenuBuilder::Run &run) const
{
    const quint32 dateFilter = run.dateFilter;
    const QDateTime now = run.now;
    ShadowDesktopMenuBuilder builder(
        m_services.itemInfo,
        [dateFilter, now](const QString &path) {
            return ModifiedDateFilter::passes(dateFilter, FileStat::modificationDate(path), now);
        },
        *run.abort);
    builder.build(run);
    return 0;
}
