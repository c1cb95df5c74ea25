#include "EngineFixture.h"

#include <QtTest>

class tst_ShadowDesktopPaths : public QObject
{
    Q_OBJECT
private slots:
    void foldersAndMapping();
    void configuredFolderIsNeverCreated();
    void uniqueNames();
};

void tst_ShadowDesktopPaths::foldersAndMapping()
{
    EngineFixture f;
    SandboxHome &sandbox = f.sandbox;
    Brevano &engine = f.engine;
    // The Desktop comes from the XDG user directories.
    sandbox.write(QStringLiteral(".config/user-dirs.dirs"),
                  "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n");
    QCOMPARE(engine.getDesktopFolder(), sandbox.home() + "/Schreibtisch");

    const QString root = sandbox.shadowDesktop();
    QVERIFY(!QFileInfo::exists(root));
    QCOMPARE(engine.getTargetFilename(), root); // no separator appended
    QVERIFY(QFileInfo(root).isDir());           // the default folder is created on demand
    QCOMPARE(engine.getTargetFilename(QStringLiteral("Item.txt")), root + "/Item.txt");
    QCOMPARE(engine.getTargetPathFromSourcePath(engine.getDesktopFolder() + "/Item.txt"),
             root + "/Item.txt");
    QCOMPARE(engine.getTargetPathFromSourcePath(engine.getDesktopFolder() + "/Folder/"),
             root + "/Folder");
    QCOMPARE(engine.getOriginalPathFromShadowPath(root + "/Sub/Item.txt"),
             engine.getDesktopFolder() + "/Item.txt");
    QVERIFY(engine.fileResidesInShadowDesktopRoot(root + "/Item.txt"));
    QVERIFY(!engine.fileResidesInShadowDesktopRoot(root + "/Sub/Item.txt"));
    QVERIFY(!engine.fileResidesInShadowDesktopRoot(root));
    QVERIFY(!engine.fileResidesInShadowDesktopRoot(root + "//Item.txt"));

    // Configured with a trailing separator, the exact comparison fails.
    f.data.setShadowDesktopPath(sandbox.home() + "/Elsewhere/");
    QVERIFY(!engine.fileResidesInShadowDesktopRoot(sandbox.home() + "/Elsewhere/Item.txt"));
    f.data.setShadowDesktopPath(QString());
    QCOMPARE(engine.getTargetFilename(), root);
}

void tst_ShadowDesktopPaths::configuredFolderIsNeverCreated()
{
    EngineFixture f;
    const QString chosen = f.sandbox.home() + "/Chosen";
    f.data.setShadowDesktopPath(chosen);
    QCOMPARE(f.engine.getTargetFilename(QStringLiteral("a")), chosen + "/a");
    QVERIFY(!QFileInfo::exists(chosen));
    QVERIFY(!QFileInfo::exists(f.sandbox.shadowDesktop()));
}

void tst_ShadowDesktopPaths::uniqueNames()
{
    SandboxHome sandbox;
    const QString d = sandbox.desktop();
    const auto unique = [](const QString &path) {
        return Brevano::generateUniqueFilename(path);
    };

    sandbox.write(QStringLiteral("Desktop/Report 2.pdf"), "");
    QCOMPARE(unique(d + "/Report.pdf"), d + "/Report.pdf"); // free: unchanged
    sandbox.write(QStringLiteral("Desktop/Report.pdf"), "");
    QCOMPARE(unique(d + "/Report.pdf"), d + "/Report 3.pdf");

    for (const char *name : {"a.txt", "a 2.txt", "a 3.txt"})
        sandbox.write(QStringLiteral("Desktop/") + QLatin1String(name), "");
    QCOMPARE(unique(d + "/a.txt"), d + "/a 4.txt");

    QDir(d).mkdir(QStringLiteral("Projects")); // a folder takes a name like a file
    QCOMPARE(unique(d + "/Projects"), d + "/Projects 2");
    sandbox.write(QStringLiteral("Desktop/archive.tar.gz"), "");
    QCOMPARE(unique(d + "/archive.tar.gz"), d + "/archive.tar 2.gz");
    sandbox.write(QStringLiteral("Desktop/.hidden"), "");
    QCOMPARE(unique(d + "/.hidden"), d + "/.hidden 2");
    sandbox.write(QStringLiteral("Desktop/ends."), "");
    QCOMPARE(unique(d + "/ends."), d + "/ends. 2");

    // A dangling link takes its name too: moving onto it would replace it.
    QVERIFY(QFile::link(d + "/nowhere", d + "/link"));
    QCOMPARE(unique(d + "/link"), d + "/link 2");
}

QTEST_APPLESS_MAIN(tst_ShadowDesktopPaths)
#include "tst_ShadowDesktopPaths.moc"
