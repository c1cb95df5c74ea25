#include "BrevanoData.h"
#include "NotificationCenter.h"
#include "RecordingAlertPresenter.h"
#include "SandboxHome.h"
#include "VirtualScheduler.h"

#include <QtTest>

class tst_IgnoreList : public QObject
{
    Q_OBJECT
private slots:
    void onlyDirectDesktopItemsAreAdded();
    void valuesAndRemoval();
};

void tst_IgnoreList::onlyDirectDesktopItemsAreAdded()
{
    SandboxHome sandbox;
    VirtualScheduler scheduler;
    NotificationCenter notifications;
    RecordingAlertPresenter alerts;
    BrevanoData data(scheduler, notifications, alerts);
    data.loadDataFile();
    const QString desktop = sandbox.desktop();

    QCOMPARE(data.addIgnoreFiles({desktop + "/a.txt", desktop + "/Folder/b.txt"}), 1);
    QVERIFY(data.shouldIgnoreFile(desktop + "/a.txt"));
    QVERIFY(!data.shouldIgnoreFile(desktop + "/Folder/b.txt"));
    QCOMPARE(alerts.m_alerts.size(), 1);
    QVERIFY(alerts.m_alerts.last().title.endsWith(u" 1 files skipped"));

    // The comparison is textual: none of these is directly on the Desktop.
    const QStringList skipped{desktop,
                              desktop + "/",
                              desktop + "//c.txt",
                              desktop + "/c.txt/",
                              desktop.toUpper() + "/c.txt",
                              desktop + "/./c.txt",
                              QStringLiteral("c.txt"),
                              QString()};
    QCOMPARE(data.addIgnoreFiles(skipped), skipped.size());
    QVERIFY(alerts.m_alerts.last().title.endsWith(u" 8 files skipped"));
    QCOMPARE(data.ignoreList().paths(), QStringList{desktop + "/a.txt"});

    // Nothing skipped, no alert; adding twice keeps one entry.
    const qsizetype alertCount = alerts.m_alerts.size();
    QCOMPARE(data.addIgnoreFiles({desktop + "/a.txt", desktop + "/ b", desktop + "/Z"}), 0);
    QCOMPARE(alerts.m_alerts.size(), alertCount);
    QCOMPARE(data.ignoreList().paths(),
             (QStringList{desktop + "/ b", desktop + "/Z", desktop + "/a.txt"}));
    QVERIFY(!QFile::exists(sandbox.dataFile())); // nothing saves but the caller
}

void tst_IgnoreList::valuesAndRemoval()
{
    SandboxHome sandbox;
    PropertyDictionary ignored;
    ignored.insert(sandbox.desktop() + "/off", false);
    ignored.insert(sandbox.desktop() + "/number", qint64(1));
    PropertyDictionary root;
    root.insert(IgnoreList::Key, ignored);
    IgnoreList list(root, sandbox.desktop());
    QVERIFY(!list.shouldIgnoreFile(sandbox.desktop() + "/off")); // false is listed, not ignored
    QVERIFY(list.shouldIgnoreFile(sandbox.desktop() + "/number"));
    QCOMPARE(list.paths().size(), 2);
    list.removeIgnoreFiles({sandbox.desktop() + "/off", sandbox.desktop() + "/absent"});
    QCOMPARE(list.paths(), QStringList{sandbox.desktop() + "/number"});
    list.removeIgnoreFile(sandbox.desktop() + "/number");
    QVERIFY(list.paths().isEmpty());
    QVERIFY(ignored.isEmpty()); // the root's own dictionary was changed

    // A root without the list gains one on demand; a wrong type is replaced.
    PropertyDictionary fresh;
    fresh.insert(IgnoreList::Key, QStringLiteral("not a dictionary"));
    IgnoreList freshList(fresh, sandbox.desktop());
    QVERIFY(!freshList.shouldIgnoreFile(sandbox.desktop() + "/x"));
    freshList.addIgnoreFiles({sandbox.desktop() + "/x"});
    QVERIFY(fresh.value(IgnoreList::Key).isDictionary());
}

QTEST_APPLESS_MAIN(tst_IgnoreList)
#include "tst_IgnoreList.moc"
