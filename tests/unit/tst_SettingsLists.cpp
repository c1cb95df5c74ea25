#include "EngineFixture.h"
#include "FileChooser.h"
#include "IgnoreDesktopItemsObjectController.h"

#include <QAccessible>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Answers every question with the paths set, and remembers the questions.
class FakeFileChooser : public FileChooser
{
public:
    QStringList choose(const Options &options, QWidget *) override
    {
        m_asked.append(options);
        return m_answer;
    }
    QList<Options> m_asked;
    QStringList m_answer;
};

// A Desktop with two visible files differing in case, a folder, a name that is
// not UTF-8, an item with a leading dot and one listed in ".hidden"; the ignore
// list holds "b.txt", the dotted item and an item no longer there.
struct DesktopFixture
{
    EngineFixture f;
    const QString desktop = f.sandbox.desktop();
    const QString oddName = FileNames::decode("caf\xe9");

    DesktopFixture()
    {
        f.load();
        for (const char *name : {"b.txt", "B.txt", ".secret", "listed.txt"})
            f.desktopItem(name);
        f.sandbox.write("Desktop/.hidden", "listed.txt\n");
        QDir(desktop).mkdir("folder");
        const int fd = ::open(FileNames::encode(desktop + '/' + oddName).constData(),
                              O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        QVERIFY(fd >= 0);
        ::close(fd);
        f.data.addIgnoreFiles({desktop + "/b.txt", desktop + "/.secret", desktop + "/gone.txt"});
    }
    bool ignored(const QString &name) const
    {
        return f.data.shouldIgnoreFile(desktop + '/' + name);
    }
    QStringList everyEntry() const
    {
        return {"b.txt", "B.txt", ".secret", "listed.txt", ".hidden", "folder", oddName};
    }
};

} // namespace

class tst_SettingsLists : public QObject
{
    Q_OBJECT
private slots:
    void checklistShowsVisibleItemsAndKeepsHiddenTicks();
    void checklistCheckAllReachesHiddenItems();
};

void tst_SettingsLists::checklistShowsVisibleItemsAndKeepsHiddenTicks()
{
    DesktopFixture d;
    IgnoreDesktopItemsObjectController list(d.f.data, d.f.itemInfo);
    QCOMPARE(list.sortedFilenames(), (QStringList{"B.txt", "b.txt", d.oddName, "folder"}));
    QTableView *table = list.tableView();
    QCOMPARE(table->model()->index(2, 1).data().toString(), QStringLiteral("caf\uFFFD"));
    QCOMPARE(table->model()->index(1, 0).data(Qt::CheckStateRole), QVariant(Qt::Checked));
    QAccessibleTableInterface *cells =
        QAccessible::queryAccessibleInterface(table)->tableInterface();
    QVERIFY(cells->cellAt(1, 0)->state().checked);
    QVERIFY(!cells->cellAt(0, 0)->state().checked);

    // Space ticks the row whose name has the focus.
    for (const int row : {0, 1}) {
        table->setCurrentIndex(table->model()->index(row, 1));
        QTest::keyClick(table, Qt::Key_Space);
    }
    QVERIFY(cells->cellAt(0, 0)->state().checked);
    QVERIFY(!d.ignored("B.txt")); // nothing changes before saving
    list.saveSettings();
    QVERIFY(d.ignored("B.txt"));
    QVERIFY(!d.ignored("b.txt"));
    QVERIFY(d.ignored(".secret"));
    QVERIFY(d.ignored("gone.txt"));
    QVERIFY(d.f.alerts.m_alerts.isEmpty());
}

void tst_SettingsLists::checklistCheckAllReachesHiddenItems()
{
    DesktopFixture d;
    IgnoreDesktopItemsObjectController list(d.f.data, d.f.itemInfo);
    list.findChild<QPushButton *>("checkAllButton")->click();
    list.saveSettings();
    for (const QString &name : d.everyEntry())
        QVERIFY2(d.ignored(name), qPrintable(name));

    list.findChild<QPushButton *>("uncheckAllButton")->click();
    list.saveSettings();
    for (const QString &name : d.everyEntry())
        QVERIFY2(!d.ignored(name), qPrintable(name));
    QVERIFY(d.ignored("gone.txt"));
}

QTEST_MAIN(tst_SettingsLists)
#include "tst_SettingsLists.moc"
