#include "LocalItemInfo.h"
#include "QtModifierKeys.h"
#include "SandboxHome.h"

#include <QtTest>

class tst_ItemInfo : public QObject
{
    Q_OBJECT
private slots:
    void flagsFromTheFileSystem();
};

void tst_ItemInfo::flagsFromTheFileSystem()
{
    SandboxHome sandbox;
    const QString d = sandbox.desktop();
    LocalItemInfo info;
    sandbox.write("Desktop/file.png", "\x89PNG\r\n\x1a\n");
    sandbox.write("Desktop/.dotfile", "");
    sandbox.write("Desktop/listed.txt", "");
    sandbox.write("Desktop/.hidden", "other\nlisted.txt\n");
    QDir(d).mkpath("Folder");
    QDir(d).mkpath("Editor.app/Contents");
    QFile::link(d + "/Folder", d + "/link-to-folder");

    QCOMPARE(info.flags(d + "/file.png"), 0u);
    QCOMPARE(info.flags(d + "/Folder"), quint32(ItemInfo::Container));
    QCOMPARE(info.flags(d + "/Editor.app"), quint32(ItemInfo::Container | ItemInfo::Package));
    // A link is an alias, never the folder it points to.
    QCOMPARE(info.flags(d + "/link-to-folder"), quint32(ItemInfo::AliasFile));
    QCOMPARE(info.flags(d + "/.dotfile"), quint32(ItemInfo::Invisible));
    QCOMPARE(info.flags(d + "/listed.txt"), quint32(ItemInfo::Invisible)); // named in ".hidden"
    QCOMPARE(info.flags(d + "/missing"), 0u);
    QVERIFY(info.kindText(d + "/file.png").contains("PNG", Qt::CaseInsensitive));
    QVERIFY(!LocalItemInfo::isPackageExtension(".app"));
    // Without a GUI application nothing is held.
    QVERIFY(!QtModifierKeys().isOptionPressed());
}

QTEST_APPLESS_MAIN(tst_ItemInfo)
#include "tst_ItemInfo.moc"
