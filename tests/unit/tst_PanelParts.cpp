#include "FileListModel.h"
#include "FileNames.h"
#include "FileRowDelegate.h"
#include "FileTypeIcons.h"
#include "PanelPlacement.h"
#include "QuickFilterItem.h"
#include "ViewOptionsPopoverViewController.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Pixels of colour inside rect of image.
int countPixels(const QImage &image, const QRect &rect, const std::function<bool(QColor)> &match)
{
    int count = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x)
            count += match(image.pixelColor(x, y));
    return count;
}

QuickFilterItem viewWithIconSize(quint32 size)
{
    QuickFilterItem view;
    view.setIconSize(size);
    return view;
}

} // namespace

class tst_PanelParts : public QObject
{
    Q_OBJECT
private slots:
    void placement_data();
    void placement();
    void previewBesideTheRow();
    void searchMatchesNamesOnly();
    void growingListingKeepsTheSelection();
    void phraseKeepingTheRowsKeepsTheSelection();
    void rowsShowNamesAndGoOneAtATime();
    void everyKindOfItemHasAnIcon();
    void rowHeightsFollowTheIconSize();
    void rowDrawing();
    void viewOptionsSave();
    void viewOptionsCancelKeepsTheDateMode();
};

void tst_PanelParts::placement_data()
{
    QTest::addColumn<QRect>("status");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<QRect>("available");
    QTest::addColumn<QRect>("frame");
    QTest::addColumn<int>("edge");
    QTest::addColumn<int>("arrow");

    const QRect screen(0, 0, 1440, 900);
    const QSize panel(400, 300);
    // Top bar: centred under the item, pushed left to 12 px inside the right edge.
    QTest::newRow("top bar, item at the right")
        << QRect(1380, 2, 20, 20) << panel << screen << QRect(0, 24, 1440, 876)
        << QRect(1028, 24, 400, 300) << int(Qt::TopEdge) << 1390 - 1028;
    // A pointer at the far left of a top bar: the frame and the arrow stay inside.
    QTest::newRow("top bar, pointer at the left")
        << QRect(3, 10, 1, 1) << panel << screen << QRect(0, 30, 1440, 870)
        << QRect(12, 30, 400, 300) << int(Qt::TopEdge) << 8 + 12;
    QTest::newRow("bottom bar") << QRect(700, 870, 22, 22) << panel << screen
                                << QRect(0, 0, 1440, 860) << QRect(511, 560, 400, 300)
                                << int(Qt::BottomEdge) << 200;
    QTest::newRow("left bar") << QRect(10, 400, 28, 28) << panel << screen
                              << QRect(48, 0, 1392, 900) << QRect(48, 264, 400, 300)
                              << int(Qt::LeftEdge) << 150;
    // Low on a right bar: 12 px above the bottom, the arrow as far down as the corner allows.
    QTest::newRow("right bar") << QRect(1400, 880, 28, 16) << panel << screen
                               << QRect(0, 0, 1392, 900) << QRect(992, 588, 400, 300)
                               << int(Qt::RightEdge) << 300 - 8 - 12;
    // No struts (an autohiding bar): the side with more room, just below the pointer.
    QTest::newRow("pointer, no struts") << QRect(700, 5, 1, 1) << panel << screen << screen
                                        << QRect(501, 6, 400, 300) << int(Qt::TopEdge) << 200;
    // An XEmbed tray in a corner, no struts: the bar runs along the top or the
    // bottom, though the side edge is nearer.
    const QRect small(0, 0, 1280, 800);
    QTest::newRow("tray in the bottom right corner, no struts")
        << QRect(1257, 773, 22, 26) << QSize(400, 560) << small << small
        << QRect(868, 213, 400, 560) << int(Qt::BottomEdge) << 400 - 8 - 12;
    QTest::newRow("tray in the top right corner, no struts")
        << QRect(1257, 1, 22, 26) << QSize(400, 560) << small << small << QRect(868, 27, 400, 560)
        << int(Qt::TopEdge) << 400 - 8 - 12;
    QTest::newRow("taller than the screen")
        << QRect(1380, 2, 20, 20) << QSize(400, 2000) << screen << QRect(0, 24, 1440, 876)
        << QRect(1028, 24, 400, 876) << int(Qt::TopEdge) << 1390 - 1028;
}

void tst_PanelParts::placement()
{
    QFETCH(QRect, status);
    QFETCH(QSize, size);
    QFETCH(QRect, screen);
    QFETCH(QRect, available);
    const PanelPlacement::Result result = PanelPlacement::place(status, size, screen, available);
    QTEST(result.frame, "frame");
    QTEST(int(result.arrowEdge), "edge");
    QTEST(result.arrowPosition, "arrow");
    QVERIFY(available.contains(result.frame));
}

// Right of the row where the screen has room, else left of it, else on the
// roomier side; always on the screen and level with the row where it can be.
void tst_PanelParts::previewBesideTheRow()
{
    const QRect screen(0, 24, 1440, 876);
    const QSize size(404, 500);
    const QRect row(100, 300, 380, 20); // right edge at 480
    QCOMPARE(PanelPlacement::popoverBesideRow(row, size, screen), QRect(505, 60, 404, 500));
    const QRect atRight(1000, 300, 380, 20);
    QCOMPARE(PanelPlacement::popoverBesideRow(atRight, size, screen).topLeft(), QPoint(571, 60));
    // Near the top, it keeps off the screen's edge.
    QCOMPARE(PanelPlacement::popoverBesideRow(QRect(100, 30, 380, 20), size, screen).y(), 28);
    // A narrow screen: 300 free on the right, 200 on the left.
    const QRect narrow(0, 0, 1020, 900);
    const QRect middle(225, 300, 470, 20);
    const QRect placed = PanelPlacement::popoverBesideRow(middle, size, narrow);
    QCOMPARE(placed.right(), narrow.right() - 4);
    QVERIFY(narrow.contains(placed));
}

void tst_PanelParts::searchMatchesNamesOnly()
{
    const QStringList paths{"/s/Q1 Report.pdf", "/s/q1 report.pdf", "/s/Report/x.txt", "/s/Report",
                            "/s/Annual Report 2.txt"};
    QCOMPARE(FileListModel::filterDirContents(paths, "Report"),
             (QStringList{"/s/Q1 Report.pdf", "/s/Report", "/s/Annual Report 2.txt"}));
    QCOMPARE(FileListModel::filterDirContents(paths, ""), paths);

    FileListModel model(FileTypeIcons::shared());
    model.storeFilteredArray(paths);
    model.setSearchPhrase("q1");
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.pathAt(0), "/s/q1 report.pdf");
    model.storeFilteredArray(paths.mid(0, 1)); // a new listing keeps the phrase
    QCOMPARE(model.rowCount(), 0);
}

void tst_PanelParts::growingListingKeepsTheSelection()
{
    FileListModel model(FileTypeIcons::shared());
    QItemSelectionModel selection(&model);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QStringList listing{"/s/a.txt", "/s/b.txt"};
    model.storeFilteredArray(listing);
    selection.select(model.index(1), QItemSelectionModel::Select);

    // Partial lists as a listing grows: rows come at the end, the selection stays.
    listing << "/s/c.txt"
            << "/s/d.pdf";
    model.storeFilteredArray(listing);
    model.storeFilteredArray(listing); // the same again changes nothing
    QCOMPARE(model.dirContentsFiltered(), listing);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(selection.selectedRows(), QModelIndexList{model.index(1)});

    // With a phrase, only what matches is added.
    model.setSearchPhrase(".txt");
    selection.select(model.index(0), QItemSelectionModel::Select);
    model.storeFilteredArray(listing + QStringList{"/s/e.pdf", "/s/f.txt"});
    QCOMPARE(model.dirContentsFiltered(),
             (QStringList{"/s/a.txt", "/s/b.txt", "/s/c.txt", "/s/f.txt"}));
    QCOMPARE(selection.selectedRows().size(), 1);

    // A listing that does not begin with the last one replaces it.
    model.storeFilteredArray({"/s/b.txt"});
    QCOMPARE(model.dirContentsFiltered(), QStringList{"/s/b.txt"});
    QVERIFY(!selection.hasSelection());
}

void tst_PanelParts::phraseKeepingTheRowsKeepsTheSelection()
{
    const QStringList listing{"/s/Report 1.txt", "/s/Report 2.pdf", "/s/Rep/notes.txt",
                              "/s/Summary.txt"};
    FileListModel model(FileTypeIcons::shared());
    QItemSelectionModel selection(&model);
    model.storeFilteredArray(listing);
    model.setSearchPhrase("Rep");
    selection.select(model.index(0), QItemSelectionModel::Select);

    // Longer and shorter phrases that leave the same rows leave the selection.
    model.setSearchPhrase("Repo");
    model.setSearchPhrase("po");
    QCOMPARE(model.dirContentsFiltered(), (QStringList{"/s/Report 1.txt", "/s/Report 2.pdf"}));
    QCOMPARE(selection.selectedRows(), QModelIndexList{model.index(0)});

    // Narrowing, then widening past the rows shown: every phrase searches the
    // whole listing's names.
    model.setSearchPhrase("port 2");
    QCOMPARE(model.dirContentsFiltered(), QStringList{"/s/Report 2.pdf"});
    model.setSearchPhrase("t");
    QCOMPARE(model.dirContentsFiltered(), listing);
}

void tst_PanelParts::rowsShowNamesAndGoOneAtATime()
{
    const QString odd = FileNames::decode("/s/bad\xff name");
    FileListModel model(FileTypeIcons::shared());
    model.storeFilteredArray({"/s/a.txt", odd, "/s/c.txt"});
    const QModelIndex second = model.index(1);
    QCOMPARE(second.data().toString(), QString("bad\uFFFD name"));
    QCOMPARE(second.data(Qt::AccessibleTextRole), second.data());
    QCOMPARE(second.data(FileListModel::PathRole).toString(), odd);
    QVERIFY(!model.flags(second).testFlag(Qt::ItemIsEditable));

    QSignalSpy removing(&model, &QAbstractItemModel::rowsAboutToBeRemoved);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    model.removeRowAt(1);
    model.removeRowAt(7);
    QCOMPARE(removing.count(), 1);
    QCOMPARE(removing.at(0).at(1).toInt(), 1);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(model.dirContentsFiltered(), (QStringList{"/s/a.txt", "/s/c.txt"}));
    model.setSearchPhrase(""); // the removed row does not come back with the next search
    QCOMPARE(model.rowCount(), 2);
}

void tst_PanelParts::everyKindOfItemHasAnIcon()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    QVERIFY(QDir(root).mkpath("folder") && QDir(root).mkpath("Tool.app"));
    QFile(root + "/notes.txt").open(QIODevice::WriteOnly);
    QFile(root + "/no type").open(QIODevice::WriteOnly);
    QVERIFY(QFile::link(root + "/notes.txt", root + "/link"));
    FileTypeIcons icons;
    QImage folder;
    for (const QString name : {"folder", "Tool.app", "notes.txt", "no type", "link", "gone.png"}) {
        const QImage image = icons.forPath(root + "/" + name).pixmap(32).toImage();
        QVERIFY2(!image.isNull(), qPrintable(name));
        if (name == "folder")
            folder = image;
        else
            QVERIFY2(image != folder, qPrintable(name)); // told apart from a folder
    }
}

void tst_PanelParts::rowHeightsFollowTheIconSize()
{
    QCOMPARE(FileRowDelegate::rowHeight(nullptr), 22);
    const QList<int> heights{22, 44, 66, 128, 22};
    for (quint32 size = 0; size < 5; ++size) {
        const QuickFilterItem view = viewWithIconSize(size);
        QCOMPARE(FileRowDelegate::rowHeight(&view), heights.at(size));
    }
}

void tst_PanelParts::rowDrawing()
{
    const QRect row(10, 0, 300, 44);
    QCOMPARE(FileRowDelegate::iconRect(row), QRect(15, 2, 40, 40));
    QCOMPARE(FileRowDelegate::nameOrigin(row), QPoint(58, 2));

    FileListModel model(FileTypeIcons::shared());
    model.storeFilteredArray({"/s/MMMM", "/s/MMMM", "/s/MMMM"});
    FileRowDelegate delegate;
    delegate.setRowHeight(44);
    QCOMPARE(delegate.sizeHint(QStyleOptionViewItem(), model.index(0)).height(), 44);
    QImage image(320, 3 * 44, QImage::Format_ARGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    for (int i = 0; i < 3; ++i) {
        QStyleOptionViewItem option;
        option.rect = row.translated(0, i * 44);
        option.state =
            QStyle::State_Enabled | (i == 2 ? QStyle::State_Selected : QStyle::State_None);
        delegate.paint(&painter, option, model.index(i));
    }
    painter.end();
    // Rows counted from 0: even, odd, then the selected one.
    QCOMPARE(image.pixelColor(300, 40).rgb(), FileRowDelegate::kEvenBackground.rgb());
    QCOMPARE(image.pixelColor(300, 44 + 40).rgb(), FileRowDelegate::kOddBackground.rgb());
    QCOMPARE(image.pixelColor(300, 88 + 40).rgb(), FileRowDelegate::kSelectedBackground.rgb());
    const auto white = [](QColor c) {
        return qMin(qMin(c.red(), c.green()), c.blue()) >= 250;
    };
    const auto dark = [](QColor c) {
        return c.lightnessF() < 0.5;
    };
    const QRect name(58, 2, 100, 18);
    QCOMPARE(countPixels(image, name, white), 0);
    QVERIFY(countPixels(image, name, dark) > 10);
    QVERIFY(countPixels(image, name.translated(0, 88), white) > 10);
    int firstInk = 56; // right of the icon: where the name begins
    while (firstInk < 120 && countPixels(image, QRect(firstInk, 2, 1, 20), dark) == 0)
        ++firstInk;
    QVERIFY2(firstInk >= 58 && firstInk <= 61, qPrintable(QString::number(firstInk)));
    const auto black = [](QColor c) {
        return c == Qt::black;
    };
    QCOMPARE(countPixels(image, QRect(0, 0, 10, 3 * 44), black),
             10 * 3 * 44); // nothing left of the rows
}

void tst_PanelParts::viewOptionsSave()
{
    PropertyDictionary record;
    record.insert("Name", "Images");
    QuickFilterItem item(record);
    ViewOptionsPopoverViewController popover(item);
    QCOMPARE(popover.findChild<QLabel *>("titletextField")->text(), "Images View Options");
    auto *dateMode = popover.findChild<QComboBox *>("dateModeCombo");
    auto *units = popover.findChild<QComboBox *>("dateUnitsCombo");
    auto *value = popover.findChild<QLineEdit *>("dateValuetextField");
    QVERIFY(!units->isEnabled() && !value->isEnabled());
    QCOMPARE(value->text(), "7");

    dateMode->setCurrentIndex(2);
    QVERIFY(units->isEnabled() && value->isEnabled());
    units->setCurrentIndex(3);
    popover.findChild<QComboBox *>("styleComboBox")->setCurrentIndex(1);
    popover.findChild<QComboBox *>("iconSizeComboBox")->setCurrentIndex(2);
    popover.findChild<QComboBox *>("folderComboBox")->setCurrentIndex(1);
    popover.findChild<QComboBox *>("iconStyleComboBox")->setCurrentIndex(1);
    value->clear();
    QTest::keyClicks(value, "3x0");
    QCOMPARE(value->text(), "30");

    QSignalSpy applied(&popover, &ViewOptionsPopoverViewController::applyViewOptionsChange);
    QTest::keyClick(value, Qt::Key_Return);
    QCOMPARE(applied.count(), 1);
    QCOMPARE(applied.at(0).at(0).value<QuickFilterItem *>(), &item);
    QCOMPARE(record.value("Style").toInt64(), 1);
    QCOMPARE(record.value("IconSize").toInt64(), 2);
    QCOMPARE(record.value("FolderStyle").toInt64(), 1);
    QCOMPARE(record.value("IconStyle").toInt64(), 1);
    QCOMPARE(record.value("DateMode").toInt64(), 2);
    QCOMPARE(record.value("DateUnits").toInt64(), 3);
    QCOMPARE(record.value("DateValue").toInt64(), 30);
}

void tst_PanelParts::viewOptionsCancelKeepsTheDateMode()
{
    PropertyDictionary record;
    record.insert("Name", "Music");
    QuickFilterItem item(record);
    // Inside a window that closes on Escape, as the panel does.
    QWidget panel;
    QShortcut closePanel(Qt::Key_Escape, &panel);
    QSignalSpy closed(&closePanel, &QShortcut::activated);
    auto *popover = new ViewOptionsPopoverViewController(item, &panel);
    panel.show();
    panel.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    auto *dateMode = popover->findChild<QComboBox *>("dateModeCombo");
    dateMode->setFocus();
    dateMode->setCurrentIndex(1);
    QCOMPARE(item.getDateMode(), 1u);
    QVERIFY(popover->findChild<QComboBox *>("dateUnitsCombo")->isEnabled());

    QSignalSpy cancelled(popover, &ViewOptionsPopoverViewController::cancelViewOptionsChange);
    QSignalSpy applied(popover, &ViewOptionsPopoverViewController::applyViewOptionsChange);
    QTest::keyClick(dateMode, Qt::Key_Escape);
    QCOMPARE(cancelled.count(), 1);
    QCOMPARE(closed.count(), 0);
    QCOMPARE(applied.count(), 0);
    QCOMPARE(item.getDateMode(), 1u);
    QVERIFY(!record.contains("DateMode"));
}

QTEST_MAIN(tst_PanelParts)
#include "tst_PanelParts.moc"
