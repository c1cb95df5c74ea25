#include "FileMover.h"
#include "FileTree.h"
#include "SandboxHome.h"
#include "TmpfsMount.h"

#include <QProcess>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>

namespace {
// A folder with a nested file, an empty folder, a link and odd permissions.
void makeTree(const SandboxHome &sandbox, const QString &relative)
{
    sandbox.write(relative + "/a.txt", "alpha");
    sandbox.write(relative + "/sub/deeper/b.bin", QByteArray(300000, '\x5A'));
    QDir(sandbox.home()).mkpath(relative + "/empty");
    QFile::link("a.txt", sandbox.home() + '/' + relative + "/link-to-a");
    QFile::link("/nonexistent/target", sandbox.home() + '/' + relative + "/dangling");
    QFile::setPermissions(sandbox.home() + '/' + relative + "/a.txt",
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup);
    QFile file(sandbox.home() + '/' + relative + "/sub/deeper/b.bin");
    file.open(QIODevice::ReadWrite);
    file.setFileTime(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6)),
                     QFileDevice::FileModificationTime);
}
} // namespace

class tst_FileMover : public QObject
{
    Q_OBJECT
private slots:
    void cleanup()
    {
        FileMover::setFaultHookForTesting({});
        FileMover::setNoReplaceRenameUnavailableForTesting(false);
    }
    void movesWithinAFileSystemWithoutReplacing_data();
    void movesWithinAFileSystemWithoutReplacing();
    void movesAcrossFileSystems();
    void failureBeforeTheSourceGoesLeavesItWhole();
    void whatChangesDuringTheCopyStaysAtTheSource();
    void fullDiskLeavesNothingBehind();
    void finishingRemovesOnlyWhatTheCopyHolds();
};

void tst_FileMover::movesWithinAFileSystemWithoutReplacing_data()
{
    QTest::addColumn<bool>("withoutNoReplaceRename");
    QTest::newRow("no-replace rename") << false;
    QTest::newRow("link and mkdir fallback") << true;
}

void tst_FileMover::movesWithinAFileSystemWithoutReplacing()
{
    QFETCH(bool, withoutNoReplaceRename);
    FileMover::setNoReplaceRenameUnavailableForTesting(withoutNoReplaceRename);
    SandboxHome sandbox;
    const QString d = sandbox.desktop();
    makeTree(sandbox, "Desktop/Folder");
    const auto before = fingerprint(d + "/Folder");
    QVERIFY(FileMover::move(d + "/Folder", sandbox.home() + "/Folder").moved());
    QCOMPARE(fingerprint(sandbox.home() + "/Folder"), before);
    QVERIFY(!QFileInfo::exists(d + "/Folder"));

    // A link moves as a link; what it points to stays.
    sandbox.write("target.txt", "t");
    QFile::link(sandbox.home() + "/target.txt", d + "/link");
    QVERIFY(FileMover::move(d + "/link", sandbox.home() + "/moved-link").moved());
    QVERIFY(QFileInfo(sandbox.home() + "/moved-link").isSymLink());
    QVERIFY(QFileInfo::exists(sandbox.home() + "/target.txt"));

    // A taken name (file, folder or dangling link) is never replaced.
    sandbox.write("Desktop/Notes.txt", "new");
    for (const QString &taken : {QStringLiteral("taken-file"), QStringLiteral("taken-folder"),
                                 QStringLiteral("taken-link")}) {
        const QString target = sandbox.home() + '/' + taken;
        if (taken.endsWith("file"))
            sandbox.write(taken, "old");
        else if (taken.endsWith("folder"))
            QDir().mkpath(target); // empty: a plain rename(2) would replace it
        else
            QFile::link("/nowhere", target);
        const FileMover::Result result = FileMover::move(d + "/Notes.txt", target);
        QCOMPARE(result.status, FileMover::Status::TargetExists);
        QVERIFY(QFileInfo::exists(d + "/Notes.txt"));
    }
    QFile old(sandbox.home() + "/taken-file");
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("old"));
    QDir().mkpath(d + "/Dir");
    QCOMPARE(FileMover::move(d + "/Dir", sandbox.home() + "/taken-folder").status,
             FileMover::Status::TargetExists);

    const FileMover::Result missing = FileMover::move(d + "/missing", sandbox.home() + "/x");
    QCOMPARE(missing.status, FileMover::Status::Failed);
    QVERIFY(!missing.message.isEmpty());
}

void tst_FileMover::movesAcrossFileSystems()
{
    TmpfsMount other;
    REQUIRE_TMPFS(other);
    SandboxHome sandbox;
    makeTree(sandbox, "Desktop/Folder");
    sandbox.write("Desktop/file.txt", "one file");
    const auto folder = fingerprint(sandbox.desktop() + "/Folder");
    const auto file = fingerprint(sandbox.desktop() + "/file.txt");

    QVERIFY(FileMover::move(sandbox.desktop() + "/Folder", other.path() + "/Folder").moved());
    QVERIFY(FileMover::move(sandbox.desktop() + "/file.txt", other.path() + "/file.txt").moved());
    QCOMPARE(fingerprint(other.path() + "/Folder"), folder);
    QCOMPARE(fingerprint(other.path() + "/file.txt"), file);
    QVERIFY(!QFileInfo::exists(sandbox.desktop() + "/Folder"));
    QVERIFY(!QFileInfo::exists(sandbox.desktop() + "/file.txt"));
    // No temporary copy is left beside the target.
    QCOMPARE(QDir(other.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             (QStringList{"file.txt", "Folder"}));

    // Across file systems a taken name is not replaced either.
    sandbox.write("Desktop/file.txt", "second");
    QCOMPARE(FileMover::move(sandbox.desktop() + "/file.txt", other.path() + "/file.txt").status,
             FileMover::Status::TargetExists);
    QCOMPARE(fingerprint(other.path() + "/file.txt"), file);
}

void tst_FileMover::failureBeforeTheSourceGoesLeavesItWhole()
{
    TmpfsMount other;
    REQUIRE_TMPFS(other);
    SandboxHome sandbox;
    makeTree(sandbox, "Desktop/Folder");
    const auto before = fingerprint(sandbox.desktop() + "/Folder");
    FileMover::setFaultHookForTesting([](const QString &, const QString &) { return false; });
    const FileMover::Result result =
        FileMover::move(sandbox.desktop() + "/Folder", other.path() + "/Folder");
    QCOMPARE(result.status, FileMover::Status::Failed);
    QCOMPARE(fingerprint(sandbox.desktop() + "/Folder"), before);
    QVERIFY(QDir(other.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void tst_FileMover::whatChangesDuringTheCopyStaysAtTheSource()
{
    TmpfsMount other;
    REQUIRE_TMPFS(other);
    SandboxHome sandbox;
    makeTree(sandbox, "Desktop/Folder");
    sandbox.write("Desktop/Folder/log.txt", "line 1\n");
    sandbox.write("Desktop/Folder/sub/kept.txt", "kept");
    const QString source = sandbox.desktop() + "/Folder";
    // While the copy runs, a copied file grows and a copied folder gets a new file.
    FileMover::setFaultHookForTesting([&](const QString &stage, const QString &path) {
        if (stage == u"entry copied" && path == source + "/log.txt")
            sandbox.write("Desktop/Folder/log.txt", "line 1\nline 2\n");
        if (stage == u"entry copied" && path == source + "/sub")
            sandbox.write("Desktop/Folder/sub/saved.txt", "saved");
        return true;
    });
    const FileMover::Result result = FileMover::move(source, other.path() + "/Folder");
    QCOMPARE(result.status, FileMover::Status::Incomplete);
    QVERIFY2(result.message.contains("Folder/log.txt") &&
                 result.message.contains("Folder/sub/saved.txt"),
             qPrintable(result.message));
    // Only the changed entries stay, in their folders; all else moved.
    const auto left = fingerprint(source);
    QCOMPARE(left.keys(), (QStringList{".", "/log.txt", "/sub", "/sub/saved.txt"}));
    QVERIFY(
        left.value("/log.txt")
            .contains(
                QCryptographicHash::hash("line 1\nline 2\n", QCryptographicHash::Sha256).toHex()));
    const auto moved = fingerprint(other.path() + "/Folder");
    QVERIFY(moved.contains("/sub/kept.txt") && moved.contains("/sub/deeper/b.bin") &&
            moved.contains("/dangling") && !moved.contains("/sub/saved.txt"));

    // What something else takes out of the copy before the source goes (as
    // another move would, from the copy under its hidden name) stays at the
    // source: the only whole one left.
    makeTree(sandbox, "Desktop/Again");
    sandbox.write("Desktop/Again/sub/kept.txt", "kept");
    const QString again = sandbox.desktop() + "/Again";
    FileMover::setFaultHookForTesting([&](const QString &stage, const QString &) {
        if (stage == u"copied")
            for (const QString &name :
                 QDir(other.path()).entryList(QDir::Hidden | QDir::AllEntries))
                if (name.startsWith(FileMover::kPartialPrefix))
                    QFile::remove(other.path() + "/" + name + "/sub/kept.txt");
        return true;
    });
    const FileMover::Result taken = FileMover::move(again, other.path() + "/Again");
    QCOMPARE(taken.status, FileMover::Status::Incomplete);
    QVERIFY2(taken.message.contains("Again/sub/kept.txt"), qPrintable(taken.message));
    QCOMPARE(fingerprint(again).keys(), (QStringList{".", "/sub", "/sub/kept.txt"}));

    // Something else has the target's name once the copy is placed (here a
    // copy of the copy, alike in every entry): the source stays whole.
    makeTree(sandbox, "Desktop/Third");
    const QString third = sandbox.desktop() + "/Third";
    const auto whole = fingerprint(third);
    FileMover::setFaultHookForTesting([&](const QString &stage, const QString &) {
        if (stage == u"placed") {
            QDir().rename(other.path() + "/Third", other.path() + "/Third moved");
            QProcess::execute("cp", {"-a", other.path() + "/Third moved", other.path() + "/Third"});
        }
        return true;
    });
    QCOMPARE(FileMover::move(third, other.path() + "/Third").status, FileMover::Status::Incomplete);
    QCOMPARE(fingerprint(third), whole);
}

void tst_FileMover::fullDiskLeavesNothingBehind()
{
    TmpfsMount small(QStringLiteral("64k"));
    REQUIRE_TMPFS(small);
    SandboxHome sandbox;
    sandbox.write("Desktop/big.bin", QByteArray(1024 * 1024, '\x42'));
    makeTree(sandbox, "Desktop/Folder"); // 300 kB inside
    const auto big = fingerprint(sandbox.desktop() + "/big.bin");
    const auto folder = fingerprint(sandbox.desktop() + "/Folder");
    for (const QString &name : {QStringLiteral("big.bin"), QStringLiteral("Folder")}) {
        const FileMover::Result result =
            FileMover::move(sandbox.desktop() + '/' + name, small.path() + '/' + name);
        QCOMPARE(result.status, FileMover::Status::Failed);
        QVERIFY2(result.message.contains("space"), qPrintable(result.message));
    }
    QCOMPARE(fingerprint(sandbox.desktop() + "/big.bin"), big);
    QCOMPARE(fingerprint(sandbox.desktop() + "/Folder"), folder);
    QVERIFY(QDir(small.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void tst_FileMover::finishingRemovesOnlyWhatTheCopyHolds()
{
    SandboxHome sandbox;
    makeTree(sandbox, "Desktop/Folder");
    sandbox.write("outside/kept.txt", "not ours to remove");
    sandbox.write("Desktop/Folder/same-size.txt", "original");
    const QString source = sandbox.desktop() + "/Folder";
    QFile::link(sandbox.home() + "/outside", source + "/sub/outside-link");
    // The copy a cut-short move renamed into place, under another name.
    const QString copy = sandbox.home() + "/Folder 2";
    QCOMPARE(QProcess::execute("cp", {"-a", source, copy}), 0);
    const auto copied = fingerprint(copy);
    // Since then: new bytes of the same size and date, and a new file.
    struct stat info;
    QCOMPARE(::lstat(QFile::encodeName(copy + "/same-size.txt").constData(), &info), 0);
    sandbox.write("Desktop/Folder/same-size.txt", "changed!");
    const struct timespec times[2] = {info.st_atim, info.st_mtim};
    QCOMPARE(
        ::utimensat(AT_FDCWD, QFile::encodeName(source + "/same-size.txt").constData(), times, 0),
        0);
    sandbox.write("Desktop/Folder/sub/new.txt", "new");

    const FileMover::Result result = FileMover::finishInterruptedMove(source, copy);
    QCOMPARE(result.status, FileMover::Status::Incomplete);
    QVERIFY2(result.message.contains("Folder/same-size.txt") &&
                 result.message.contains("Folder/sub/new.txt"),
             qPrintable(result.message));
    QCOMPARE(fingerprint(source).keys(),
             (QStringList{".", "/same-size.txt", "/sub", "/sub/new.txt"}));
    QCOMPARE(fingerprint(copy), copied);
    // The link went as a link: what it points to is untouched.
    QVERIFY(QFileInfo::exists(sandbox.home() + "/outside/kept.txt"));

    QVERIFY(QFile::remove(source + "/same-size.txt") && QFile::remove(source + "/sub/new.txt"));
    QVERIFY(FileMover::finishInterruptedMove(source, copy).moved());
    QVERIFY(!QFileInfo::exists(source));
    QVERIFY(FileMover::finishInterruptedMove(source, copy).moved());
}

QTEST_GUILESS_MAIN(tst_FileMover)
#include "tst_FileMover.moc"
