#include "ActionListObjectController.h"
#include "EditRuleWindowController.h"
#include "EngineFixture.h"
#include "FakeFileChooser.h"
#include "FilterListObjectController.h"
#include "FilterWindowController.h"
#include "IgnoreDesktopItemsObjectController.h"
#include "IgnoreFilesListObjectController.h"
#include "LocationListObjectController.h"
#include "QtFileChooser.h"
#include "RowListModel.h"
#include "RuleListObjectController.h"
#include "RulesAndLocationsView.h"
#include "SelectActionWindowController.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScopeGuard>
#include <QSpinBox>
#include <QTableView>
#include <QToolButton>
#include <QtTest>

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace {

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
    ~DesktopFixture() { ::unlink(FileNames::encode(desktop + '/' + oddName).constData()); }
    bool ignored(const QString &name) const
    {
        return f.data.shouldIgnoreFile(desktop + '/' + name);
    }
    QStringList everyEntry() const
    {
        return {"b.txt", "B.txt", ".secret", "listed.txt", ".hidden", "folder", oddName};
    }
};

// Runs body on the modal window that call opens, once it is open; a body that
// fails leaves the window to be closed here.
template <class Window>
void onModal(QObject *context, const std::function<void(Window *)> &body,
             const std::function<void()> &call)
{
    bool ran = false;
    QTimer::singleShot(0, context, [&] {
        ran = true;
        auto *window = qobject_cast<Window *>(QApplication::activeModalWidget());
        const auto closeLeftOver = qScopeGuard([window] {
            if (window && window->isVisible())
                window->reject();
        });
        QVERIFY(window);
        body(window);
        QVERIFY2(!window->isVisible(), "the window stayed open");
    });
    call();
    QVERIFY(ran);
}

// The names' rows in a view of the real file dialog, once it has read them.
QModelIndexList rowsNamed(QAbstractItemView *list, const QStringList &names)
{
    QModelIndexList rows;
    const QAbstractItemModel *model = list->model();
    for (int row = 0; row < model->rowCount(list->rootIndex()); ++row) {
        const QModelIndex index = model->index(row, 0, list->rootIndex());
        if (names.contains(index.data().toString()))
            rows.append(index);
    }
    return rows;
}

} // namespace

class tst_SettingsLists : public QObject
{
    Q_OBJECT
private slots:
    void checklistShowsVisibleItemsAndKeepsHiddenTicks();
    void checklistCheckAllReachesHiddenItems();
    void checklistReadsTheDesktopOnAWorker();
    void ignoredFilesRemoveSelectedAndAddChosen();
    void rulesAndLocationsKeepTheirData();
    void qtDecodedPathsFindTheirItems();
    void realChooserTakesFilesAndFolders_data();
    void realChooserTakesFilesAndFolders();
};

void tst_SettingsLists::checklistShowsVisibleItemsAndKeepsHiddenTicks()
{
    DesktopFixture d;
    IgnoreDesktopItemsObjectController list(d.f.data, d.f.itemInfo);
    QTRY_VERIFY(!list.isReading());
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
    QTRY_VERIFY(!list.isReading());
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

// The Desktop is read again on a worker whose jobs the test runs: meanwhile the
// table is empty and says so, the user's ticks are kept, and saving writes only
// those; a listing overtaken by a newer one is dropped, and one finishing after
// the checklist has gone reaches nothing.
void tst_SettingsLists::checklistReadsTheDesktopOnAWorker()
{
    DesktopFixture d;
    auto list = std::make_unique<IgnoreDesktopItemsObjectController>(d.f.data, d.f.itemInfo);
    QTRY_VERIFY(!list->isReading());
    std::vector<std::function<void()>> jobs;
    list->setWorkerStarter([&jobs](std::function<void()> job) { jobs.push_back(std::move(job)); });
    QSignalSpy rebuilt(list.get(), &IgnoreDesktopItemsObjectController::dataRebuilt);
    const auto *note = list->findChild<QLabel *>("readingNote");
    QVERIFY(note && note->isHidden());

    // The user ticks "B.txt", the store comes to ignore "folder", and the
    // Desktop is read again: both hold in the new listing.
    list->setIgnoreFileAtRow(int(list->sortedFilenames().indexOf("B.txt")), true);
    d.f.data.addIgnoreFiles({d.desktop + "/folder"});
    list->rebuildData();
    QCOMPARE(list->tableView()->model()->rowCount(), 0);
    QVERIFY(!note->isHidden());
    jobs.at(0)();
    QTRY_COMPARE(rebuilt.count(), 1);
    QVERIFY(note->isHidden());
    QCOMPARE(list->tableView()->model()->rowCount(), 4);
    QVERIFY(list->ignoreFile("B.txt") && list->ignoreFile("folder") && list->ignoreFile("b.txt"));
    QVERIFY(!d.ignored("B.txt"));

    // Saved while reading, the old listing's ticks are stale where the store
    // changed since: only the user's own change is written.
    d.f.data.removeIgnoreFiles({d.desktop + "/b.txt"});
    d.f.data.addIgnoreFiles({d.desktop + '/' + d.oddName});
    list->rebuildData();
    list->saveSettings();
    QVERIFY(d.ignored("B.txt"));
    QVERIFY(!d.ignored("b.txt"));
    for (const QString &name : {QStringLiteral("folder"), d.oddName, QStringLiteral(".secret")})
        QVERIFY2(d.ignored(name), qPrintable(name));

    // Check All while reading reaches the listing that comes; the listing
    // overtaken by a second rebuild, though handed over first, is dropped.
    list->findChild<QPushButton *>("checkAllButton")->click();
    jobs.at(1)();
    d.f.desktopItem("new.txt");
    list->rebuildData();
    jobs.at(2)();
    QTRY_VERIFY(!list->isReading());
    QCoreApplication::processEvents();
    QCOMPARE(rebuilt.count(), 2);
    QVERIFY(list->sortedFilenames().contains("new.txt"));
    const QStringList everyEntry = d.everyEntry() << "new.txt";
    for (const QString &name : everyEntry)
        QVERIFY2(list->ignoreFile(name), qPrintable(name));

    // The checklist goes while its worker reads: the worker ends without it.
    list->rebuildData();
    list.reset();
    jobs.at(3)();
    QCoreApplication::processEvents();
    QCOMPARE(rebuilt.count(), 2);
}

void tst_SettingsLists::ignoredFilesRemoveSelectedAndAddChosen()
{
    DesktopFixture d;
    PropertyDictionary ignored = d.f.data.getIgnoreFilesDictionary();
    ignored.insert(d.desktop + "/off.txt", false); // listed though not ignored
    for (const char *name : {"c1", "c2", "c3"})
        ignored.insert(d.desktop + '/' + name, true);
    FakeFileChooser chooser;
    IgnoreFilesListObjectController list(d.f.data, chooser);
    const QStringList all = list.sortedFilenames();
    QCOMPARE(all.size(), 7);
    QVERIFY(std::is_sorted(all.begin(), all.end()));
    QVERIFY(all.contains(d.desktop + "/off.txt"));

    QVERIFY(!list.buttonRemove()->isEnabled());
    QItemSelectionModel *selection = list.tableView()->selectionModel();
    for (const int row : {1, 3, 4})
        selection->select(list.tableView()->model()->index(row, 0),
                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QVERIFY(list.buttonRemove()->isEnabled());
    list.buttonRemove()->click();
    const QStringList left{all[0], all[2], all[5], all[6]};
    QCOMPARE(list.sortedFilenames(), left);
    QCOMPARE(d.f.data.ignoreList().paths().size(), 4);
    QVERIFY(!list.buttonRemove()->isEnabled());
    // The Delete key removes the selection too.
    list.tableView()->setCurrentIndex(list.tableView()->model()->index(0, 0));
    QTest::keyClick(list.tableView(), Qt::Key_Delete);
    QCOMPARE(list.sortedFilenames(), left.mid(1));

    // A folder inside a Desktop folder is refused with the store's alert.
    const QStringList before = list.sortedFilenames();
    chooser.m_answer = {d.desktop + "/folder/inner"};
    list.buttonAdd()->click();
    QCOMPARE(d.f.alerts.m_alerts.size(), 1);
    QCOMPARE(d.f.alerts.m_alerts[0].title,
             QStringLiteral("Items must be contained directly within the Desktop to be added to "
                            "the Brevano ignore list. 1 files skipped"));
    QCOMPARE(list.sortedFilenames(), before);
    const FileChooser::Options &asked = chooser.m_asked.at(0);
    QCOMPARE(asked.title, QStringLiteral("Select Files To Ignore"));
    QCOMPARE(asked.directory, d.desktop);
    QVERIFY(asked.mode == FileChooser::Mode::FilesAndFolders && !asked.canCreateFolders);

    chooser.m_answer = {d.desktop + "/B.txt"};
    list.buttonAdd()->click();
    QVERIFY(list.sortedFilenames().contains(d.desktop + "/B.txt"));
    QCOMPARE(d.f.alerts.m_alerts.size(), 1);
}

void tst_SettingsLists::rulesAndLocationsKeepTheirData()
{
    EngineFixture f;
    const QString desktop = f.sandbox.desktop();
    PropertyArray locations;
    for (const QString &folder : {desktop, f.sandbox.home() + "/Documents", QStringLiteral("/srv")})
        locations.append(folder);
    PropertyDictionary rule;
    rule.insert("Name", QStringLiteral("Pictures"));
    rule.insert("GridX", 3);
    rule.insert("Filters", PropertyArray());
    PropertyArray rules;
    rules.append(rule);
    PropertyDictionary engineData;
    engineData.insert("Locations", locations);
    engineData.insert("Rules", rules);
    PropertyDictionary root;
    root.insert(Brevano::SaveDataKey, engineData);
    f.writeDataFile(root);
    f.load();

    RulesAndLocationsView view(f.engine);
    view.show();
    RowListModel *shown = view.locations()->model();
    QCOMPARE(shown->paths(), (QStringList{desktop, f.sandbox.home() + "/Documents", "/srv"}));
    // Drops of locations and of files are welcomed, and nothing moves; only as
    // copies, since a file manager deletes what it moved when the drop took it.
    QMimeData rows;
    rows.setData("KVLocation", QByteArray());
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(desktop)});
    for (const QMimeData *drop : {&rows, &files}) {
        QVERIFY(shown->dropMimeData(drop, Qt::CopyAction, 0, 0, QModelIndex()));
        QVERIFY(!shown->dropMimeData(drop, Qt::MoveAction, 0, 0, QModelIndex()));
    }
    QCOMPARE(shown->rowCount(), 3);

    int changes = 0;
    f.notifications.observe(NotificationCenter::LayoutItemChanged, &view,
                            [&](const QVariant &) { ++changes; });
    onModal<EditRuleWindowController>(
        this,
        [&](EditRuleWindowController *editor) {
            // Add again brings the open editor forward; a second one would be closed here.
            bool second = false;
            QObject watch; // the check is dropped with it when no second editor ran
            QTimer::singleShot(0, &watch, [&] {
                if (QWidget *modal = QApplication::activeModalWidget(); modal != editor) {
                    second = true;
                    modal->close();
                }
            });
            view.rules()->pressedAdd();
            QVERIFY(!second);
            QTest::keyClicks(editor->findChild<QLineEdit *>("nameTextField"), "Documents");
            editor->findChild<QSpinBox *>("gridXTextField")->setValue(4);
            QTest::keyClick(editor, Qt::Key_Return); // Save
        },
        [&] { view.rules()->buttonAdd()->click(); });
    QCOMPARE(changes, 1);
    QVERIFY(!EditRuleWindowController::isOpen());

    onModal<FilterWindowController>(
        this,
        [](FilterWindowController *editor) {
            QVERIFY(!editor->findChild<QPushButton *>("buttonSave")->isEnabled());
            editor->findChild<QPushButton *>("buttonCancel")->click();
        },
        [&] { view.filters()->buttonAdd()->click(); });
    onModal<SelectActionWindowController>(
        this,
        [](SelectActionWindowController *chooser) {
            QVERIFY(!chooser->findChild<QPushButton *>("buttonSelect")->isEnabled());
            chooser->findChild<QPushButton *>("buttonDone")->click();
        },
        [&] { view.actions()->buttonAdd()->click(); });
    QVERIFY(!FilterWindowController::isOpen() && !SelectActionWindowController::isOpen());

    QVERIFY(f.data.saveDataFile());
    EngineFixture reread;
    reread.adoptDataFileOf(f);
    reread.load();
    QVERIFY(reread.engine.getLocations() == locations);
    QVERIFY(reread.engine.getCommonRules() == rules);
}

// Qt's file classes show a name that is not UTF-8 with U+FFFD; the path they
// give back is mapped to the item, unless two items show the same.
void tst_SettingsLists::qtDecodedPathsFindTheirItems()
{
    DesktopFixture d;
    const auto asQtGives = [](const QString &path) {
        return QFile::decodeName(FileNames::encode(path));
    };
    // Removed here: Qt's own removal skips such names.
    QStringList made;
    const auto removeMade = qScopeGuard([&made] {
        for (auto it = made.crbegin(); it != made.crend(); ++it)
            ::remove(FileNames::encode(*it).constData());
    });
    const auto make = [&made](const QString &path, bool folder) {
        const QByteArray bytes = FileNames::encode(path);
        const int fd = folder ? ::mkdir(bytes.constData(), 0755)
                              : ::open(bytes.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        QVERIFY2(fd >= 0, bytes.constData());
        made.append(path);
        if (!folder)
            ::close(fd);
    };
    const QString odd = d.desktop + '/' + d.oddName;
    QCOMPARE(asQtGives(odd), d.desktop + QStringLiteral("/caf\uFFFD"));
    QCOMPARE(FileNames::resolveQtDecoded(asQtGives(odd)), odd);
    const QString plain = d.desktop + "/not there.txt";
    QCOMPARE(FileNames::resolveQtDecoded(plain), plain);
    QVERIFY(FileNames::resolveQtDecoded(d.desktop + QStringLiteral("/none\uFFFD")).isNull());
    QVERIFY(FileNames::resolveQtDecoded(QStringLiteral("relative/caf\uFFFD")).isNull());

    // Every component, from the root.
    const QString folder = d.desktop + '/' + FileNames::decode("f\xf6lder");
    make(folder, true);
    const QString inner = folder + '/' + FileNames::decode("\xff.txt");
    make(inner, false);
    QCOMPARE(FileNames::resolveQtDecoded(asQtGives(inner)), inner);

    // A second item shown alike makes both unknown.
    make(folder + '/' + FileNames::decode("\xfe.txt"), false);
    QVERIFY(FileNames::resolveQtDecoded(asQtGives(inner)).isNull());
    make(d.desktop + QStringLiteral("/caf\uFFFD"), false);
    QVERIFY(FileNames::resolveQtDecoded(asQtGives(odd)).isNull());
}

void tst_SettingsLists::realChooserTakesFilesAndFolders_data()
{
    QTest::addColumn<bool>("many");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("view");
    QTest::newRow("files and folders") << true << QStringList{"a.txt", "sub", "b.txt"} << "list";
    QTest::newRow("files only") << true << QStringList{"c.txt", "a.txt"} << "tree";
    QTest::newRow("one folder") << false << QStringList{"sub"} << "tree";
}

void tst_SettingsLists::realChooserTakesFilesAndFolders()
{
    QFETCH(bool, many);
    QFETCH(QStringList, names);
    QFETCH(QString, view);
    const auto mode = many ? FileChooser::Mode::FilesAndFolders : FileChooser::Mode::OneFolder;
    SandboxHome sandbox;
    const QString folder = sandbox.home() + "/pick";
    for (const char *name : {"a.txt", "b.txt", "c.txt", "sub/x.txt", "other/y.txt"})
        sandbox.write(QStringLiteral("pick/") + name, "x");

    QStringList chosen;
    onModal<QFileDialog>(
        this,
        [&](QFileDialog *dialog) {
            // The view the user picked with the dialog's own button.
            dialog->findChild<QToolButton *>(view == "list" ? "listModeButton" : "detailModeButton")
                ->click();
            auto *list = dialog->findChild<QAbstractItemView *>(view + "View");
            QVERIFY(list && list->isVisible());
            QTRY_COMPARE(rowsNamed(list, names).size(), names.size());
            for (const QModelIndex &row : rowsNamed(list, names))
                QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                                  list->visualRect(row).center());
            QPushButton *accept =
                dialog->findChild<QDialogButtonBox *>("buttonBox")->button(QDialogButtonBox::Open);
            QVERIFY(accept->isEnabled());
            accept->click();
        },
        [&] {
            QtFileChooser chooser;
            chosen = chooser.choose({"Choose", folder, mode, false}, nullptr);
        });
    QStringList expected;
    for (const QString &name : names)
        expected.append(folder + '/' + name);
    expected.sort();
    chosen.sort();
    QCOMPARE(chosen, expected);
}

QTEST_MAIN(tst_SettingsLists)
#include "tst_SettingsLists.moc"
