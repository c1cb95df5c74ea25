#include "DroppedItemsMover.h"
#include "EngineFixture.h"
#include "FileMover.h"
#include "FileTree.h"
#include "MoveJournal.h"
#include "TmpfsMount.h"

#include <QSignalSpy>
#include <QtTest>

using namespace std::chrono_literals;

namespace {
constexpr auto Move = CandidateSelector::CandidateMove;
constexpr auto Deferred = CandidateSelector::CandidateDeferred;
constexpr auto Ignored = CandidateSelector::CandidateIgnored;

QString readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// 1043 bytes in all: 1000 + a hidden 24 in a subfolder + a link of 19 (the link itself).
void writeSizedTree(const SandboxHome &sandbox, const QString &relative)
{
    sandbox.write(relative + "/one", QByteArray(1000, 'a'));
    sandbox.write(relative + "/Sub/.two", QByteArray(24, 'b'));
    QFile::link("/a/long/target/path", sandbox.home() + '/' + relative + "/link");
}
} // namespace

class tst_TidyEngine : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { FileMover::setFaultHookForTesting({}); }
    void verdictsInTheirOrder();
    void onlyDirectChildrenMakeAFolderChange();
    void dateFilter();
    void manualTidyOfAMixedDesktop();
    void nothingToMove();
    void changingItemsAreRetried();
    void overwriteModes();
    void keepBothSurvivesAClashRace();
    void whatChangesDuringACopyStays();
    void replaceNeverLosesTheOldItem();
    void namesThatAreNotUtf8();
    void scheduledTidyAnnouncesAndCanBePostponed();
    void checkTimerSchedule();
    void operationModeAndMasterSwitch();
    void desktopThatIsHomeIsNeverTidied();
    void restoreDeleteEmpty();
    void folderSizeAndMenuActions();
    void aLinkedShadowDesktopIsFollowedOnce();
    void everyRunIsJournaled();
};

void tst_TidyEngine::verdictsInTheirOrder()
{
    EngineFixture f;
    f.load();
    const QString fresh = f.desktopItem("fresh.txt", 5);
    const QString settled = f.desktopItem("settled.txt", 11);
    const QString future = f.desktopItem("future.txt", -3600);
    QCOMPARE(f.engine.shouldIgnoreFile(settled, false, false), quint32(Move));
    QCOMPARE(f.engine.shouldIgnoreFile(fresh, false, false), quint32(Deferred));
    QCOMPARE(f.notifier.identifiers(), QStringList{"SkippingFile"});
    QVERIFY(f.engine.hasPendingRetry());
    QCOMPARE(f.engine.shouldIgnoreFile(future, false, true),
             quint32(Deferred)); // silent in a repeat
    QCOMPARE(f.notifier.m_delivered.size(), 1);
    // With the change tests off (the pre-scan) nothing defers and nothing is armed.
    QCOMPARE(f.engine.shouldIgnoreFile(fresh, true, false), quint32(Move));

    // The ignore list comes after the change tests.
    f.data.addIgnoreFiles({fresh, settled});
    QCOMPARE(f.engine.shouldIgnoreFile(fresh, false, false), quint32(Deferred));
    QCOMPARE(f.engine.shouldIgnoreFile(settled, false, false), quint32(Ignored));

    // Settings come first: an ignored changing folder arms no retry and says nothing.
    EngineFixture g;
    g.load();
    g.desktopItem("Folder/new.txt", 3);
    g.data.setIgnoreFolders(true);
    QCOMPARE(g.engine.shouldIgnoreFile(g.sandbox.desktop() + "/Folder", false, false),
             quint32(Ignored));
    QVERIFY(!g.engine.hasPendingRetry());
    QVERIFY(g.notifier.m_delivered.isEmpty());
    g.data.setIgnoreFolders(false);
    QCOMPARE(g.engine.shouldIgnoreFile(g.sandbox.desktop() + "/Folder", false, false),
             quint32(Deferred));
    QCOMPARE(g.notifier.identifiers(), QStringList{"SkippingFolder"});

    // Links are candidates unless "IgnoreAliases"; the hidden setting ignores dot files.
    QFile::link(settled, g.sandbox.desktop() + "/alias");
    g.setAge(g.sandbox.desktop() + "/alias", 60);
    QCOMPARE(g.engine.shouldIgnoreFile(g.sandbox.desktop() + "/alias", false, false),
             quint32(Move));
    g.data.setIgnoreAliases(true);
    QCOMPARE(g.engine.shouldIgnoreFile(g.sandbox.desktop() + "/alias", false, false),
             quint32(Ignored));
    QCOMPARE(g.engine.shouldIgnoreFile(g.desktopItem(".hidden", 100), false, false),
             quint32(Ignored));
    // No date to read: deferred at once, with nothing armed or said.
    EngineFixture h;
    h.load();
    QCOMPARE(h.engine.shouldIgnoreFile(h.sandbox.desktop() + "/gone", false, false),
             quint32(Deferred));
    QVERIFY(!h.engine.hasPendingRetry());
    QVERIFY(h.notifier.m_delivered.isEmpty());
}

void tst_TidyEngine::onlyDirectChildrenMakeAFolderChange()
{
    EngineFixture f;
    f.load();
    const QString folder = f.sandbox.desktop() + "/Projects";
    f.desktopItem("Projects/old.txt", 600);
    f.desktopItem("Projects/Sub/Deeper/new.txt", 2); // two levels down
    f.setAge(folder + "/Sub/Deeper", 600);
    f.setAge(folder + "/Sub", 600);
    f.setAge(folder, 600);
    QVERIFY(!f.engine.getRecentChangesInFolder(folder));
    QCOMPARE(f.engine.shouldIgnoreFile(folder, false, false), quint32(Move));
    f.setAge(folder, 4); // its own date still counts
    QCOMPARE(f.engine.shouldIgnoreFile(folder, false, false), quint32(Deferred));
    QCOMPARE(f.notifier.identifiers(), QStringList{"SkippingFile"});
    f.desktopItem("Projects/.just-saved", 1); // hidden children count too
    QVERIFY(f.engine.getRecentChangesInFolder(folder));
    QVERIFY(!f.engine.getRecentChangesInFolder(f.sandbox.home() + "/empty-or-missing"));
}

void tst_TidyEngine::dateFilter()
{
    EngineFixture f;
    f.load();
    QVERIFY(f.engine.filePassesDateFilter(f.sandbox.desktop() + "/no date at all"));
    f.data.setDateFilter(1);
    QVERIFY(!f.engine.filePassesDateFilter(f.desktopItem("old", 25 * 3600)));
    QVERIFY(f.engine.filePassesDateFilter(f.desktopItem("recent", 23 * 3600)));
    f.data.setDateFilter(4); // a calendar month, not 30 days
    f.scheduler.setNow(QDateTime(QDate(2026, 3, 1), QTime(12, 0)));
    QVERIFY(f.engine.filePassesDateFilter(f.desktopItem("february", 27 * 86400)));
    QVERIFY(!f.engine.filePassesDateFilter(f.desktopItem("january", 30 * 86400)));
}

void tst_TidyEngine::manualTidyOfAMixedDesktop()
{
    EngineFixture f;
    f.load();
    f.data.setGrowlFileMoved(true);
    f.desktopItem("a.txt", 60, "alpha");
    f.desktopItem("Folder/inside.txt", 60);
    f.setAge(f.sandbox.desktop() + "/Folder", 60);
    f.desktopItem(".hidden", 60);
    const QString kept = f.desktopItem("kept.txt", 60);
    f.data.addIgnoreFiles({kept});
    QFile::link("a.txt", f.sandbox.desktop() + "/link");
    f.setAge(f.sandbox.desktop() + "/link", 60);
    f.desktopItem("writing.iso", 2);
    int broadcasts = 0;
    f.notifications.observe(NotificationCenter::TidyComplete, this,
                            [&](const QVariant &) { ++broadcasts; });
    QSignalSpy finished(&f.engine, &Brevano::tidyPassFinished);

    // The look ahead (what tidy --dry-run prints) sees what the pass will do,
    // and nothing happens while it looks.
    QStringList planned;
    f.engine.forEachTidyItem(
        false, [&](const QString &entry, quint32 verdict, const ItemInfo::Facts &) {
            planned.append(ShadowDesktopPaths::lastPathComponent(entry) +
                           (verdict == CandidateSelector::CandidateDeferred ? " later" : ""));
        });
    planned.sort(Qt::CaseInsensitive);
    QCOMPARE(planned, (QStringList{"a.txt", "Folder", "link", "writing.iso later"}));
    QVERIFY(f.notifier.m_delivered.isEmpty());
    QVERIFY(!f.engine.hasPendingRetry());
    QCOMPARE(f.shadowEntries(), QStringList{});

    f.engine.performManualTidy();
    QCOMPARE(f.shadowEntries(), (QStringList{"a.txt", "Folder", "link"}));
    QCOMPARE(f.desktopEntries(), (QStringList{".hidden", "kept.txt", "writing.iso"}));
    QVERIFY(QFileInfo(f.sandbox.shadowDesktop() + "/link").isSymLink());
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/a.txt"), QStringLiteral("alpha"));
    QCOMPARE(finished.takeFirst(), (QVariantList{qint64(3), qint64(4)}));
    QCOMPARE(broadcasts, 1);
    const QStringList ids = f.notifier.identifiers();
    QCOMPARE(ids.first(), QStringLiteral("ManualStart"));
    QCOMPARE(ids.count("MovedFile"), 3);
    QCOMPARE(ids.count("SkippingFile"), 1);
    QCOMPARE(ids.last(), QStringLiteral("TidyComplete"));
    QCOMPARE(f.notifier.m_delivered.last().text,
             QStringLiteral("Moved 3 of 4 items found to Shadow Desktop"));
    QVERIFY(f.notifier.m_delivered.at(ids.indexOf("MovedFile")).text.startsWith("Moved file '"));
    // The manual tidy restarted the check timer.
    QCOMPARE(f.engine.nextCheckDate(), f.scheduler.now().addSecs(61));
}

void tst_TidyEngine::nothingToMove()
{
    EngineFixture f;
    f.load();
    f.desktopItem(".only-hidden", 600);
    QSignalSpy skipped(&f.engine, &Brevano::tidySkipped);
    f.engine.performManualTidy();
    QCOMPARE(skipped.count(), 1);
    QVERIFY(f.notifier.m_delivered.isEmpty()); // "only if files" is on by default
    f.data.setGrowlBeforeTidyOnlyIfFiles(false);
    f.engine.performManualTidy();
    QCOMPARE(f.notifier.identifiers(), QStringList{"TidySkipped"});
    QCOMPARE(f.desktopEntries(), QStringList{".only-hidden"});
}

void tst_TidyEngine::changingItemsAreRetried()
{
    EngineFixture f;
    f.load();
    f.data.setGrowlFileMoved(true);
    const QString download = f.desktopItem("download.part", 1);
    f.engine.performManualTidy();
    QCOMPARE(f.notifier.m_delivered.last().text,
             QStringLiteral("Moved 0 of 1 items found to Shadow Desktop"));
    QVERIFY(f.engine.hasPendingRetry());
    f.notifier.m_delivered.clear();

    // Still being written at the retry: silent, and armed again.
    f.scheduler.advance(29s);
    f.setAge(download, 1);
    f.scheduler.advance(1s);
    QCOMPARE(f.notifier.identifiers(), (QStringList{"TidyComplete"}));
    QVERIFY(f.engine.hasPendingRetry());
    QVERIFY(f.engine.isRepeatTidy());
    // Settled: the next retry moves it, with the per-file and completion notices.
    f.scheduler.advance(30s);
    QCOMPARE(f.shadowEntries(), QStringList{"download.part"});
    QCOMPARE(f.notifier.identifiers().mid(1), (QStringList{"MovedFile", "TidyComplete"}));
    QVERIFY(!f.engine.hasPendingRetry());
}

void tst_TidyEngine::overwriteModes()
{
    EngineFixture f;
    f.load();
    QDir().mkpath(f.sandbox.shadowDesktop());
    const auto clash = [&](const QByteArray &desktop) {
        f.sandbox.write(".local/share/Brevano/Shadow Desktop/Notes.txt", "older");
        f.desktopItem("Notes.txt", 60, desktop);
    };
    clash("mode 3");
    f.engine.performManualTidy(); // keep both by default
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/Notes 2.txt"), QStringLiteral("mode 3"));
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/Notes.txt"), QStringLiteral("older"));

    f.data.setOverwriteMode(1);
    clash("mode 1");
    f.engine.performManualTidy();
    QCOMPARE(readAll(f.sandbox.desktop() + "/Notes.txt"), QStringLiteral("mode 1"));
    QCOMPARE(f.notifier.identifiers().last(2), (QStringList{"MoveFailed", "TidyComplete"}));

    f.data.setOverwriteMode(2); // the replaced item goes to the Trash
    f.engine.performManualTidy();
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/Notes.txt"), QStringLiteral("mode 1"));
    QCOMPARE(readAll(f.sandbox.home() + "/.local/share/Trash/files/Notes.txt"),
             QStringLiteral("older"));

    f.data.setOverwriteMode(7); // moves nothing, counts as failed
    f.desktopItem("Other.txt", 60);
    f.engine.performManualTidy();
    QCOMPARE(f.notifier.m_delivered.last().text,
             QStringLiteral("Moved 0 of 1 items found to Shadow Desktop"));
    QVERIFY(QFileInfo::exists(f.sandbox.desktop() + "/Other.txt"));
}

void tst_TidyEngine::keepBothSurvivesAClashRace()
{
    EngineFixture f;
    f.load();
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/Report.pdf", "first");
    f.desktopItem("Report.pdf", 60, "mine");
    // Another program takes the chosen name just before the move.
    int races = 0;
    f.engine.mover().setBeforeMoveHookForTesting([&](const QString &chosen) {
        if (races++ == 0)
            f.sandbox.write(chosen.mid(f.sandbox.home().size() + 1), "theirs");
    });
    f.engine.performManualTidy();
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/Report.pdf"), QStringLiteral("first"));
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/Report 2.pdf"), QStringLiteral("theirs"));
    QCOMPARE(readAll(f.sandbox.shadowDesktop() + "/Report 3.pdf"), QStringLiteral("mine"));
    QVERIFY(f.desktopEntries().isEmpty());
}

// A Shadow Desktop on another file system: items are copied, and what is
// written into them meanwhile stays where it was, tidying and restoring alike.
void tst_TidyEngine::whatChangesDuringACopyStays()
{
    TmpfsMount other;
    REQUIRE_TMPFS(other);
    EngineFixture f;
    f.load();
    const QString shadow = f.shadowDesktopIn(other.path());
    f.desktopItem("Folder/a.txt", 600);
    f.setAge(f.sandbox.desktop() + "/Folder", 600);
    f.sandbox.write("Back/b.txt", "b");
    QVERIFY(FileMover::move(f.sandbox.home() + "/Back", shadow + "/Back").moved());
    FileMover::setFaultHookForTesting([](const QString &stage, const QString &path) {
        QFile late(path + "/late.txt");
        return stage != u"copied" || late.open(QIODevice::WriteOnly);
    });
    QSignalSpy processed(&f.engine, &Brevano::tidyItemProcessed);
    MoveJournal journal(f.sandbox.home() + "/Brevano.journal");
    QVERIFY(journal.open(0ms));
    f.engine.setJournal(&journal);
    f.engine.performManualTidy();
    f.engine.setJournal(nullptr);
    // Recorded as split, with where the copy went and what it is.
    const MoveJournal::Item split = journal.run(journal.runs().constLast().id)->items.value(0);
    QCOMPARE(split.status, MoveJournal::ItemStatus::Incomplete);
    QCOMPARE(split.targetIdentity, MoveJournal::Identity::of(shadow + "/Folder"));
    QCOMPARE(processed.first().at(1).value<Brevano::ItemResult>(), Brevano::ItemResult::Failed);
    QVERIFY2(processed.first().at(3).toString().contains("Folder/late.txt"),
             qPrintable(processed.first().at(3).toString()));
    QCOMPARE(f.notifier.m_delivered.at(1).text,
             QStringLiteral("File 'Folder' could not be moved to Shadow Desktop"));
    QCOMPARE(f.notifier.m_delivered.last().text,
             QStringLiteral("Moved 0 of 1 items found to Shadow Desktop"));
    QCOMPARE(fingerprint(f.sandbox.desktop() + "/Folder").keys(), (QStringList{".", "/late.txt"}));
    QCOMPARE(readAll(shadow + "/Folder/a.txt"), QStringLiteral("x"));

    QVERIFY(!f.engine.restoreItemAtPath(shadow + "/Back", true));
    QCOMPARE(readAll(f.sandbox.desktop() + "/Back/b.txt"), QStringLiteral("b"));
    QCOMPARE(fingerprint(shadow + "/Back").keys(), (QStringList{".", "/late.txt"}));
}

void tst_TidyEngine::replaceNeverLosesTheOldItem()
{
    TmpfsMount other;
    REQUIRE_TMPFS(other);
    EngineFixture f;
    f.load();
    const QString shadow = f.shadowDesktopIn(other.path());
    f.data.setOverwriteMode(2);
    QFile older(shadow + "/Notes.txt");
    QVERIFY(older.open(QIODevice::WriteOnly) && older.write("older") == 5);
    older.close();
    f.desktopItem("Notes.txt", 60, "newer");
    const auto allEntries = [](const QString &folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                      QDir::Name);
    };
    // The copy into the Shadow Desktop fails: both stay where they were.
    FileMover::setFaultHookForTesting(
        [](const QString &stage, const QString &) { return stage != u"copied"; });
    f.engine.performManualTidy();
    QCOMPARE(readAll(f.sandbox.desktop() + "/Notes.txt"), QStringLiteral("newer"));
    QCOMPARE(allEntries(shadow), QStringList{"Notes.txt"});
    QCOMPARE(readAll(shadow + "/Notes.txt"), QStringLiteral("older"));
    QCOMPARE(allEntries(other.path() + "/.Trash-" + QString::number(::getuid()) + "/files"),
             QStringList{});
    QVERIFY(f.notifier.identifiers().contains("MoveFailed"));

    // The move lands but the Trash refuses the old item: it stays, under a visible name.
    FileMover::setFaultHookForTesting({});
    const QString trash = other.path() + "/.Trash-" + QString::number(::getuid());
    QDir(trash).removeRecursively();
    QFile blocker(trash); // where that trash would be, a file
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    QSignalSpy processed(&f.engine, &Brevano::tidyItemProcessed);
    f.engine.performManualTidy();
    QCOMPARE(allEntries(shadow), (QStringList{"Notes 2.txt", "Notes.txt"}));
    QCOMPARE(readAll(shadow + "/Notes.txt"), QStringLiteral("newer"));
    QCOMPARE(readAll(shadow + "/Notes 2.txt"), QStringLiteral("older"));
    QCOMPARE(processed.first().at(1).value<Brevano::ItemResult>(), Brevano::ItemResult::Moved);
    QVERIFY(processed.first().at(3).toString().contains("kept as Notes 2.txt"));

    // The copy lands while the Desktop item changes: that is a failure, so the
    // item it would have replaced is kept beside it, not trashed.
    QVERIFY(QFile::remove(trash));
    f.desktopItem("Notes.txt", 60, "newest");
    FileMover::setFaultHookForTesting([](const QString &stage, const QString &path) {
        QFile source(path);
        if (stage == u"entry copied" && source.open(QIODevice::Append))
            source.write("!");
        return true;
    });
    processed.clear();
    f.engine.performManualTidy();
    QCOMPARE(allEntries(shadow), (QStringList{"Notes 2.txt", "Notes 3.txt", "Notes.txt"}));
    QCOMPARE(readAll(shadow + "/Notes 3.txt"), QStringLiteral("newer"));
    QCOMPARE(readAll(f.sandbox.desktop() + "/Notes.txt"), QStringLiteral("newest!"));
    QCOMPARE(processed.first().at(1).value<Brevano::ItemResult>(), Brevano::ItemResult::Failed);
}

// Names are bytes: one that is not UTF-8 is tidied, restored and trashed like any other.
void tst_TidyEngine::namesThatAreNotUtf8()
{
    EngineFixture f;
    f.load();
    f.data.setGrowlFileMoved(true);
    const QByteArray name = "caf\xe9.txt"; // Latin-1
    const QByteArray desktop = FileNames::encode(f.sandbox.desktop()) + '/' + name;
    const QByteArray shadow = FileNames::encode(f.sandbox.shadowDesktop()) + '/' + name;
    const auto exists = [](const QByteArray &path) {
        struct stat info;
        return ::lstat(path.constData(), &info) == 0;
    };
    const int file = ::open(desktop.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    QVERIFY(file >= 0);
    ::close(file);
    f.setAge(FileNames::decode(desktop), 600);

    f.engine.performManualTidy();
    QVERIFY(exists(shadow) && !exists(desktop));
    QCOMPARE(f.notifier.m_delivered.at(1).text,
             QString::fromUtf8("Moved file 'caf\xef\xbf\xbd.txt' to Shadow Desktop"));
    QCOMPARE(f.notifier.m_delivered.last().text,
             QStringLiteral("Moved 1 of 1 items found to Shadow Desktop"));

    // Restored and ignored; the entry survives the data file and is honoured.
    QVERIFY(f.engine.restoreItemAtPath(FileNames::decode(shadow), true));
    QVERIFY(exists(desktop) && !exists(shadow));
    QVERIFY(f.data.saveDataFile());
    f.load();
    f.engine.performManualTidy();
    QVERIFY(exists(desktop) && !exists(shadow));
    f.data.removeIgnoreFile(FileNames::decode(desktop));
    f.engine.performManualTidy();
    QVERIFY(f.engine.deleteItemAtPath(FileNames::decode(shadow)));
    const QByteArray trash = FileNames::encode(f.sandbox.home()) + "/.local/share/Trash/";
    QVERIFY(exists(trash + "files/" + name));
    QFile info;
    QVERIFY(info.open(::open(trash + "info/" + name + ".trashinfo", O_RDONLY), QIODevice::ReadOnly,
                      QFileDevice::AutoCloseHandle));
    QVERIFY(info.readAll().contains("\nPath=" + shadow.toPercentEncoding("/") + '\n'));
    // QTemporaryDir could not remove them.
    ::unlink(trash + "files/" + name);
    ::unlink(trash + "info/" + name + ".trashinfo");
}

void tst_TidyEngine::scheduledTidyAnnouncesAndCanBePostponed()
{
    EngineFixture f;
    f.load();
    f.desktopItem("a.txt", 600);
    f.engine.performTidyFromRequest(Brevano::TidyRequestScheduled); // disabled: nothing at all
    QVERIFY(f.notifier.m_delivered.isEmpty());
    QVERIFY(!f.engine.hasPendingTidy());

    f.engine.setEnabled(true);
    f.engine.performTidyFromRequest(Brevano::TidyRequestScheduled);
    QCOMPARE(f.notifier.identifiers(), QStringList{"ScheduledStart"});
    f.scheduler.advance(9s);
    f.notifier.activateListed(); // "Click here to postpone"
    f.scheduler.advance(5s);
    QCOMPARE(f.desktopEntries(), QStringList{"a.txt"});
    QCOMPARE(f.notifier.m_delivered.size(), 1);

    f.engine.performTidyFromRequest(Brevano::TidyRequestScheduled);
    f.scheduler.advance(9999ms);
    QCOMPARE(f.desktopEntries(), QStringList{"a.txt"});
    f.scheduler.advance(1ms); // unclicked: moves after ten seconds
    QVERIFY(f.desktopEntries().isEmpty());
    f.notifier.activateListed(); // too late: nothing further
    QVERIFY(!f.engine.hasPendingTidy());

    // An action the engine does not have does nothing.
    f.engine.userNotificationActivated({{"ActionSelector", "formatDisk:"}});
    f.engine.userNotificationActivated({});
}

void tst_TidyEngine::checkTimerSchedule()
{
    EngineFixture f;
    f.load();
    const QDateTime start = f.scheduler.now();
    f.scheduler.advance(61s); // disabled: the check moves on, "LastTidy" stays
    QCOMPARE(f.engine.nextCheckDate(), start.addSecs(122));
    QCOMPARE(f.data.getLastTidyTime().toSecsSinceEpoch(), 0);

    f.engine.setEnabled(true);
    f.scheduler.advance(61s); // no "LastTidy" yet: due at once
    QCOMPARE(f.data.getLastTidyTime(), start.addSecs(122));
    QCOMPARE(f.notifier.identifiers(), QStringList{}); // nothing on the Desktop, skipped quietly

    f.data.setTidyFrequency(4); // hourly
    f.data.setLastTidyTime(f.scheduler.now().addSecs(-58 * 60));
    const QDateTime last = f.data.getLastTidyTime();
    f.scheduler.advance(61s);
    QCOMPARE(f.data.getLastTidyTime(), last);
    f.scheduler.advance(61s);
    QCOMPARE(f.data.getLastTidyTime(), f.scheduler.now());

    // A manual tidy restarts the phase but leaves "LastTidy".
    f.scheduler.advance(30s);
    f.engine.performManualTidy();
    QCOMPARE(f.engine.nextCheckDate(), f.scheduler.now().addSecs(61));
    QCOMPARE(f.engine.getEarliestTidyDate(), f.data.getLastTidyTime().addSecs(3600));

    f.data.setTidyFrequency(99); // no period: every tick is due
    f.scheduler.advance(61s);
    QCOMPARE(f.data.getLastTidyTime(), f.scheduler.now());
    f.scheduler.advance(61s);
    QCOMPARE(f.data.getLastTidyTime(), f.scheduler.now());
}

void tst_TidyEngine::operationModeAndMasterSwitch()
{
    EngineFixture f;
    f.load();
    f.desktopItem("a.txt", 600);
    int broadcasts = 0;
    f.notifications.observe(NotificationCenter::TidyComplete, this,
                            [&](const QVariant &) { ++broadcasts; });
    f.data.setOperationMode(1);
    f.engine.performManualTidy();
    QCOMPARE(f.desktopEntries(), QStringList{"a.txt"});
    QCOMPARE(f.notifier.identifiers(), QStringList{"ManualStart"});
    QCOMPARE(broadcasts, 1);

    f.data.setOperationMode(0);
    f.data.setGrowlEnabled(false); // the master switch silences everything
    f.data.setGrowlFileMoved(true);
    f.data.setGrowlBeforeTidyOnlyIfFiles(false);
    f.desktopItem("b.txt", 2);
    f.engine.performManualTidy();
    f.engine.performManualTidy();
    f.engine.deleteShadowDesktopContents();
    QCOMPARE(f.notifier.identifiers(), QStringList{"ManualStart"});
}

void tst_TidyEngine::desktopThatIsHomeIsNeverTidied()
{
    EngineFixture f;
    f.sandbox.write(".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/\"\n");
    f.load();
    f.desktopItem("../Documents.txt", 600);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("not tidying"));
    QVERIFY(f.engine.desktopEntries().isEmpty());
    f.data.setGrowlBeforeTidyOnlyIfFiles(false);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("not tidying"));
    f.engine.performManualTidy();
    QVERIFY(QFileInfo::exists(f.sandbox.home() + "/Documents.txt"));

    // A Shadow Desktop kept on the Desktop is not moved into itself.
    EngineFixture g;
    g.load();
    QDir().mkpath(g.sandbox.desktop() + "/Tidied");
    g.data.setShadowDesktopPath(g.sandbox.desktop() + "/Tidied");
    g.desktopItem("a.txt", 600);
    g.setAge(g.sandbox.desktop() + "/Tidied", 600);
    g.engine.performManualTidy();
    QCOMPARE(g.desktopEntries(), QStringList{"Tidied"});
    QVERIFY(QFileInfo::exists(g.sandbox.desktop() + "/Tidied/a.txt"));
}

void tst_TidyEngine::restoreDeleteEmpty()
{
    EngineFixture f;
    f.load();
    const QString shadow = f.sandbox.shadowDesktop();
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/a.txt", "shadow");
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/Sub/b.txt", "b");
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/c.txt", "c");
    f.desktopItem("a.txt", 60, "desktop");

    QVERIFY(!f.engine.restoreItemAtPath(shadow + "/a.txt", true)); // clash: both stay
    QCOMPARE(readAll(f.sandbox.desktop() + "/a.txt"), QStringLiteral("desktop"));
    QCOMPARE(readAll(shadow + "/a.txt"), QStringLiteral("shadow"));
    QVERIFY(!f.engine.restoreItemAtPath(shadow + "/Sub/b.txt", false)); // not in the root
    QVERIFY(f.engine.restoreItemAtPath(shadow + "/c.txt", true));
    QVERIFY(f.data.shouldIgnoreFile(f.sandbox.desktop() + "/c.txt")); // the Desktop path
    QVERIFY(!f.data.shouldIgnoreFile(shadow + "/c.txt"));

    QFile::remove(f.sandbox.desktop() + "/a.txt");
    f.engine.restoreAllFiles(false);
    QCOMPARE(f.shadowEntries(), QStringList{});
    QCOMPARE(f.desktopEntries(), (QStringList{"a.txt", "c.txt", "Sub"}));
    QVERIFY(!f.data.shouldIgnoreFile(f.sandbox.desktop() + "/a.txt"));

    f.sandbox.write(".local/share/Brevano/Shadow Desktop/d.txt", "d");
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/.e", "e");
    QVERIFY(f.engine.deleteItemAtPath(shadow + "/d.txt"));
    QVERIFY(!f.engine.deleteItemAtPath(shadow + "/d.txt"));
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/f", "f");
    f.engine.deleteShadowDesktopContents();
    QCOMPARE(f.shadowEntries(), QStringList{});
    QVERIFY(QFileInfo(shadow).isDir()); // the folder itself stays
    QCOMPARE(QDir(f.sandbox.home() + "/.local/share/Trash/files")
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
             (QStringList{".e", "d.txt", "f"}));
    f.engine.deleteShadowDesktopContents(); // empty already: still reported
    QCOMPARE(f.notifier.identifiers(), (QStringList{"EmptyComplete", "EmptyComplete"}));
    QCOMPARE(f.notifier.m_delivered.last().text,
             QStringLiteral("The contents of the Shadow Desktop have been moved to the trash"));
}

void tst_TidyEngine::folderSizeAndMenuActions()
{
    EngineFixture f;
    f.load();
    const QString shadow = f.sandbox.shadowDesktop();
    writeSizedTree(f.sandbox, ".local/share/Brevano/Shadow Desktop");
    QCOMPARE(f.engine.getFolderSize(shadow, std::nullopt), quint64(1043));
    QCOMPARE(f.engine.getFolderSize(shadow, f.scheduler.now()), quint64(1043));
    QCOMPARE(f.engine.getFolderSize(shadow + "/one", std::nullopt), quint64(1000));
    QCOMPARE(f.engine.getFolderSize(shadow, f.scheduler.now().addMSecs(-501)),
             quint64(0)); // gave up
    QCOMPARE(f.engine.getFolderSize(shadow + "/missing", std::nullopt), quint64(0));
    QVERIFY(f.engine.humanReadableFileType(shadow + "/one").size() > 0);

    f.engine.menuItemPressed(Brevano::RevealFolderTag, shadow + "/Sub");
    f.engine.menuItemPressed(Brevano::OpenTag, shadow + "/one");
    f.engine.menuItemPressed(Brevano::RevealTag, shadow + "/one");
    f.engine.menuItemPressed(42, shadow + "/one");
    QCOMPARE(f.fileViewer.m_calls,
             (QStringList{"openFolder " + shadow + "/Sub", "open " + shadow + "/one",
                          "reveal " + shadow + "/one"}));
    f.engine.menuItemPressed(Brevano::RestoreTag, shadow + "/one");
    QVERIFY(f.data.shouldIgnoreFile(f.sandbox.desktop() + "/one"));
    // Delete: to the Trash; when that fails, back to the Desktop instead.
    f.engine.menuItemPressed(Brevano::DeleteTag, shadow + "/link");
    QVERIFY(QFileInfo(f.sandbox.home() + "/.local/share/Trash/files/link").isSymLink());
    QDir(f.sandbox.home() + "/.local/share/Trash/info").removeRecursively(); // the Trash breaks
    f.sandbox.write(".local/share/Trash/info", "not a folder");
    f.engine.menuItemPressed(Brevano::DeleteTag, shadow + "/Sub");
    QVERIFY(QFileInfo(f.sandbox.desktop() + "/Sub").isDir());
    QVERIFY(!f.engine.isOptionPressed());
    f.modifierKeys.m_option = true;
    QVERIFY(f.engine.isOptionPressed());
}

void tst_TidyEngine::aLinkedShadowDesktopIsFollowedOnce()
{
    EngineFixture f;
    f.load();
    const QString real = f.sandbox.home() + "/Real";
    writeSizedTree(f.sandbox, "Real");
    const QString linked = f.sandbox.home() + "/Shadow Desktop link";
    QVERIFY(QFile::link(real, linked));
    f.data.setShadowDesktopPath(linked);
    QCOMPARE(f.engine.getFolderSize(linked, std::nullopt), quint64(1043));
    QCOMPARE(f.engine.getFolderSize(linked, f.scheduler.now()), quint64(1043));

    // Restored and emptied through the link, which stays.
    f.engine.restoreAllFiles(false);
    QCOMPARE(f.desktopEntries(), (QStringList{"one", "Sub"}));
    QVERIFY(QFileInfo(f.sandbox.desktop() + "/link").isSymLink()); // dangling: not listed
    f.sandbox.write("Real/three", "3");
    f.engine.deleteShadowDesktopContents();
    QVERIFY(QDir(real).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    QVERIFY(QFileInfo(linked).isSymLink());
    QCOMPARE(readAll(f.sandbox.home() + "/.local/share/Trash/files/three"), QStringLiteral("3"));

    // Linked to a folder on the Desktop, that folder is never tidied into itself.
    QDir().mkpath(f.sandbox.desktop() + "/Tidied");
    QFile::remove(linked);
    QVERIFY(QFile::link(f.sandbox.desktop() + "/Tidied", linked));
    QVERIFY(!f.engine.desktopEntries().contains(f.sandbox.desktop() + "/Tidied"));
    QVERIFY(f.engine.desktopEntries().contains(f.sandbox.desktop() + "/one"));
}

QTEST_GUILESS_MAIN(tst_TidyEngine)
#include "tst_TidyEngine.moc"

// Each tidy, restore, trashing and drop is a run of the journal; a tidy's moves
// are all on disk before the first one starts.
void tst_TidyEngine::everyRunIsJournaled()
{
    using Status = MoveJournal::ItemStatus;
    EngineFixture f;
    f.load();
    MoveJournal journal(f.sandbox.home() + "/Brevano.journal");
    QVERIFY(journal.open(0ms));
    f.engine.setJournal(&journal);
    f.data.setOverwriteMode(3);
    const QString shadow = f.sandbox.shadowDesktop();
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/Report.pdf", "first");
    const QString report = f.desktopItem("Report.pdf", 60, "mine");
    const QString folder = f.desktopItem("Folder/a.txt", 600).section('/', 0, -2);
    f.setAge(folder, 600);
    const QString fresh = f.desktopItem("fresh.txt", 2);
    std::optional<MoveJournal::Run> onDisk;
    QByteArray written;
    f.engine.mover().setBeforeMoveHookForTesting([&](const QString &) {
        written = readAll(f.sandbox.home() + "/Brevano.journal").toUtf8();
        onDisk = journal.run(journal.runs().constLast().id);
    });
    f.engine.performManualTidy();

    QVERIFY(written.contains("/Report.pdf\t"));
    QVERIFY(onDisk);
    QCOMPARE(onDisk->items.size(), 3);
    for (const MoveJournal::Item &item : std::as_const(onDisk->items)) {
        if (item.source == report)
            QCOMPARE(item.status, Status::Pending);
        QCOMPARE(item.source == fresh, item.status == Status::Deferred);
    }
    const std::optional<MoveJournal::Run> tidy = journal.run(journal.runs().constLast().id);
    QCOMPARE(tidy->kind, MoveJournal::RunKind::Tidy);
    QCOMPARE(tidy->detail, QStringLiteral("manual"));
    QVERIFY(tidy->ended.isValid());
    QCOMPARE(std::tuple(tidy->moved, tidy->failed, tidy->deferred), std::tuple(2, 0, 1));
    QHash<QString, MoveJournal::Item> items;
    for (const MoveJournal::Item &item : std::as_const(tidy->items))
        items.insert(item.source, item);
    QCOMPARE(items.value(report).target, shadow + "/Report 2.pdf");
    QCOMPARE(items.value(report).targetIdentity,
             MoveJournal::Identity::of(shadow + "/Report 2.pdf"));
    QCOMPARE(items.value(folder).target, shadow + "/Folder");
    QCOMPARE(items.value(report).sourceIdentity, items.value(report).targetIdentity);

    {
        const Brevano::Batch batch(f.engine, MoveJournal::RunKind::Restore);
        QVERIFY(f.engine.restoreItemAtPath(shadow + "/Report 2.pdf", false));
        QVERIFY(f.engine.restoreItemAtPath(shadow + "/Folder", false));
    }
    QVERIFY(f.engine.deleteItemAtPath(shadow + "/Report.pdf"));
    {
        // The items of one drop are one run.
        DroppedItemsMover mover(&Brevano::doMoveFileFromWithoutReplacing);
        QSignalSpy dropped(&mover, &DroppedItemsMover::finished);
        mover.add({{f.sandbox.desktop() + "/Folder", shadow + "/Folder"},
                   {f.desktopItem("dropped.txt"), shadow + "/dropped.txt"}},
                  &journal);
        QVERIFY(dropped.wait());
    }
    QList<MoveJournal::Run> runs = journal.runs();
    QCOMPARE(runs.size(), 4);
    QCOMPARE(runs[1].kind, MoveJournal::RunKind::Restore);
    QCOMPARE(runs[1].moved, 2);
    const std::optional<MoveJournal::Run> trashed = journal.run(runs[2].id);
    QCOMPARE(trashed->kind, MoveJournal::RunKind::Trash);
    QCOMPARE(trashed->items.value(0).status, Status::Moved);
    QVERIFY(trashed->items.value(0).target.startsWith(FreedesktopTrash::homeTrash()));
    QCOMPARE(runs[3].kind, MoveJournal::RunKind::Drop);
    QCOMPARE(runs[3].moved, 2);
    QVERIFY(runs[3].ended.isValid());

    f.engine.setJournal(nullptr);

    // What moves nothing leaves no run: an empty batch, a pass that only defers.
    EngineFixture g;
    g.load();
    MoveJournal quiet(g.sandbox.home() + "/Brevano.journal");
    QVERIFY(quiet.open(0ms));
    g.engine.setJournal(&quiet);
    {
        const Brevano::Batch nothing(g.engine, MoveJournal::RunKind::Restore);
    }
    g.desktopItem("fresh.txt", 2);
    g.engine.performManualTidy();
    QVERIFY(QFile::exists(g.sandbox.desktop() + "/fresh.txt"));
    QVERIFY(quiet.runs().isEmpty());
    QVERIFY(!g.notifier.identifiers().contains("TidyNotRecorded"));

    // A tidy the journal cannot record still moves, and says it cannot be undone.
    MoveJournal unwritable(g.sandbox.write("file", "not a folder") + "/Brevano.journal");
    g.engine.setJournal(&unwritable);
    g.desktopItem("old.txt");
    g.engine.performManualTidy();
    QVERIFY(!QFile::exists(g.sandbox.desktop() + "/old.txt"));
    QVERIFY(g.notifier.identifiers().contains("TidyNotRecorded"));
    g.engine.setJournal(nullptr);
}
