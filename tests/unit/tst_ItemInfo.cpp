#include "FileNames.h"
#include "LocalItemInfo.h"
#include "QtModifierKeys.h"
#include "SandboxHome.h"

#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class tst_ItemInfo : public QObject
{
    Q_OBJECT
private slots:
    void flagsFromTheFileSystem();
    void namesThatAreNotUtf8();
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

void tst_ItemInfo::namesThatAreNotUtf8()
{
    // Whatever the bytes, they come back exactly; valid UTF-8 reads as usual.
    for (const QByteArray &name :
         {QByteArray("caf\xc3\xa9"), QByteArray("caf\xe9.txt"),
          QByteArray("\xed\xb3\xa9 (an encoded surrogate)"), QByteArray("\xc0\xaf (overlong)"),
          QByteArray("cut \xe2\x82"), QByteArray("\xf4\x90\x80\x80 (beyond Unicode)"),
          QByteArray("\xf0\x90\x82\x80 (a pair ending in DC80)"),
          QByteArray("\xe9\xf0\x90\x82\x80\xff"), QByteArray("\xef\xbb\xbf (a byte order mark)"),
          QByteArray("\xe9\xef\xbb\xbf")})
        QCOMPARE(FileNames::encode(FileNames::decode(name)), name);
    QCOMPARE(FileNames::decode("caf\xc3\xa9"), QString::fromUtf8("caf\xc3\xa9"));
    QCOMPARE(FileNames::display(FileNames::decode("caf\xe9.txt")),
             QString::fromUtf8("caf\xef\xbf\xbd.txt"));
    QCOMPARE(FileNames::display(FileNames::decode("\xf0\x90\x82\x80")),
             QString::fromUtf8("\xf0\x90\x82\x80"));

    // Such items have their facts like any other.
    SandboxHome sandbox;
    const QByteArray d = FileNames::encode(sandbox.desktop());
    QCOMPARE(::mkdir(d + "/caf\xe9", 0700), 0);
    const int file = ::open(d + "/\xff.txt", O_WRONLY | O_CREAT | O_EXCL, 0600);
    QVERIFY(file >= 0);
    ::close(file);
    sandbox.write("Desktop/.hidden", "\xff.txt\n");
    LocalItemInfo info;
    QCOMPARE(info.flags(FileNames::decode(d + "/caf\xe9")), quint32(ItemInfo::Container));
    QVERIFY(info.facts(FileNames::decode(d + "/caf\xe9")).modified);
    QCOMPARE(info.flags(FileNames::decode(d + "/\xff.txt")), quint32(ItemInfo::Invisible));
    ::rmdir(d + "/caf\xe9"); // QTemporaryDir could not remove them
    ::unlink(d + "/\xff.txt");
}

QTEST_APPLESS_MAIN(tst_ItemInfo)
#include "tst_ItemInfo.moc"
