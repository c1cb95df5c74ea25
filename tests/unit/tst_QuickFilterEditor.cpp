#include "EditQuickFilterWindowController.h"
#include "EngineFixture.h"
#include "FileExtensionWindowController.h"
#include "QuickFiltersListObjectController.h"
#include "QuickFiltersTableModel.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTableWidget>
#include <QtTest>

namespace {

QStringList liveNames(BrevanoData &data)
{
    QStringList names;
    for (const auto &filter : data.filterItems())
        names.append(filter->getName());
    return names;
}

QStringList storedNames(BrevanoData &data)
{
    QStringList names;
    for (const PropertyValue &record : data.getQuickFilters())
        names.append(record.toDictionary().value(QStringLiteral("Name")).toString());
    return names;
}

QStringList postedNames(const QSignalSpy &spy)
{
    QStringList names;
    for (const QList<QVariant> &call : spy)
        names.append(call.first().toString());
    return names;
}

// Runs act on the open dialog of type Dialog once its modal loop has started.
// A dialog act leaves open is a failure, and is cancelled so that the test goes
// on. Pass a context that dies with the test, so that a dialog that never
// opened leaves no timer behind.
template <typename Dialog> void whenOpen(QObject *context, std::function<void(Dialog *)> act)
{
    QTimer::singleShot(0, context, [act] {
        Dialog *dialog = Dialog::openInstance();
        if (!dialog)
            return QTest::qFail("no dialog open", __FILE__, __LINE__);
        act(dialog);
        if ((dialog = Dialog::openInstance())) {
            QTest::qFail("dialog left open", __FILE__, __LINE__);
            dialog->reject();
        }
    });
}

template <typename T> T *child(QWidget *window, const char *name)
{
    T *found = window->findChild<T *>(QLatin1String(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

// Sends a drop of mime to the middle of row, as the window system delivers one.
void dropOnRow(QTableView *table, QMimeData *mime, int row)
{
    const QPoint at = table->visualRect(table->model()->index(row, 0)).center();
    QDragEnterEvent enter(at, Qt::MoveAction, mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(table->viewport(), &enter);
    QDragMoveEvent move(at, Qt::MoveAction, mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(table->viewport(), &move);
    QDropEvent drop(QPointF(at), Qt::MoveAction, mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(table->viewport(), &drop);
}

} // namespace

class tst_QuickFilterEditor : public QObject
{
    Q_OBJECT
private slots:
    void reorderingByDragAndKeyboard();
    void removingSparesAllContents();
    void cancelKeepsExtensionsButNotTheName();
    void savingANewFilter();
};

// A shown list over the store, holding just the named filters when names are given.
struct FilterListFixture
{
    EngineFixture f;
    QSignalSpy posted{&f.notifications, &NotificationCenter::posted};
    std::unique_ptr<QuickFiltersListObjectController> list;

    explicit FilterListFixture(const QStringList &names = {})
    {
        f.load();
        if (!names.isEmpty()) {
            while (!f.data.filterItems().isEmpty())
                f.data.removeQuickFilter(0);
            for (const QString &name : names) {
                auto filter = std::make_shared<QuickFilterItem>();
                filter->setName(name);
                filter->applyChanges();
                f.data.addQuickFilter(filter);
            }
        }
        list = std::make_unique<QuickFiltersListObjectController>(f.data, f.notifications);
        list->resize(400, 400);
        list->show();
        list->activateWindow();
    }
};

void tst_QuickFilterEditor::reorderingByDragAndKeyboard()
{
    FilterListFixture l({"A", "B", "C", "D", "E"});
    QVERIFY(QTest::qWaitForWindowActive(l.list.get()));
    QTableView *table = l.list->tableView();
    QuickFiltersTableModel *model = l.list->model();
    QVERIFY(table->viewport()->acceptDrops());

    // The dragged row travels alone, under the private type.
    std::unique_ptr<QMimeData> dragged(model->mimeData({model->index(0, 0), model->index(0, 1)}));
    QCOMPARE(dragged->formats(), QStringList{"KVQuickFilter"});
    // Row 0 dropped on row 3 lands after the row that was fourth.
    dropOnRow(table, dragged.get(), 3);
    QCOMPARE(liveNames(l.f.data), (QStringList{"B", "C", "D", "A", "E"}));
    QCOMPARE(storedNames(l.f.data), liveNames(l.f.data));
    QCOMPARE(model->index(3, 0).data().toString(), "A");

    // Dropped file names leave the order alone.
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(l.f.sandbox.desktop() + "/a.txt")});
    QVERIFY(model->canDropMimeData(&files, Qt::CopyAction, -1, -1, model->index(0, 0)));
    dropOnRow(table, &files, 3);
    QCOMPARE(storedNames(l.f.data), (QStringList{"B", "C", "D", "A", "E"}));

    // From the keyboard, the selected filter moves one row at a time.
    table->setFocus();
    table->selectRow(0);
    QTest::keyClick(table, Qt::Key_Down, Qt::AltModifier);
    QTest::keyClick(table, Qt::Key_Down, Qt::AltModifier);
    QCOMPARE(liveNames(l.f.data), (QStringList{"C", "D", "B", "A", "E"}));
    QTest::keyClick(table, Qt::Key_Up, Qt::AltModifier);
    QCOMPARE(liveNames(l.f.data), (QStringList{"C", "B", "D", "A", "E"}));
    QCOMPARE(storedNames(l.f.data), liveNames(l.f.data));
    QCOMPARE(l.list->selectedRow(), 1);
    QVERIFY(l.posted.isEmpty());
}

void tst_QuickFilterEditor::removingSparesAllContents()
{
    FilterListFixture l;
    QVERIFY(QTest::qWaitForWindowActive(l.list.get()));
    QCOMPARE(liveNames(l.f.data).first(), "All Contents");
    QPushButton *remove = l.list->buttonRemove();
    QVERIFY(!remove->isEnabled());
    l.list->tableView()->selectRow(0);
    QVERIFY(!remove->isEnabled());
    l.list->tableView()->selectRow(1);
    QVERIFY(remove->isEnabled());
    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(liveNames(l.f.data).mid(0, 2), (QStringList{"All Contents", "Documents"}));
    QCOMPARE(storedNames(l.f.data), liveNames(l.f.data));
    QCOMPARE(l.list->tableView()->verticalHeader()->count(), l.f.data.filterItems().size());
    QCOMPARE(postedNames(l.posted), QStringList{"updateQuickLayouts"});

    // F2 edits the selected filter; closing the editor's window cancels it.
    bool edited = false;
    whenOpen<EditQuickFilterWindowController>(
        l.list.get(), [&](EditQuickFilterWindowController *editor) {
            QCOMPARE(editor->quickFilterItem(), l.f.data.filterItems().at(1));
            child<QLineEdit>(editor, "nameTextField")->setText("Papers");
            editor->close();
            edited = true;
        });
    l.list->tableView()->setFocus();
    l.list->tableView()->selectRow(1);
    QTest::keyClick(l.list->tableView(), Qt::Key_F2);
    QVERIFY(edited);
    QCOMPARE(liveNames(l.f.data).at(1), "Documents");
}

void tst_QuickFilterEditor::cancelKeepsExtensionsButNotTheName()
{
    FilterListFixture l;
    QVERIFY(QTest::qWaitForWindowActive(l.list.get()));
    const auto images = l.f.data.filterItems().at(1);
    const qsizetype extensionCount = images->fileExtensions().size();
    bool sawEditor = false;
    whenOpen<EditQuickFilterWindowController>(
        l.list.get(), [&](EditQuickFilterWindowController *editor) {
            sawEditor = true;
            QCOMPARE(editor->quickFilterItem(), images);
            auto *name = child<QLineEdit>(editor, "nameTextField");
            QCOMPARE(name->text(), "Images");
            QCOMPARE(child<QLineEdit>(editor, "dateValuetextField")->text(), "7");
            // The prompt leaves out dots and spaces and lower-cases the rest.
            whenOpen<FileExtensionWindowController>(
                editor, [](FileExtensionWindowController *prompt) {
                    auto *field = child<QLineEdit>(prompt, "nameTextField");
                    QTest::keyClicks(field, " .JPG ");
                    QTest::keyClick(field, Qt::Key_Return);
                });
            QTest::mouseClick(child<QPushButton>(editor, "buttonAdd"), Qt::LeftButton);
            QVERIFY(!FileExtensionWindowController::isOpen());
            auto *table = child<QTableWidget>(editor, "extensionsTable");
            QCOMPARE(table->rowCount(), extensionCount + 1);
            QCOMPARE(table->item(int(extensionCount), 0)->text(), "jpg");
            // A cancelled prompt adds nothing.
            whenOpen<FileExtensionWindowController>(
                editor, [](FileExtensionWindowController *prompt) {
                    QTest::keyClicks(child<QLineEdit>(prompt, "nameTextField"), "gif");
                    QTest::keyClick(prompt, Qt::Key_Escape);
                });
            QTest::mouseClick(child<QPushButton>(editor, "buttonAdd"), Qt::LeftButton);
            QCOMPARE(table->rowCount(), extensionCount + 1);

            child<QComboBox>(editor, "dateModeCombo")->setCurrentIndex(1);
            QCOMPARE(images->getDateMode(), 1u);
            name->setText("Pictures");
            QTest::keyClick(name, Qt::Key_Escape);
            QVERIFY(!EditQuickFilterWindowController::isOpen());
        });
    const QRect row = l.list->tableView()->visualRect(l.list->model()->index(1, 0));
    // A widget's double click in QtTest is the second click alone.
    QTest::mouseClick(l.list->tableView()->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(l.list->tableView()->viewport(), Qt::LeftButton, {}, row.center());
    QVERIFY(sawEditor);

    QCOMPARE(images->getName(), "Images");
    QCOMPARE(images->getDateMode(), 0u);
    QCOMPARE(storedNames(l.f.data).at(1), "Images");
    QCOMPARE(images->fileExtensions().size(), extensionCount + 1);
    QCOMPARE(images->dataDictionary().value("FileExtensions").toArray().at(extensionCount),
             PropertyValue("jpg"));
    QCOMPARE(postedNames(l.posted), (QStringList{"addFileExtension", "updateQuickLayouts"}));
}

void tst_QuickFilterEditor::savingANewFilter()
{
    FilterListFixture l;
    const qsizetype before = l.f.data.filterItems().size();
    int editors = 0;
    whenOpen<EditQuickFilterWindowController>(
        l.list.get(), [&](EditQuickFilterWindowController *editor) {
            // Only one editor at a time: Add again brings this one forward (a
            // second one would be counted, and cancelled, in its own loop).
            QTimer::singleShot(0, editor, [&] {
                editors = int(l.list->findChildren<EditQuickFilterWindowController *>().size());
                if (EditQuickFilterWindowController::openInstance() != editor)
                    EditQuickFilterWindowController::openInstance()->reject();
            });
            l.list->pressedAdd();
            QCoreApplication::processEvents();
            auto *units = child<QComboBox>(editor, "dateUnitsCombo");
            auto *amount = child<QLineEdit>(editor, "dateValuetextField");
            QVERIFY(!units->isEnabled() && !amount->isEnabled());
            child<QComboBox>(editor, "dateModeCombo")->setCurrentIndex(2);
            QCOMPARE(editor->quickFilterItem()->getDateMode(), 2u);
            QVERIFY(units->isEnabled() && amount->isEnabled());
            child<QComboBox>(editor, "styleComboBox")->setCurrentIndex(3);
            child<QComboBox>(editor, "iconSizeComboBox")->setCurrentIndex(-1);
            child<QComboBox>(editor, "iconStyleComboBox")->setCurrentIndex(1);
            child<QComboBox>(editor, "folderComboBox")->setCurrentIndex(1);
            units->setCurrentIndex(2);
            amount->setText("30");
            auto *name = child<QLineEdit>(editor, "nameTextField");
            QTest::keyClicks(name, "Recent");
            QTest::keyClick(name, Qt::Key_Return);
        });
    QTest::mouseClick(l.list->buttonAdd(), Qt::LeftButton);
    QCOMPARE(editors, 1);

    QCOMPARE(l.f.data.filterItems().size(), before + 1);
    QCOMPARE(storedNames(l.f.data).last(), "Recent");
    QCOMPARE(l.list->tableView()->verticalHeader()->count(), before + 1);
    QuickFilterItem &added = *l.f.data.filterItems().last();
    QVERIFY(!added.createdItem());
    const PropertyDictionary record = l.f.data.getQuickFilters().at(before).toDictionary();
    QVERIFY(record.isSameObject(added.dataDictionary()));
    const auto stored = [&](const char *key) {
        return record.value(key).toInt64();
    };
    QCOMPARE(stored("Style"), 3);
    QCOMPARE(stored("IconSize"), 0xFFFFFFFF);
    QCOMPARE(stored("IconStyle"), 1);
    QCOMPARE(stored("FolderStyle"), 1);
    QCOMPARE(stored("DateMode"), 2);
    QCOMPARE(stored("DateUnits"), 2);
    QCOMPARE(stored("DateValue"), 30);
    QCOMPARE(postedNames(l.posted), (QStringList{"quickFilterChanged", "updateQuickLayouts"}));
    QVERIFY(!EditQuickFilterWindowController::isOpen());

    // A filter saved without a name has an empty one, not none.
    EditQuickFilterWindowController unnamed(l.f.data, l.f.notifications);
    unnamed.pressedSave();
    QVERIFY(l.f.data.getQuickFilters().at(before + 1).toDictionary().value("Name").isString());
}

QTEST_MAIN(tst_QuickFilterEditor)
#include "tst_QuickFilterEditor.moc"
