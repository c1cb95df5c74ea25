#include "CommandLine.h"
#include "EngineFixture.h"
#include "FileStat.h"
#include "FileTree.h"
#include "JournalFixture.h"
#include "TidyUndo.h"

#include <QScopeGuard>
#include <QtTest>

#include <cstdio>
#include <unistd.h>

namespace {

struct CommandResult
{
    int status = -1;
    QString out;
    QString err;
};

CommandResult runCommand(EngineFixture &f, const QStringList &args)
{
    CommandResult result;
    QTextStream out(&result.out), err(&result.err);
    CommandLine commandLine(f.data, f.engine, out, err);
    commandLine.setStoreIsLive(true);
    result.status = commandLine.run(args);
    out.flush();
    err.flush();
    return result;
}

} // namespace

class tst_TidyUndo : public QObject
{
    Q_OBJECT
private slots:
    void undoPutsBackWhatIsStillWhereTheTidyPutIt();
    void anUndoCutShortLeavesTheRestToUndo();
    void historyAndUndoOnTheCommandLine();
};

void tst_TidyUndo::undoPutsBackWhatIsStillWhereTheTidyPutIt()
{
    EngineFixture f;
    f.load();
    JournalFixture j;
    const QString desktop = f.sandbox.desktop();
    const QString shadow = f.sandbox.shadowDesktop();
    QDir().mkpath(shadow);
    f.sandbox.write("Desktop/Folder/inner/x.txt", "x");
    QVERIFY(QFile::link("inner/x.txt", desktop + "/Folder/link"));
    const QString notUtf8 = FileNames::decode(QFile::encodeName(desktop) + "/caf\xe9.txt");
    const int fd = ::open(FileNames::encode(notUtf8).constData(), O_CREAT | O_WRONLY, 0644);
    QVERIFY(fd >= 0);
    ::close(fd);
    // QTemporaryDir cannot remove a name that is not UTF-8: the sandbox goes
    // only once it is gone, wherever the test stopped.
    const auto removeNotUtf8 = qScopeGuard([&] {
        for (const QString &folder : {desktop, shadow})
            ::unlink(FileNames::encode(folder + "/" + notUtf8.mid(desktop.size() + 1)).constData());
    });
    for (const QString path : {"/Folder/inner/x.txt", "/Folder/inner", "/Folder/link", "/Folder"})
        f.setAge(desktop + path, 3600);
    f.setAge(notUtf8, 3600);
    const auto folder = fingerprint(desktop + "/Folder");
    for (const QString name : {"a.txt", "b.txt", "c.txt", "d.txt"})
        f.desktopItem(name, 3600, name.toUtf8());
    f.engine.setJournal(&j.journal);
    f.engine.performManualTidy();
    QVERIFY(f.desktopEntries().isEmpty());
    const quint64 tidy = j.journal.runs().last().id;

    // Since the tidy: b's Desktop name was taken, c moved on, and d's Shadow
    // Desktop name went to another item.
    f.sandbox.write("Desktop/b.txt", "new b");
    QVERIFY(QFile::rename(shadow + "/c.txt", f.sandbox.home() + "/c.txt"));
    f.sandbox.write(".local/share/Brevano/Shadow Desktop/d.new", "another d");
    QCOMPARE(
        std::rename(QFile::encodeName(shadow + "/d.new"), QFile::encodeName(shadow + "/d.txt")), 0);

    TidyUndo undo(j.journal);
    QCOMPARE(undo.candidate()->id, tidy);
    QCOMPARE(undo.candidate()->moved, 6);
    const TidyUndo::Report report = undo.undoLastTidy(QDateTime::currentDateTimeUtc());
    // The Desktop's order, which the file system chooses.
    QStringList notThere = report.notThere;
    notThere.sort();
    QCOMPARE(notThere, QStringList({shadow + "/c.txt", shadow + "/d.txt"}));
    QCOMPARE(report.lines(),
             QStringList({"Put back 3 items on the Desktop.",
                          "Left 1 item in the Shadow Desktop: its name on the Desktop is taken: "
                          "“b.txt”",
                          "Skipped 2 items no longer where the tidy put them: “" +
                              report.notThere.join("”, “").remove(shadow + '/') + "”"}));
    QVERIFY(FileStat::exists(notUtf8));
    QCOMPARE(fingerprint(desktop + "/Folder"), folder);
    QCOMPARE(contents(desktop + "/a.txt"), "a.txt");
    QCOMPARE(contents(desktop + "/b.txt"), "new b");
    QCOMPARE(f.shadowEntries(), QStringList({"b.txt", "d.txt"}));
    QCOMPARE(contents(shadow + "/b.txt"), "b.txt");
    QCOMPARE(contents(shadow + "/d.txt"), "another d");

    // The undo is a run of its own, and the tidy is taken back once.
    const QList<MoveJournal::Run> runs = j.journal.runs();
    QCOMPARE(runs.last().kind, MoveJournal::RunKind::Undo);
    QCOMPARE(runs.last().detail, QString::number(tidy));
    QCOMPARE(runs.last().moved, 3);
    QCOMPARE(runs.last().skipped, 3);
    QVERIFY(runs.first().undone);
    QVERIFY(!undo.candidate());
    QCOMPARE(undo.undoLastTidy(QDateTime::currentDateTimeUtc()).lines(),
             QStringList{"There is nothing to undo."});
    QCOMPARE(f.shadowEntries(), QStringList({"b.txt", "d.txt"}));
}

void tst_TidyUndo::anUndoCutShortLeavesTheRestToUndo()
{
    using Status = MoveJournal::ItemStatus;
    using Identity = MoveJournal::Identity;
    EngineFixture f;
    f.load();
    JournalFixture j;
    MoveJournal &journal = j.journal;
    const QString desktop = f.sandbox.desktop();
    const QString shadow = f.sandbox.shadowDesktop();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    // A tidy that moved a, b and c, and left d split: what changed while it
    // was copied stayed on the Desktop.
    const quint64 tidy = journal.beginRun(MoveJournal::RunKind::Tidy, "manual", now);
    for (const QString name : {"a.txt", "b.txt", "c.txt", "d.txt"}) {
        const QString target =
            f.sandbox.write(".local/share/Brevano/Shadow Desktop/" + name, name.toUtf8());
        const quint32 seq = journal.addIntent(tidy, desktop + '/' + name, target, {});
        const bool split = name == "d.txt";
        if (split)
            f.desktopItem(name);
        journal.noteOutcome(tidy, seq, split ? Status::Incomplete : Status::Moved, target,
                            Identity::of(target), {});
    }
    journal.endRun(tidy, now);

    // An undo put a back and was cut short; a later start ended it.
    const quint64 cutShort =
        journal.beginRun(MoveJournal::RunKind::Undo, QString::number(tidy), now);
    const quint32 seq = journal.addIntent(cutShort, shadow + "/a.txt", desktop + "/a.txt",
                                          Identity::of(shadow + "/a.txt"));
    journal.sync();
    QVERIFY(QFile::rename(shadow + "/a.txt", desktop + "/a.txt"));
    journal.noteOutcome(cutShort, seq, Status::Moved, desktop + "/a.txt",
                        Identity::of(desktop + "/a.txt"), {});
    TidyUndo undo(journal);
    QCOMPARE(undo.candidate().value_or(MoveJournal::Run()).id, tidy);
    journal.endRun(cutShort, now, true);
    QCOMPARE(undo.candidate().value_or(MoveJournal::Run()).id, tidy);

    QCOMPARE(undo.undoLastTidy(now).lines(),
             QStringList({"Put back 2 items on the Desktop.",
                          "Left 1 item split between the Desktop and the Shadow Desktop (it "
                          "changed while being moved): “d.txt”"}));
    QCOMPARE(f.desktopEntries(), QStringList({"a.txt", "b.txt", "c.txt", "d.txt"}));
    QCOMPARE(f.shadowEntries(), QStringList{"d.txt"});
    QVERIFY(journal.runs().first().undone);
    QCOMPARE(undo.undoLastTidy(now).lines(), QStringList{"There is nothing to undo."});
}

void tst_TidyUndo::historyAndUndoOnTheCommandLine()
{
    EngineFixture f;
    f.load();
    JournalFixture j;
    f.engine.setJournal(&j.journal);
    const QString shadow = f.sandbox.shadowDesktop();
    QDir().mkpath(shadow);
    const QDateTime time(QDate(2025, 3, 14), QTime(8, 30), QTimeZone::utc());
    const QString a = f.desktopItem("a.txt");
    const quint64 tidy = j.recordTidy({a, f.desktopItem("b.txt")}, shadow, time);
    const quint64 restore = j.journal.beginRun(MoveJournal::RunKind::Restore, {}, time.addSecs(60));
    j.journal.endRun(restore, time.addSecs(60));
    const quint64 drop = j.journal.beginRun(MoveJournal::RunKind::Drop, {}, time.addSecs(120));
    const quint64 trash = j.journal.beginRun(MoveJournal::RunKind::Trash, {}, time.addSecs(180));
    j.journal.endRun(trash, time.addSecs(200), true);
    j.journal.sync();

    CommandResult r = runCommand(f, {"history"});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out, QStringLiteral("%1  2025-03-14 09:33  trash: moved 0, failed 0, deferred 0 "
                                   "(interrupted, recovered)\n"
                                   "%2  2025-03-14 09:32  drop: moved 0, failed 0, deferred 0 "
                                   "(interrupted)\n"
                                   "%3  2025-03-14 09:31  restore: moved 0, failed 0, deferred 0\n"
                                   "%4  2025-03-14 09:30  tidy (manual): moved 2, failed 0, "
                                   "deferred 0\n")
                        .arg(trash)
                        .arg(drop)
                        .arg(restore)
                        .arg(tidy));
    r = runCommand(f, {"history", QString::number(tidy)});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out.section(u'\n', 1, 1), QStringLiteral("  moved %1 -> %2/a.txt").arg(a, shadow));

    r = runCommand(f, {"undo"});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out, QStringLiteral("Put back 2 items on the Desktop.\n"));
    QVERIFY(!f.data.shouldIgnoreFile(a));
    r = runCommand(f, {"history", "--limit", "2"});
    QCOMPARE(r.out.count(u'\n'), 2);
    QVERIFY(
        r.out.section(u'\n', 0, 0)
            .contains(QStringLiteral("undo of run %1: moved 2, failed 0, deferred 0").arg(tidy)));
    QVERIFY(runCommand(f, {"history"}).out.endsWith(u"deferred 0 (undone)\n"));
    QCOMPARE(runCommand(f, {"undo"}).out, QStringLiteral("There is nothing to undo.\n"));

    // An item that stays fails the command.
    j.recordTidy({a}, shadow);
    f.desktopItem("a.txt");
    r = runCommand(f, {"undo"});
    QCOMPARE(r.status, 1);
    QVERIFY(r.out.startsWith(u"Left 1 item in the Shadow Desktop"));

    for (const QStringList &bad :
         {QStringList{"history", "--limit", "0"}, QStringList{"history", "--limit", "x"},
          QStringList{"history", "one"}, QStringList{"history", "1", "2"},
          QStringList{"undo", "now"}})
        QCOMPARE(runCommand(f, bad).status, 2);
    r = runCommand(f, {"history", "--limit"});
    QCOMPARE(r.status, 2);
    QCOMPARE(r.err, QStringLiteral("brevano: --limit needs a number\n"));
    r = runCommand(f, {"history", "99"});
    QCOMPARE(r.status, 1);
    QVERIFY(r.err.contains(u"no run 99"));
    f.engine.setJournal(nullptr);
    r = runCommand(f, {"undo"});
    QCOMPARE(r.status, 1);
    QCOMPARE(r.err, QStringLiteral("brevano: the move journal is not available\n"));
}

QTEST_GUILESS_MAIN(tst_TidyUndo)
#include "tst_TidyUndo.moc"
