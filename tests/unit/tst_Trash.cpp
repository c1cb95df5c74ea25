#include "FreedesktopTrash.h"
#include "SandboxHome.h"
#include "TmpfsMount.h"

#include <QtTest>

#include <unistd.h>

namespace {
QString readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

class tst_Trash : public QObject
{
    Q_OBJECT
private slots:
    void homeTrash();
    void topdirTrashes();
    void anItemThatCannotBeTrashedStays();
};

void tst_Trash::homeTrash()
{
    SandboxHome sandbox;
    FreedesktopTrash trash;
    const QString home = sandbox.home() + "/.local/share/Trash";
    const QString name = QString::fromUtf8("Größe 100% & more.txt");
    sandbox.write("Desktop/" + name, "content");

    const Trash::Result first = trash.trash(sandbox.desktop() + '/' + name);
    QVERIFY2(first.ok, qPrintable(first.message));
    QCOMPARE(first.trashedPath, home + "/files/" + name);
    QCOMPARE(readAll(first.trashedPath), QStringLiteral("content"));
    const QStringList info = readAll(home + "/info/" + name + ".trashinfo").split('\n');
    QCOMPARE(info.at(0), QStringLiteral("[Trash Info]"));
    QCOMPARE(info.at(1), "Path=" + QUrl::toPercentEncoding(sandbox.desktop() + '/' + name, "/"));
    QVERIFY(info.at(1).contains("Gr%C3%B6%C3%9Fe%20100%25%20%26%20more.txt"));
    const QDateTime deleted = QDateTime::fromString(info.at(2).mid(13), "yyyy-MM-ddTHH:mm:ss");
    QVERIFY(info.at(2).startsWith("DeletionDate="));
    QVERIFY(qAbs(deleted.secsTo(QDateTime::currentDateTime())) < 60); // local time, no zone

    // The same name again, and a stale file in files/ without its info: new names.
    sandbox.write("Desktop/" + name, "second");
    sandbox.write(".local/share/Trash/files/Größe 100% & more 3.txt", "stale");
    sandbox.write("Desktop/" + name + ".d/inner.txt", "a folder");
    QCOMPARE(trash.trash(sandbox.desktop() + '/' + name).trashedPath,
             home + "/files/Größe 100% & more 2.txt");
    sandbox.write("Desktop/" + name, "third");
    QCOMPARE(trash.trash(sandbox.desktop() + '/' + name).trashedPath,
             home + "/files/Größe 100% & more 4.txt");
    QVERIFY(!QFileInfo::exists(home + "/info/Größe 100% & more 3.txt.trashinfo"));
    QVERIFY(trash.trash(sandbox.desktop() + '/' + name + ".d").ok);
    QCOMPARE(readAll(home + "/files/" + name + ".d/inner.txt"), QStringLiteral("a folder"));

    // A link goes to the Trash as a link.
    sandbox.write("kept.txt", "kept");
    QFile::link(sandbox.home() + "/kept.txt", sandbox.desktop() + "/link");
    QVERIFY(trash.trash(sandbox.desktop() + "/link").ok);
    QVERIFY(QFileInfo(home + "/files/link").isSymLink());
    QCOMPARE(readAll(sandbox.home() + "/kept.txt"), QStringLiteral("kept"));

    QVERIFY(!trash.trash(sandbox.desktop() + "/missing").ok);
    QVERIFY(!trash.trash("relative.txt").ok);
}

void tst_Trash::topdirTrashes()
{
    TmpfsMount mount;
    REQUIRE_TMPFS(mount);
    SandboxHome sandbox; // the home trash lies on another file system
    FreedesktopTrash trash;
    const QString uid = QString::number(::getuid());
    QCOMPARE(FreedesktopTrash::mountTopdir(mount.path() + "/x"), QString());
    QDir().mkpath(mount.path() + "/dir");
    QCOMPARE(FreedesktopTrash::mountTopdir(mount.path() + "/dir"), mount.path());

    // No shared .Trash: the user's own $topdir/.Trash-$uid, with a relative Path=.
    QFile item(mount.path() + "/dir/a.txt");
    QVERIFY(item.open(QIODevice::WriteOnly));
    item.close();
    Trash::Result result = trash.trash(mount.path() + "/dir/a.txt");
    QVERIFY2(result.ok, qPrintable(result.message));
    QCOMPARE(result.trashedPath, mount.path() + "/.Trash-" + uid + "/files/a.txt");
    QVERIFY(readAll(mount.path() + "/.Trash-" + uid + "/info/a.txt.trashinfo")
                .contains("\nPath=dir/a.txt\n"));
    QVERIFY(!QFileInfo::exists(sandbox.home() + "/.local/share/Trash/files/a.txt"));

    // A shared .Trash that is a link, or not sticky, is passed over.
    QFile::link("/tmp", mount.path() + "/.Trash");
    QVERIFY(item.open(QIODevice::WriteOnly));
    item.close();
    QCOMPARE(trash.trash(item.fileName()).trashedPath,
             mount.path() + "/.Trash-" + uid + "/files/a 2.txt");
    QFile::remove(mount.path() + "/.Trash");

    // A sticky shared .Trash holds the user's folder.
    QDir().mkpath(mount.path() + "/.Trash");
    QVERIFY(QProcess::execute("chmod", {"1777", mount.path() + "/.Trash"}) == 0);
    QVERIFY(item.open(QIODevice::WriteOnly));
    item.close();
    QCOMPARE(trash.trash(item.fileName()).trashedPath,
             mount.path() + "/.Trash/" + uid + "/files/a.txt");

    // Reached through a link from another file system: the trash of the real place.
    QVERIFY(QFile::link(mount.path() + "/dir", sandbox.home() + "/linked"));
    QVERIFY(item.open(QIODevice::WriteOnly));
    item.close();
    result = trash.trash(sandbox.home() + "/linked/a.txt");
    QVERIFY2(result.ok, qPrintable(result.message));
    QCOMPARE(result.trashedPath, mount.path() + "/.Trash/" + uid + "/files/a 2.txt");
    QVERIFY(readAll(mount.path() + "/.Trash/" + uid + "/info/a 2.txt.trashinfo")
                .contains("\nPath=dir/a.txt\n"));
}

void tst_Trash::anItemThatCannotBeTrashedStays()
{
    SandboxHome sandbox;
    // The home trash's place is taken by a file: nothing may be trashed, and
    // nothing falls back to a trash at the root of the file system.
    sandbox.write(".local/share/Trash", "not a folder");
    sandbox.write("Desktop/keep.txt", "keep");
    const Trash::Result result = FreedesktopTrash().trash(sandbox.desktop() + "/keep.txt");
    QVERIFY(!result.ok);
    QVERIFY(!result.message.isEmpty());
    QCOMPARE(readAll(sandbox.desktop() + "/keep.txt"), QStringLiteral("keep"));
    QVERIFY(!QFileInfo::exists("/.Trash-" + QString::number(::getuid()) + "/files/keep.txt"));
}

QTEST_GUILESS_MAIN(tst_Trash)
#include "tst_Trash.moc"
