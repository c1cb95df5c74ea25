#include "FileNames.h"
#include "FileTree.h"
#include "JournalLine.h"
#include "MoveJournal.h"
#include "SandboxHome.h"
#include "TmpfsMount.h"

#include <QtTest>

using namespace std::chrono_literals;
using Journal = MoveJournal;
using Status = MoveJournal::ItemStatus;
using Kind = MoveJournal::RunKind;

namespace {

void writeContents(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

// Every field of an item, to compare items whole.
QString describe(const Journal::Item &i)
{
    const auto id = [](const Journal::Identity &x) {
        return QStringLiteral("%1:%2").arg(x.device).arg(x.inode);
    };
    const auto bytes = [](const QString &path) {
        return QString::fromLatin1(FileNames::encode(path).toPercentEncoding());
    };
    QStringList partials;
    for (const QString &p : i.partials)
        partials.append(bytes(p));
    return QStringList{
        QString::number(i.seq),         bytes(i.source),      bytes(i.target), id(i.sourceIdentity),
        QString::number(int(i.status)), id(i.targetIdentity), i.message,       partials.join('+'),
        bytes(i.copiedPartial),         id(i.copiedIdentity), bytes(i.aside)}
        .join('|');
}

QStringList describeAll(const QList<Journal::Item> &items)
{
    QStringList all;
    for (const Journal::Item &item : items)
        all.append(describe(item));
    return all;
}

QString counts(const Journal::Run &run)
{
    return QStringLiteral(
               "moved %1 failed %2 deferred %3 skipped %4 ended %5 recovered %6 undone %7")
        .arg(run.moved)
        .arg(run.failed)
        .arg(run.deferred)
        .arg(run.skipped)
        .arg(run.ended.isValid())
        .arg(run.recovered)
        .arg(run.undone);
}

// A whole run of kind that moved `moved` items.
quint64 wholeRun(Journal &journal, Kind kind, const QDateTime &time, int moved = 1,
                 const QString &detail = "manual")
{
    const quint64 run = journal.beginRun(kind, detail, time);
    for (int i = 0; i < moved; ++i) {
        const QString name = QStringLiteral("/d/%1-%2").arg(run).arg(i);
        const quint32 seq = journal.addIntent(run, name, name + "-moved", {1, quint64(i)});
        journal.noteOutcome(run, seq, Status::Moved, name + "-moved", {1, quint64(i)}, {});
    }
    journal.endRun(run, time);
    return run;
}

QList<quint64> ids(const QList<Journal::Run> &runs)
{
    QList<quint64> all;
    for (const Journal::Run &run : runs)
        all.append(run.id);
    return all;
}

// What opening the journal at path shows: its runs, and the note, if any.
QStringList opened(const QString &path)
{
    Journal journal(path);
    if (!journal.open(0ms))
        return {journal.lastError()};
    QStringList all;
    for (const Journal::Run &run : journal.runs())
        all.append(QString::number(run.id) + ": " + counts(run));
    return all + QStringList(journal.openingNote());
}

} // namespace

class tst_MoveJournal : public QObject
{
    Q_OBJECT
private slots:
    void aRunReadsBackAsWritten();
    void aRunCutShortIsInterruptedAtTheNextOpen();
    void aTornLastLineIsCutOff();
    void aDamagedJournalIsSetAsideKeepingWhatIsInFlight();
    void damageOpeningDidNotReadIsFoundWhenRead();
    void anIndexMissingDamagedOrStaleIsRebuilt();
    void compactionKeepsWithinBounds();
    void theLastUndoableTidy();
    void oneOwnerAtATime();
    void anUnwritableJournalIsHarmless();
};

void tst_MoveJournal::aRunReadsBackAsWritten()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    QCOMPARE(path, sandbox.dataFolder() + "/Brevano.journal");
    const QString odd = FileNames::decode("/home/x/Desktop/caf\xe9 \xff.txt");
    const QString tricky = "/home/x/Desktop/a\tb\nc%41%.txt";
    const QString real = sandbox.write("Desktop/real.txt", "x");
    QVERIFY(QFile::link(real, sandbox.desktop() + "/link"));
    const Journal::Identity file = Journal::Identity::of(real);
    const Journal::Identity link = Journal::Identity::of(sandbox.desktop() + "/link");
    QVERIFY(!file.isNull() && !link.isNull() && !(file == link));
    QVERIFY(Journal::Identity::of(sandbox.desktop() + "/none").isNull());

    const QDateTime start = QDateTime::fromMSecsSinceEpoch(1'700'000'000'123, Qt::UTC);
    QStringList written;
    quint64 run = 0;
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        run = journal.beginRun(Kind::Tidy, "scheduled", start);
        QCOMPARE(journal.addIntent(run, odd, tricky, file), 1u);
        QCOMPARE(journal.addIntent(run, tricky, odd, link), 2u);
        QCOMPARE(journal.addIntent(run, real, "/s/new\nline.txt", {}), 3u);
        // Paths in no folder, or in the top one; a target under the source's name.
        QCOMPARE(journal.addIntent(run, "relative/x", {}, {}), 4u);
        QCOMPARE(journal.addIntent(run, "/home/x/Desktop/y", "/s/y", {}), 5u);
        QVERIFY(journal.sync());
        journal.notePartial(run, 1, tricky + ".part1");
        journal.notePartial(run, 1, odd + ".part2");
        journal.noteCopied(run, 1, odd + ".part2", {7, 8});
        journal.noteAside(run, 2, odd + ".aside");
        journal.noteOutcome(run, 1, Status::Moved, tricky + " 2", {7, 8}, "100%41 done");
        journal.noteOutcome(run, 2, Status::Incomplete, odd, link, "left\t“b” behind\n");
        journal.noteOutcome(run, 3, Status::Skipped, "/s/new\nline.txt", {}, "name\ttaken");
        journal.noteOutcome(run, 4, Status::Failed, "/top", {}, {});
        journal.noteDeferred(run, "/d/changing!\t");
        // Read before anything but the intents and notes is written.
        const auto before = journal.run(run);
        QVERIFY(before);
        written = describeAll(before->items);
        QCOMPARE(written.size(), 6);
        QCOMPARE(written[0], describe({1,
                                       odd,
                                       tricky + " 2",
                                       file,
                                       Status::Moved,
                                       {7, 8},
                                       "100%41 done",
                                       {tricky + ".part1", odd + ".part2"},
                                       odd + ".part2",
                                       {7, 8},
                                       {}}));
        QCOMPARE(written[1], describe({2,
                                       tricky,
                                       odd,
                                       link,
                                       Status::Incomplete,
                                       link,
                                       "left\t“b” behind\n",
                                       {},
                                       {},
                                       {},
                                       odd + ".aside"}));
        QCOMPARE(written[2], describe({3,
                                       real,
                                       "/s/new\nline.txt",
                                       {},
                                       Status::Skipped,
                                       {},
                                       "name\ttaken",
                                       {},
                                       {},
                                       {},
                                       {}}));
        QCOMPARE(written[3],
                 describe({4, "relative/x", "/top", {}, Status::Failed, {}, {}, {}, {}, {}, {}}));
        QCOMPARE(
            written[4],
            describe(
                {5, "/home/x/Desktop/y", "/s/y", {}, Status::Pending, {}, {}, {}, {}, {}, {}}));
        QCOMPARE(written[5],
                 describe({0, "/d/changing!\t", {}, {}, Status::Deferred, {}, {}, {}, {}, {}, {}}));
        journal.endRun(run, start.addSecs(5));
        QCOMPARE(counts(journal.runs().value(0)),
                 "moved 1 failed 2 deferred 1 skipped 1 ended 1 recovered 0 undone 0");
    }
    Journal reopened(path);
    QVERIFY(reopened.open(0ms));
    QVERIFY(reopened.interruptedRuns().isEmpty());
    const QList<Journal::Run> runs = reopened.runs();
    QCOMPARE(runs.size(), 1);
    QCOMPARE(counts(runs[0]), "moved 1 failed 2 deferred 1 skipped 1 ended 1 recovered 0 undone 0");
    QCOMPARE(runs[0].started, start);
    QCOMPARE(runs[0].ended, start.addSecs(5));
    QCOMPARE(runs[0].detail, "scheduled");
    QVERIFY(runs[0].items.isEmpty());
    QCOMPARE(describeAll(reopened.run(run)->items), written);
    QVERIFY(!reopened.run(run + 1));
    QCOMPARE(reopened.beginRun(Kind::Restore, {}, start), run + 1);
    QVERIFY(reopened.openingNote().isEmpty());
}

void tst_MoveJournal::aRunCutShortIsInterruptedAtTheNextOpen()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QString copy = sandbox.home() + "/copy.journal";
    quint64 tidy = 0;
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        wholeRun(journal, Kind::Restore, now);
        tidy = journal.beginRun(Kind::Tidy, "manual", now);
        journal.addIntent(tidy, "/d/a", "/s/a", {1, 2});
        journal.addIntent(tidy, "/d/b", "/s/b", {1, 3});
        journal.noteOutcome(tidy, 1, Status::Moved, "/s/a", {1, 2}, {});
        QVERIFY(journal.sync());
        journal.noteAside(tidy, 2, "/s/.aside-b");
        journal.noteOutcome(tidy, 2, Status::Moved, "/s/b", {1, 3}, {}); // never written
        // What a kill leaves: the file as it is now.
        writeContents(copy, contents(path));
    }
    {
        Journal killed(copy);
        QVERIFY(killed.open(0ms));
        const QList<Journal::Run> cutShort = killed.interruptedRuns();
        QCOMPARE(ids(cutShort), QList<quint64>{tidy});
        QCOMPARE(
            describeAll(cutShort[0].items),
            QStringList(
                {describe({1, "/d/a", "/s/a", {1, 2}, Status::Moved, {1, 2}, {}, {}, {}, {}, {}}),
                 describe({2,
                           "/d/b",
                           "/s/b",
                           {1, 3},
                           Status::Pending,
                           {},
                           {},
                           {},
                           {},
                           {},
                           "/s/.aside-b"})}));
        QVERIFY(cutShort[0].ended.isNull());
        QCOMPARE(killed.runs().size(), 2);
        // Finished at the next start.
        killed.noteOutcome(tidy, 2, Status::Moved, "/s/b", {1, 3}, {});
        killed.endRun(tidy, now, true);
        QVERIFY(killed.interruptedRuns().isEmpty());
    }
    Journal finished(copy);
    QVERIFY(finished.open(0ms));
    QVERIFY(finished.interruptedRuns().isEmpty());
    QCOMPARE(counts(finished.lastUndoableTidy().value()),
             "moved 2 failed 0 deferred 0 skipped 0 ended 1 recovered 1 undone 0");
    // Its folders were named anew when it was finished.
    const Journal::Item b = finished.run(tidy)->items.value(1);
    QCOMPARE(b.source + " -> " + b.target, "/d/b -> /s/b");
    QCOMPARE(finished.beginRun(Kind::Drop, {}, now), tidy + 1);

    // Destroyed without an end, the journal holds what was buffered too.
    Journal destroyed(path);
    QVERIFY(destroyed.open(0ms));
    QCOMPARE(ids(destroyed.interruptedRuns()), QList<quint64>{tidy});
    QCOMPARE(destroyed.interruptedRuns()[0].items.value(1).status, Status::Moved);
}

void tst_MoveJournal::aTornLastLineIsCutOff()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        wholeRun(journal, Kind::Tidy, now, 2);
    }
    const QByteArray whole = contents(path);
    for (const QByteArray &torn : {QByteArray("intent\t2\t1\t/d/x\t/s/"),     // no newline
                                   QByteArray("end\t1\t5\t0\t00000000\n")}) { // a wrong checksum
        writeContents(path, whole + torn);
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        QCOMPARE(contents(path), whole);
        QCOMPARE(journal.runs().size(), 1);
        QVERIFY(journal.openingNote().isEmpty());
        QVERIFY(!QFile::exists(path + ".bad"));
    }
    // What is written after it reads back.
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        wholeRun(journal, Kind::Tidy, now, 1);
    }
    Journal journal(path);
    QVERIFY(journal.open(0ms));
    QCOMPARE(ids(journal.runs()), QList<quint64>({1, 2}));
    QVERIFY(journal.openingNote().isEmpty());
}

void tst_MoveJournal::aDamagedJournalIsSetAsideKeepingWhatIsInFlight()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    quint64 cutShort = 0;
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        wholeRun(journal, Kind::Tidy, now, 2);
        cutShort = journal.beginRun(Kind::Drop, {}, now);
        journal.addIntent(cutShort, "/d/x", "/s/x", {1, 9});
        QVERIFY(journal.sync());
        wholeRun(journal, Kind::Tidy, now, 1);
        journal.notePartial(cutShort, 1, "/s/.partial-x");
    }
    QByteArray damaged = contents(path);
    const qsizetype second = damaged.indexOf("intent\t1\t2");
    QVERIFY(second > 0);
    damaged[second + 12] = 'Z';
    writeContents(path, damaged);
    // Without an index, opening reads every line.
    QVERIFY(QFile::remove(path + ".index"));
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        QVERIFY2(journal.openingNote().contains("damaged") &&
                     journal.openingNote().contains(path + ".bad"),
                 qPrintable(journal.openingNote()));
        QCOMPARE(contents(path + ".bad"), damaged);
        const QList<Journal::Run> interrupted = journal.interruptedRuns();
        QCOMPARE(ids(interrupted), QList<quint64>{cutShort});
        QCOMPARE(interrupted[0].items.value(0).partials, QStringList{"/s/.partial-x"});
        QCOMPARE(ids(journal.runs()), QList<quint64>{cutShort});
        QCOMPARE(journal.beginRun(Kind::Restore, {}, now), 4u);
    }
    // The new journal is whole, and still holds the run to finish.
    Journal journal(path);
    QVERIFY(journal.open(0ms));
    QVERIFY(journal.openingNote().isEmpty());
    QCOMPARE(ids(journal.interruptedRuns()), QList<quint64>({cutShort, 4}));
    QCOMPARE(journal.interruptedRuns()[0].items.value(0).source, "/d/x");
    QCOMPARE(journal.beginRun(Kind::Restore, {}, now), 5u);
}

// Opening reads only what the index does not sum up; the lines it skips are
// checked when they are read, and damage found then is dealt with as at
// opening. A journal of another version is set aside unread.
void tst_MoveJournal::damageOpeningDidNotReadIsFoundWhenRead()
{
    SandboxHome sandbox;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    quint64 cutShort = 0, tidy = 0;
    // A journal whose tidy is damaged in place, its index still right.
    const auto damagedJournal = [&](const QString &path) {
        {
            Journal journal(path);
            QVERIFY(journal.open(0ms));
            tidy = wholeRun(journal, Kind::Tidy, now, 2);
            cutShort = journal.beginRun(Kind::Drop, {}, now);
            journal.addIntent(cutShort, "/d/x", "/s/x", {1, 9});
            wholeRun(journal, Kind::Restore, now);
        }
        QByteArray bytes = contents(path);
        bytes[bytes.indexOf("intent\t" + QByteArray::number(tidy) + "\t2") + 12] = 'Z';
        writeContents(path, bytes);
    };
    const QString path = Journal::defaultPath();
    damagedJournal(path);
    const QByteArray damaged = contents(path);
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        QVERIFY(journal.openingNote().isEmpty());
        QCOMPARE(journal.runs().size(), 3);
        const QList<Journal::Item> items = journal.run(tidy)->items;
        QVERIFY(items.value(0).source.endsWith("-0") && items.value(1).source.isEmpty());
        QVERIFY2(journal.openingNote().contains("damaged"), qPrintable(journal.openingNote()));
        QCOMPARE(contents(path + ".bad"), damaged);
        QCOMPARE(ids(journal.runs()), QList<quint64>{cutShort});
    }
    QCOMPARE(opened(path),
             QStringList({QString::number(cutShort) + ": " + counts(Journal::Run()), QString()}));
    // Compaction reads the runs it keeps.
    const QString compacted = sandbox.home() + "/compacted.journal";
    damagedJournal(compacted);
    {
        Journal journal(compacted);
        QVERIFY(journal.open(0ms));
        QVERIFY(journal.openingNote().isEmpty());
        journal.compact(now.addDays(31));
        QVERIFY2(journal.openingNote().contains("damaged"), qPrintable(journal.openingNote()));
        QCOMPARE(ids(journal.interruptedRuns()), QList<quint64>{cutShort});
    }

    QByteArray older;
    JournalLine::Writer(older, "brevano-journal").word("1").number(7).finish();
    JournalLine::Writer(older, "begin").number(5).word("tidy").word("manual").word("1").finish();
    writeContents(path, older);
    QVERIFY(QFile::remove(path + ".index"));
    Journal journal(path);
    QVERIFY(journal.open(0ms));
    QVERIFY2(journal.openingNote().contains("another version"), qPrintable(journal.openingNote()));
    QCOMPARE(contents(path + ".bad"), older);
    QVERIFY(journal.runs().isEmpty() && journal.interruptedRuns().isEmpty());
}

// An index that is missing, damaged, or sums up another journal or less of
// this one is not believed: the journal says what it holds, and the index is
// written anew.
void tst_MoveJournal::anIndexMissingDamagedOrStaleIsRebuilt()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    const QString index = path + ".index";
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QByteArray early;
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        wholeRun(journal, Kind::Tidy, now, 2);
        early = contents(index);
        wholeRun(journal, Kind::Restore, now, 3);
    }
    const QByteArray good = contents(index);
    const QStringList expected = opened(path);
    QCOMPARE(expected.size(), 3);
    QVERIFY(expected[0].startsWith("1: moved 2 ") && expected[1].startsWith("2: moved 3 "));

    const QByteArray lies = QByteArray(good).replace("\t2\t0\t0\t0\t", "\t7\t0\t0\t0\t");
    QVERIFY(lies != good);
    for (const QByteArray &stale :
         {QByteArray(), lies, good.first(good.indexOf("run\t2")), early}) {
        if (stale.isNull())
            QVERIFY(QFile::remove(index));
        else
            writeContents(index, stale);
        QCOMPARE(opened(path), expected);
        QCOMPARE(contents(index), good);
    }

    // Another journal in its place, longer than the one summed up.
    const QString otherPath = sandbox.home() + "/other.journal";
    {
        Journal other(otherPath);
        QVERIFY(other.open(0ms));
        wholeRun(other, Kind::Drop, now, 12);
    }
    QVERIFY(QFileInfo(otherPath).size() > QFileInfo(path).size());
    writeContents(path, contents(otherPath));
    writeContents(index, good);
    QCOMPARE(opened(path), opened(otherPath));
}

void tst_MoveJournal::compactionKeepsWithinBounds()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    quint64 tidy = 0, interrupted = 0;
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        wholeRun(journal, Kind::Restore, now.addDays(-31)); // too old
        interrupted = journal.beginRun(Kind::Drop, {}, now.addDays(-40));
        journal.addIntent(interrupted, "/d/x", "/s/x", {});
        tidy = wholeRun(journal, Kind::Tidy, now.addDays(-29));
        wholeRun(journal, Kind::Undo, now.addDays(-29), 1, QString::number(tidy));
        wholeRun(journal, Kind::Tidy, now.addDays(-29), 0); // the newest tidy moved nothing
        for (int i = 0; i < 99; ++i)
            wholeRun(journal, Kind::Restore, now);
        // The 101st run's end made room down to half the bound, at once: the
        // too old and the oldest restores gave way, not the run cut short,
        // the tidies, nor the undo. Three restores have ended since.
        const QList<quint64> kept = {interrupted, tidy, tidy + 1, tidy + 2};
        QCOMPARE(journal.runs().size(), 53);
        QCOMPARE(ids(journal.runs()).mid(0, 5), kept + QList<quint64>{tidy + 53});
        QCOMPARE(journal.runs().last().id, tidy + 101);
        // A month on, only those are left.
        journal.compact(now.addDays(31));
        QCOMPARE(ids(journal.runs()), kept);
    }
    Journal journal(path);
    QVERIFY(journal.open(0ms));
    QCOMPARE(ids(journal.runs()), QList<quint64>({interrupted, tidy, tidy + 1, tidy + 2}));
    QVERIFY(!journal.lastUndoableTidy()); // still undone
    QCOMPARE(ids(journal.interruptedRuns()), QList<quint64>{interrupted});
    QCOMPARE(journal.run(tidy)->items.size(), 1);
    QCOMPARE(journal.beginRun(Kind::Tidy, {}, now), tidy + 102); // numbers never come back
}

void tst_MoveJournal::theLastUndoableTidy()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    quint64 second = 0;
    {
        Journal journal(path);
        QVERIFY(journal.open(0ms));
        QVERIFY(!journal.lastUndoableTidy());
        const quint64 first = wholeRun(journal, Kind::Tidy, now, 2);
        wholeRun(journal, Kind::Tidy, now, 0); // moved nothing
        wholeRun(journal, Kind::Restore, now, 3);
        QCOMPARE(journal.lastUndoableTidy()->id, first);
        QCOMPARE(journal.lastUndoableTidy()->moved, 2);
        second = wholeRun(journal, Kind::Tidy, now, 1);
        QCOMPARE(journal.lastUndoableTidy()->id, second);
        // An undo cut short, even once recovered, leaves it to be undone; one
        // that ends takes it back, and the tidy before is not offered then.
        const quint64 cutShort = journal.beginRun(Kind::Undo, QString::number(second), now);
        QCOMPARE(journal.lastUndoableTidy().value_or(Journal::Run()).id, second);
        journal.endRun(cutShort, now, true);
        QCOMPARE(journal.lastUndoableTidy().value_or(Journal::Run()).id, second);
        wholeRun(journal, Kind::Undo, now, 1, QString::number(second));
        QVERIFY(!journal.lastUndoableTidy());
        QVERIFY(journal.runs()[3].undone);
        QVERIFY(!journal.runs()[0].undone);
    }
    Journal journal(path);
    QVERIFY(journal.open(0ms));
    QVERIFY(!journal.lastUndoableTidy());
    QVERIFY(journal.run(second)->undone);
    const quint64 third = wholeRun(journal, Kind::Tidy, now, 1);
    QCOMPARE(journal.lastUndoableTidy()->id, third);
}

void tst_MoveJournal::oneOwnerAtATime()
{
    SandboxHome sandbox;
    const QString path = Journal::defaultPath();
    auto first = std::make_unique<Journal>(path);
    QVERIFY(first->open(0ms));
    auto second = std::make_unique<Journal>(path);
    QVERIFY(!second->open(0ms));
    QVERIFY2(second->lastError().contains("in use"), qPrintable(second->lastError()));
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const quint64 unrecorded = second->beginRun(Kind::Tidy, {}, now);
    QCOMPARE(unrecorded, 0u);
    first.reset();
    QVERIFY(second->open(0ms));
    QVERIFY(second->lastError().isEmpty());
    // A run begun while the journal was another's stays unrecorded when the
    // journal is ours before it ends, and leaves the journal whole.
    const quint32 seq = second->addIntent(unrecorded, "/d/a", "/s/a", {1, 2});
    second->noteOutcome(unrecorded, seq, Status::Moved, "/s/a", {1, 2}, {});
    second->endRun(unrecorded, now);
    QVERIFY(second->runs().isEmpty());
    second.reset();
    Journal reread(path);
    QVERIFY(reread.open(0ms));
    QVERIFY2(reread.openingNote().isEmpty(), qPrintable(reread.openingNote()));
    QVERIFY(reread.runs().isEmpty());
    QVERIFY(reread.interruptedRuns().isEmpty());
}

void tst_MoveJournal::anUnwritableJournalIsHarmless()
{
    SandboxHome sandbox;
    const QString inTheWay = sandbox.write("file", "not a folder");
    Journal journal(inTheWay + "/Brevano/Brevano.journal");
    QVERIFY(!journal.open(0ms));
    QVERIFY(!journal.isOpen());
    QVERIFY(!journal.lastError().isEmpty());
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const quint64 run = journal.beginRun(Kind::Tidy, "manual", now);
    const quint32 seq = journal.addIntent(run, "/d/a", "/s/a", {});
    QCOMPARE(run, 0u);
    QCOMPARE(seq, 0u);
    QVERIFY(!journal.sync());
    journal.notePartial(run, seq, "/s/.p");
    journal.noteCopied(run, seq, "/s/.p", {1, 2});
    journal.noteAside(run, seq, "/s/.a");
    journal.noteOutcome(run, seq, Status::Moved, "/s/a", {}, {});
    journal.noteDeferred(run, "/d/b");
    journal.endRun(run, now);
    journal.compact(now);
    QVERIFY(journal.runs().isEmpty());
    QVERIFY(!journal.run(run));
    QVERIFY(journal.interruptedRuns().isEmpty());
    QVERIFY(!journal.lastUndoableTidy());

    // A disk that fills up: the failure is told once, and the tidy before the
    // one that could not be written is not taken for the last.
    TmpfsMount small(QStringLiteral("64k"));
    REQUIRE_TMPFS(small);
    Journal full(small.path() + "/Brevano.journal");
    QVERIFY(full.open(0ms));
    wholeRun(full, Kind::Tidy, now);
    QVERIFY(full.lastUndoableTidy());
    QVERIFY(full.takeWriteFailure().isEmpty());
    QFile filler(small.path() + "/filler");
    QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) > 0)
        ;
    wholeRun(full, Kind::Tidy, now, 150);
    QVERIFY(!full.takeWriteFailure().isEmpty());
    QVERIFY(full.takeWriteFailure().isEmpty());
    QVERIFY(!full.lastUndoableTidy());
    QVERIFY(filler.remove());
    QVERIFY(full.sync()); // written once there is room again
    QCOMPARE(full.lastUndoableTidy()->moved, 150);
}

QTEST_GUILESS_MAIN(tst_MoveJournal)
#include "tst_MoveJournal.moc"
