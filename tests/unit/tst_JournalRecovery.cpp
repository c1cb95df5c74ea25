#include "FileTree.h"
#include "FreedesktopTrash.h"
#include "JournalObserver.h"
#include "JournalRecovery.h"
#include "MoveJournal.h"
#include "OverwriteMover.h"
#include "SandboxHome.h"
#include "TmpfsMount.h"

#include <QtTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Identity = MoveJournal::Identity;
using Status = MoveJournal::ItemStatus;

namespace {

const QDateTime kStart = QDateTime::currentDateTimeUtc();

// Our hidden names left in a folder.
QStringList hiddenNamesIn(const QString &folder)
{
    return QDir(folder).entryList({".brevano-*"}, QDir::AllEntries | QDir::Hidden | QDir::System);
}

// Moves source to target by mode in a child process that records the move in
// the journal as a tidy does and is killed (SIGKILL) where killAt("stage
// path") says: a FileMover stage, or "before move" once the item in the way
// is aside.
void killedWhileMoving(const QString &journalPath, const QString &source, const QString &target,
                       quint32 mode, const std::function<bool(const QString &)> &killAt)
{
    const pid_t child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        MoveJournal journal(journalPath);
        if (!journal.open(0ms))
            ::_exit(1);
        const quint64 run = journal.beginRun(MoveJournal::RunKind::Tidy, "manual", kStart);
        const quint32 seq = journal.addIntent(run, source, target, Identity::of(source));
        journal.sync();
        JournalObserver observer(&journal, run, seq);
        FileMover::setFaultHookForTesting([&](const QString &stage, const QString &path) {
            if (killAt(stage + ' ' + path))
                ::raise(SIGKILL);
            return true;
        });
        FreedesktopTrash trash;
        OverwriteMover mover(trash);
        mover.setBeforeMoveHookForTesting([&](const QString &) {
            if (killAt("before move"))
                ::raise(SIGKILL);
        });
        mover.move(source, target, mode);
        ::_exit(2);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY2(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "the move was not cut short");
}

// A run cut short after its intents were durable; notes(journal, run, seqs)
// adds what else happened to the items before the cut.
void cutShortRun(const QString &journalPath, const QList<QPair<QString, QString>> &moves,
                 const std::function<void(MoveJournal &, quint64, QList<quint32>)> &notes = {})
{
    MoveJournal journal(journalPath);
    QVERIFY(journal.open(0ms));
    const quint64 run = journal.beginRun(MoveJournal::RunKind::Tidy, "scheduled", kStart);
    QList<quint32> seqs;
    for (const auto &[source, target] : moves)
        seqs.append(journal.addIntent(run, source, target, Identity::of(source)));
    QVERIFY(journal.sync());
    if (notes)
        notes(journal, run, seqs);
}

// The next start: recovers, checks that every run was ended as recovered and
// that a second recovery finds nothing, and gives the items' outcomes by name.
struct Recovered
{
    JournalRecovery::Report report;
    QMap<QString, QPair<Status, QString>> outcomes; // source name -> status, where or why
    bool allEndedAsRecovered = true;
    bool secondFoundNothing = false;
};

Recovered recoverAtNextStart(const QString &journalPath, const QStringList &sweep)
{
    Recovered recovered;
    FreedesktopTrash trash;
    {
        MoveJournal journal(journalPath);
        if (!journal.open(0ms))
            qFatal("cannot open the journal");
        recovered.report = JournalRecovery(journal, trash).recover(sweep, kStart.addSecs(60));
        for (const MoveJournal::Run &summary : journal.runs()) {
            const MoveJournal::Run run = *journal.run(summary.id);
            recovered.allEndedAsRecovered &= !run.ended.isNull() && run.recovered;
            for (const MoveJournal::Item &item : run.items)
                recovered.outcomes.insert(
                    QFileInfo(item.source).fileName(),
                    {item.status, item.message.isEmpty() ? item.target : item.message});
        }
    }
    MoveJournal again(journalPath);
    recovered.secondFoundNothing =
        again.open(0ms) && JournalRecovery(again, trash).recover(sweep, kStart).isEmpty();
    return recovered;
}

} // namespace

class tst_JournalRecovery : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { FileMover::setFaultHookForTesting({}); }
    void movesAcrossFileSystemsCutShort();
    void movesWithinAFileSystemCutShort();
};

void tst_JournalRecovery::movesAcrossFileSystemsCutShort()
{
    TmpfsMount other;
    REQUIRE_TMPFS(other);
    SandboxHome sandbox;
    const QString journal = sandbox.home() + "/Brevano.journal";
    const QString desktop = sandbox.desktop();
    const QString shadow = other.path();

    // Killed in the middle of copying a folder into a folder (no sweep goes there).
    QVERIFY(QDir(shadow).mkpath("Projects"));
    sandbox.write("Desktop/Folder/a.txt", "alpha");
    sandbox.write("Desktop/Folder/sub/b.txt", "beta");
    const auto folder = fingerprint(desktop + "/Folder");
    killedWhileMoving(journal, desktop + "/Folder", shadow + "/Projects/Folder",
                      OverwriteMover::FailOnClash,
                      [&](const QString &at) { return at.endsWith("Folder/sub/b.txt"); });
    // Replacing: killed with the item in the way aside and the new one copied whole.
    sandbox.write("Desktop/Notes.txt", "new notes");
    QVERIFY(QFile::copy(sandbox.write("old notes", "old notes"), shadow + "/Notes.txt"));
    killedWhileMoving(journal, desktop + "/Notes.txt", shadow + "/Notes.txt",
                      OverwriteMover::Replace,
                      [&](const QString &at) { return at.startsWith("copied "); });
    QCOMPARE(hiddenNamesIn(shadow).size() + hiddenNamesIn(shadow + "/Projects").size(), 3);

    // Replacing, killed while removing the sources of two copies renamed into
    // place: one file of "Changed" was written to after it was copied.
    for (const QString name : {"Done", "Changed"}) {
        sandbox.write("Desktop/" + name + "/log.txt", "line 1\n");
        sandbox.write("Desktop/" + name + "/sub/kept.txt", "kept");
        sandbox.write("Desktop/" + name + "/sub/gone.txt", "gone");
    }
    const auto done = fingerprint(desktop + "/Done");
    const auto changed = fingerprint(desktop + "/Changed");
    cutShortRun(
        journal,
        {{desktop + "/Done", shadow + "/Done"}, {desktop + "/Changed", shadow + "/Changed"}},
        [&](MoveJournal &j, quint64 run, const QList<quint32> &seqs) {
            for (const quint32 seq : seqs) {
                const QString name = seq == seqs[0] ? "Done" : "Changed";
                const QString aside = shadow + "/.brevano-replaced-" + name;
                j.noteAside(run, seq, aside);
                QVERIFY(QFile::copy(sandbox.write("old", "old " + name.toUtf8()), aside));
                const QString partial = shadow + "/.brevano-partial-" + name;
                j.notePartial(run, seq, partial);
                QCOMPARE(QProcess::execute("cp", {"-a", desktop + '/' + name, partial}), 0);
                j.noteCopied(run, seq, partial, Identity::of(partial));
                QVERIFY(QDir().rename(partial, shadow + '/' + name));
                QVERIFY(QFile::remove(desktop + '/' + name + "/sub/gone.txt"));
            }
        });
    sandbox.write("Desktop/Changed/log.txt", "line 1\nline 2\n");

    const Recovered recovered = recoverAtNextStart(journal, {desktop, shadow});
    QVERIFY(recovered.allEndedAsRecovered && recovered.secondFoundNothing);
    const JournalRecovery::Report &report = recovered.report;
    QCOMPARE(report.runs, 3);
    QCOMPARE(report.partialsRemoved, 2);
    QCOMPARE(report.putBack, 2);
    QCOMPARE(report.finished, 2);
    QCOMPARE(report.trashed, 1);
    QCOMPARE(report.problems.size(), 1);
    QVERIFY2(report.problems.first().contains("Changed/log.txt"), qPrintable(report.line()));

    // Each item is in one place, whole: the cut-short ones where they were,
    // the finished ones moved, and what changed after its copy at the source.
    QCOMPARE(fingerprint(desktop + "/Folder"), folder);
    QVERIFY(!QFileInfo::exists(shadow + "/Projects/Folder"));
    QCOMPARE(contents(desktop + "/Notes.txt"), QByteArray("new notes"));
    QCOMPARE(contents(shadow + "/Notes.txt"), QByteArray("old notes"));
    QVERIFY(!QFileInfo::exists(desktop + "/Done"));
    QCOMPARE(fingerprint(shadow + "/Done"), done);
    QCOMPARE(fingerprint(shadow + "/Changed"), changed);
    // The item "Done" replaced went to the Trash; the one "Changed" would
    // have replaced stays beside it.
    QCOMPARE(contents(shadow + "/.Trash-" + QString::number(::getuid()) + "/files/Done"),
             QByteArray("old Done"));
    QCOMPARE(contents(shadow + "/Changed 2"), QByteArray("old Changed"));
    QCOMPARE(fingerprint(desktop + "/Changed").keys(), (QStringList{".", "/log.txt"}));
    QCOMPARE(contents(desktop + "/Changed/log.txt"), QByteArray("line 1\nline 2\n"));
    QCOMPARE(hiddenNamesIn(shadow) + hiddenNamesIn(shadow + "/Projects") + hiddenNamesIn(desktop),
             QStringList());

    QCOMPARE(recovered.outcomes.value("Folder"),
             qMakePair(Status::Failed, QString("cut short before it moved")));
    QCOMPARE(recovered.outcomes.value("Notes.txt").first, Status::Failed);
    QCOMPARE(recovered.outcomes.value("Done"), qMakePair(Status::Moved, shadow + "/Done"));
    QCOMPARE(recovered.outcomes.value("Changed").first, Status::Incomplete);
}

void tst_JournalRecovery::movesWithinAFileSystemCutShort()
{
    SandboxHome sandbox;
    const QString journal = sandbox.home() + "/Brevano.journal";
    const QString desktop = sandbox.desktop();
    const QString shadow = sandbox.shadowDesktop();
    for (const QString name :
         {"Report.txt", "Memo.txt", "moved.txt", "a.txt", "lost.txt", "again.txt"})
        sandbox.write("Desktop/" + name, "new " + name.toUtf8());
    sandbox.write(".local/share/Brevano/Shadow Desktop/Report.txt", "old report");
    sandbox.write(".local/share/Brevano/Shadow Desktop/Memo.txt", "old memo");
    sandbox.write(".local/share/Brevano/Shadow Desktop/a.txt", "another a");
    const QString reportAside = shadow + "/.brevano-replaced-1";
    const QString memoAside = shadow + "/.brevano-replaced-2";
    cutShortRun(journal,
                {{desktop + "/Report.txt", shadow + "/Report.txt"},
                 {desktop + "/Memo.txt", shadow + "/Memo.txt"},
                 {desktop + "/moved.txt", shadow + "/moved.txt"},
                 {desktop + "/a.txt", shadow + "/a.txt"},
                 {desktop + "/lost.txt", shadow + "/lost.txt"},
                 {desktop + "/again.txt", shadow + "/again.txt"}},
                [&](MoveJournal &j, quint64 run, const QList<quint32> &seqs) {
                    // Replacing: one successor came in; the other did not,
                    // and its name was taken since.
                    j.noteAside(run, seqs[0], reportAside);
                    QVERIFY(QFile::rename(shadow + "/Report.txt", reportAside));
                    QVERIFY(QFile::rename(desktop + "/Report.txt", shadow + "/Report.txt"));
                    j.noteAside(run, seqs[1], memoAside);
                    QVERIFY(QFile::rename(shadow + "/Memo.txt", memoAside));
                    sandbox.write(".local/share/Brevano/Shadow Desktop/Memo.txt", "someone's");
                    // A copy in place, its source removed.
                    QCOMPARE(QProcess::execute("cp", {"-a", desktop + "/again.txt", shadow}), 0);
                    j.noteCopied(run, seqs[5], shadow + "/.brevano-partial-a",
                                 Identity::of(shadow + "/again.txt"));
                });
    // Renamed in with no outcome written, once under a numbered name; one
    // item was taken away by someone else.
    QVERIFY(QFile::rename(desktop + "/moved.txt", shadow + "/moved.txt"));
    QVERIFY(QFile::rename(desktop + "/a.txt", shadow + "/a 2.txt"));
    QVERIFY(QFile::rename(desktop + "/lost.txt", sandbox.home() + "/lost.txt"));
    // The same bytes are a new item on the Desktop since: not ours to remove.
    QCOMPARE(QProcess::execute("cp", {"-a", shadow + "/again.txt", desktop + "/new"}), 0);
    QVERIFY(QFile::remove(desktop + "/again.txt") &&
            QFile::rename(desktop + "/new", desktop + "/again.txt"));
    // Hidden names no journal knows of.
    sandbox.write(".local/share/Brevano/Shadow Desktop/.brevano-partial-zz/x.txt", "partial");
    sandbox.write("Desktop/.brevano-replaced-qq", "plain text set aside\n");

    const Recovered recovered = recoverAtNextStart(journal, {desktop, shadow});
    QVERIFY(recovered.allEndedAsRecovered && recovered.secondFoundNothing);
    QCOMPARE(recovered.report.line(),
             QString("Brevano recovered an interrupted tidy: removed 1 partial copy, put back 2 "
                     "items set aside, moved 1 replaced item to the Trash"));

    QCOMPARE(contents(shadow + "/Report.txt"), QByteArray("new Report.txt"));
    QCOMPARE(contents(FreedesktopTrash::homeTrash() + "/files/Report.txt"),
             QByteArray("old report"));
    QCOMPARE(contents(desktop + "/Memo.txt"), QByteArray("new Memo.txt"));
    QCOMPARE(contents(shadow + "/Memo.txt"), QByteArray("someone's"));
    QCOMPARE(contents(shadow + "/Memo 2.txt"), QByteArray("old memo"));
    QVERIFY(QFileInfo::exists(desktop + "/again.txt"));
    QCOMPARE(contents(desktop + "/Recovered item.txt"), QByteArray("plain text set aside\n"));
    QCOMPARE(hiddenNamesIn(shadow) + hiddenNamesIn(desktop), QStringList());

    const auto &outcomes = recovered.outcomes;
    QCOMPARE(outcomes.value("Report.txt"), qMakePair(Status::Moved, shadow + "/Report.txt"));
    QCOMPARE(outcomes.value("Memo.txt"),
             qMakePair(Status::Failed, QString("cut short before it moved")));
    QCOMPARE(outcomes.value("moved.txt"), qMakePair(Status::Moved, shadow + "/moved.txt"));
    QCOMPARE(outcomes.value("a.txt"), qMakePair(Status::Moved, shadow + "/a 2.txt"));
    QCOMPARE(outcomes.value("again.txt"), qMakePair(Status::Moved, shadow + "/again.txt"));
    QCOMPARE(outcomes.value("lost.txt"),
             qMakePair(Status::Failed, QString("not found where it was meant to go")));
}

QTEST_GUILESS_MAIN(tst_JournalRecovery)
#include "tst_JournalRecovery.moc"
