#include "DroppedItemsMover.h"
#include "EngineFixture.h"
#include "FakeThumbnailService.h"
#include "FileListModel.h"
#include "FileRowDelegate.h"
#include "JournalFixture.h"
#include "PanelController.h"
#include "PanelControllerDelegate.h"
#include "PanelTableView.h"
#include "PanelWindow.h"
#include "PreviewPopoverViewController.h"
#include "ThumbnailLoader.h"
#include "TmpfsMount.h"
#include "ViewOptionsPopoverViewController.h"
#include "ui_Panel.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <condition_variable>
#include <mutex>

#include <fcntl.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

// The parts of a widget painted since it was watched.
class PaintRecorder : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    QRegion m_painted;
};

class RecordingPanelDelegate : public PanelControllerDelegate
{
public:
    QRect statusItemRectForPanelController(PanelController &) override { return m_statusRect; }
    void doTidy() override { m_calls << "doTidy"; }
    void restoreFiles() override { m_calls << "restoreFiles"; }
    void restoreAllFiles() override { m_calls << "restoreAllFiles"; }
    void emptyShadowDesktop() override { m_calls << "emptyShadowDesktop"; }
    void emailSupport() override { m_calls << "emailSupport"; }
    void reviewApp() override { m_calls << "reviewApp"; }
    void openSupport() override { m_calls << "openSupport"; }
    void openHelp() override { m_calls << "openHelp"; }
    void openAboutWindow() override { m_calls << "openAboutWindow"; }
    void checkForUpdates() override { m_calls << "checkForUpdates"; }
    void terminate() override { m_calls << "terminate"; }
    bool canOpenTutorial() const override { return false; }
    void openTutorial() override { m_calls << "openTutorial"; }
    bool canOpenPreferences() const override { return false; }

    QRect m_statusRect{1400, 0, 24, 24};
    QStringList m_calls;
};

// A panel over a sandbox whose Shadow Desktop holds a few items.
struct PanelFixture
{
    EngineFixture f;
    RecordingPanelDelegate delegate;
    FakeThumbnailService thumbnails;
    std::unique_ptr<PanelController> panel;

    PanelFixture()
    {
        f.load();
        const QString shadow = f.sandbox.shadowDesktop();
        QDir().mkpath(shadow + "/Reports/2024");
        QDir().mkpath(shadow + "/Tool.app/Contents");
        f.sandbox.write(".local/share/Brevano/Shadow Desktop/Q1 Report.pdf", "r");
        f.sandbox.write(".local/share/Brevano/Shadow Desktop/q1 report.pdf", "r");
        f.sandbox.write(".local/share/Brevano/Shadow Desktop/photo.png", "p");
        f.sandbox.write(".local/share/Brevano/Shadow Desktop/Reports/Summary.txt", "s");
        f.sandbox.write(".local/share/Brevano/Shadow Desktop/Reports/2024/Old.txt", "o");
        makePanel();
    }
    void makePanel()
    {
        panel.reset(); // the settings of the last one are written first
        panel = std::make_unique<PanelController>(
            PanelController::Services{f.data, f.engine, f.fileViewer, f.scheduler, f.notifications,
                                      thumbnails, f.alerts},
            delegate);
        panel->setShiftHeldQuery([this] { return m_shift; });
    }
    Ui::Panel &ui() const { return panel->window()->ui(); }
    QStringList names() const
    {
        QStringList names;
        for (const QString &path : panel->model().dirContentsFiltered())
            names << path.mid(path.lastIndexOf('/') + 1);
        return names;
    }
    // Runs what the panel scheduled for now and waits for the listing.
    void waitForListing()
    {
        QSignalSpy completed(panel.get(), &PanelController::fileListCompleted);
        f.scheduler.advance(0ms);
        QVERIFY(completed.count() > 0 || completed.wait(5000));
    }
    void open()
    {
        panel->setHasActivePanel(true);
        waitForListing();
    }
    // Pinned, so that only what a test does closes the panel: the test
    // platform hands the keyboard to each window it shows, previews included.
    void openPinned()
    {
        f.data.setPin(true);
        open();
    }
    int rowOf(const QString &name) const { return int(names().indexOf(name)); }
    // What a file manager does with the rows dragged onto the Desktop.
    void moveToDesktop(const QStringList &names) const
    {
        for (const QString &name : names)
            QVERIFY(QFile::rename(f.sandbox.shadowDesktop() + "/" + name,
                                  f.sandbox.desktop() + "/" + name));
    }
    QString shadowPath(const QString &name) const { return f.sandbox.shadowDesktop() + "/" + name; }
    bool m_shift = false;
};

// Files dragged from another program onto the panel's rows.
struct Dropping
{
    PanelFixture &p;
    QMimeData mime;
    Dropping(PanelFixture &panel, const QList<QUrl> &urls) : p(panel) { mime.setUrls(urls); }
    PanelTableView *table() const { return p.ui().tableView; }
    // The middle of the row, or its top edge: between it and the one above.
    QPoint at(const QString &name, bool between = false) const
    {
        const QRect rect = table()->visualRect(p.panel->model().index(p.rowOf(name)));
        return between ? QPoint(rect.center().x(), rect.top() + 1) : rect.center();
    }
    Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction; // what the source allows
    // Whether the pointer there shows that a drop is taken, and as a move.
    bool allowedAt(const QPoint &pos)
    {
        QDragEnterEvent enter(pos, actions, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(table()->viewport(), &enter);
        QDragMoveEvent move(pos, actions, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(table()->viewport(), &move);
        entered = enter.isAccepted();
        return entered && move.isAccepted() && move.dropAction() == Qt::MoveAction;
    }
    // Drops there; the source must never hear "taken". Qt hands a drop only
    // to a widget that let the drag in.
    void drop(const QPoint &pos)
    {
        allowedAt(pos);
        QDropEvent drop(pos, actions, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(table()->viewport(), &drop);
        QVERIFY(!drop.isAccepted());
        if (entered)
            QCOMPARE(drop.dropAction(), Qt::IgnoreAction);
    }
    bool entered = false;
    // Drops there and waits for the moves and the listing after them.
    void dropAt(const QPoint &pos)
    {
        drop(pos);
        if (p.panel->dropMover().isBusy()) {
            QSignalSpy moved(&p.panel->dropMover(), &DroppedItemsMover::finished);
            QVERIFY(moved.wait(5000));
        }
        if (p.panel->isListing())
            p.waitForListing();
    }
};

// Holds the drop mover's thread before each move until the test opens it.
struct MoveGate
{
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    QStringList arrived;
    bool onMainThread = false;

    void pass(const QString &source)
    {
        std::unique_lock lock(mutex);
        arrived << source;
        changed.notify_all();
        if (QThread::currentThread() == qApp->thread())
            onMainThread = true; // waiting here would hang the test
        else
            changed.wait_for(lock, std::chrono::seconds(30), [this] { return open; });
    }
    void setOpen()
    {
        const std::lock_guard lock(mutex);
        open = true;
        changed.notify_all();
    }
    bool waitForArrivals(qsizetype count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30),
                                [&] { return arrived.size() >= count; });
    }
};

} // namespace

class TestPanel : public QObject
{
    Q_OBJECT

private slots:
    void opensAtTheStatusItemAndClosesAsAsked()
    {
        PanelFixture p;
        QSignalSpy changes(p.panel.get(), &PanelController::hasActivePanelChanged);
        p.open();
        QVERIFY(p.panel->window()->isVisible());
        QCOMPARE(changes.count(), 1);
        // Folders first; a package is one item among the files.
        QCOMPARE(p.names().first(), QString("Reports"));
        QCOMPARE(p.names().size(), 5);
        QVERIFY(p.names().contains("Tool.app"));
        QVERIFY(!p.ui().progressIndicator->isVisible());
        QVERIFY(!p.ui().scanningLabel->isVisible());

        // Losing the focus closes an unpinned panel...
        QEvent deactivate(QEvent::WindowDeactivate);
        QApplication::sendEvent(p.panel->window(), &deactivate);
        QVERIFY(!p.panel->hasActivePanel());
        QTRY_VERIFY(!p.panel->window()->isVisible());
        QCOMPARE(changes.count(), 2);

        // ...but not a pinned one, which Escape still closes.
        p.ui().buttonPin->click();
        QVERIFY(p.f.data.getPin());
        p.open();
        QApplication::sendEvent(p.panel->window(), &deactivate);
        QVERIFY(p.panel->hasActivePanel());
        QTest::keyClick(p.panel->window(), Qt::Key_Escape);
        QVERIFY(!p.panel->hasActivePanel());
        QCOMPARE(changes.count(), 4);
    }

    void remembersItsSizeAndWaitsBeforeFocusingTheSearch()
    {
        PanelFixture p;
        // An icon at the screen's very edge: the arrow stays clear of the corner.
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        p.delegate.m_statusRect = QRect(screen.right() - 2, screen.top(), 3, 3);
        p.open();
        const PanelWindow *window = p.panel->window();
        QVERIFY(window->arrowPosition() <= window->width() - 20);
        QVERIFY(window->arrowPosition() > window->width() / 2);
        p.panel->window()->resize(500, 640);
        p.panel->setHasActivePanel(false);
        p.makePanel();
        p.open();
        QCOMPARE(p.panel->window()->size(), QSize(500, 640));

        // A current row the view chose itself does not keep the search field
        // from the keys; a key pressed in the rows does.
        p.panel->window()->activateWindow();
        QTRY_VERIFY(QApplication::activeWindow() == p.panel->window());
        p.ui().tableView->setCurrentIndex(p.panel->model().index(0));
        p.f.scheduler.advance(300ms);
        QVERIFY(p.ui().searchField->hasFocus());
        p.panel->setHasActivePanel(false);
        p.open();
        QTest::keyClick(p.ui().tableView, Qt::Key_Down);
        p.f.scheduler.advance(300ms);
        QVERIFY(!p.ui().searchField->hasFocus());

        p.panel->setHasActivePanel(false);
        p.m_shift = true;
        p.panel->setHasActivePanel(true);
        p.panel->window()->activateWindow();
        QTRY_VERIFY(QApplication::activeWindow() == p.panel->window());
        p.f.scheduler.advance(2999ms);
        QVERIFY(!p.ui().searchField->hasFocus());
        p.f.scheduler.advance(1ms);
        QVERIFY(p.ui().searchField->hasFocus());
    }

    void aTidyKeepsTheRowsAndTheCurrentRow()
    {
        PanelFixture p;
        p.open();
        p.ui().tableView->setCurrentIndex(p.panel->model().index(p.rowOf("photo.png")));
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/0 new.txt", "n");
        QSignalSpy completed(p.panel.get(), &PanelController::fileListCompleted);
        bool cleared = false; // while the new list comes
        connect(&p.panel->model(), &QAbstractItemModel::modelReset, this,
                [&] { cleared = cleared || p.panel->model().rowCount() == 0; });
        p.f.notifications.post(NotificationCenter::TidyComplete);
        QVERIFY(completed.wait(5000));
        QVERIFY(!cleared);
        QVERIFY(p.names().contains("0 new.txt"));
        QCOMPARE(p.panel->model().pathAt(p.ui().tableView->currentIndex().row()),
                 p.f.sandbox.shadowDesktop() + "/photo.png");
    }

    void searchNarrowsTheListingByName()
    {
        PanelFixture p;
        p.open();
        const int all = int(p.names().size());
        QTest::keyClicks(p.ui().searchField, "Report");
        QCOMPARE(p.names(), QStringList({"Reports", "Q1 Report.pdf"}));
        QCOMPARE(p.ui().textField->text(), QString("Search for ‘Report’…"));
        QVERIFY(!p.panel->isListing()); // typing lists nothing anew
        p.ui().searchField->clear();
        QCOMPARE(p.names().size(), all);
        QCOMPARE(p.ui().textField->text(), QString());
    }

    void navigatesFoldersAndPackages()
    {
        PanelFixture p;
        p.open();
        const QString root = p.f.sandbox.shadowDesktop();
        QVERIFY(!p.ui().buttonBack->isEnabled());

        p.panel->doubleClickedRow(p.rowOf("Reports"));
        p.waitForListing();
        QCOMPARE(p.panel->currentPath(), root + "/Reports");
        QCOMPARE(p.names(), QStringList({"2024", "Summary.txt"}));
        QVERIFY(p.ui().buttonBack->isEnabled());

        // Keys: Return enters, Backspace goes up.
        p.ui().tableView->setCurrentIndex(p.panel->model().index(0));
        QTest::keyClick(p.ui().tableView, Qt::Key_Return);
        p.waitForListing();
        QCOMPARE(p.panel->currentPath(), root + "/Reports/2024");
        QTest::keyClick(p.ui().tableView, Qt::Key_Backspace);
        p.waitForListing();
        QCOMPARE(p.panel->currentPath(), root + "/Reports");

        p.panel->pressedShadowDesktop();
        p.waitForListing();
        QVERIFY(!p.ui().buttonBack->isEnabled());
        p.panel->doubleClickedRow(p.rowOf("Tool.app")); // a package is entered too
        p.waitForListing();
        QCOMPARE(p.panel->currentPath(), root + "/Tool.app");

        p.panel->pathControlClicked(root);
        p.waitForListing();
        p.panel->doubleClickedRow(p.rowOf("photo.png"));
        QCOMPARE(p.f.fileViewer.m_calls, QStringList("open " + root + "/photo.png"));
        p.panel->doubleClickedRow(-1); // no row: nothing
        QCOMPARE(p.f.fileViewer.m_calls.size(), 1);
    }

    void restoresAndTrashesTheClickedRow()
    {
        PanelFixture p;
        p.open();
        const auto visible = [&p] {
            QStringList shown;
            for (QAction *action : p.panel->fileMenu()->actions())
                if (action->isVisible() && !action->isSeparator())
                    shown << action->text();
            return shown;
        };
        p.panel->menuNeedsUpdate(p.rowOf("Q1 Report.pdf"));
        QVERIFY(visible().contains("Restore to Desktop"));
        QVERIFY(!visible().contains("Items in Folders Cannot Be Restored"));
        p.panel->pressedFileRestoreAndIgnore();
        QVERIFY(QFile::exists(p.f.sandbox.desktop() + "/Q1 Report.pdf"));
        QVERIFY(p.f.data.shouldIgnoreFile(p.f.sandbox.desktop() + "/Q1 Report.pdf"));
        QVERIFY(!p.names().contains("Q1 Report.pdf"));

        // The menu acts on the item it was opened for, though a listing moves the rows.
        const QString shadow = p.f.sandbox.shadowDesktop();
        p.panel->menuNeedsUpdate(p.rowOf("photo.png"));
        QStringList reordered = p.panel->model().dirContents();
        std::reverse(reordered.begin(), reordered.end());
        p.panel->model().storeFilteredArray(reordered);
        p.panel->pressedFileTrash();
        QVERIFY(!QFile::exists(shadow + "/photo.png"));
        QVERIFY(QFile::exists(p.f.sandbox.home() + "/.local/share/Trash/files/photo.png"));
        QVERIFY(!p.names().contains("photo.png"));
        QVERIFY(QFile::exists(shadow + "/q1 report.pdf"));

        // A restore that cannot be done leaves the item and its row, and says why.
        p.f.desktopItem("q1 report.pdf");
        p.panel->menuNeedsUpdate(p.rowOf("q1 report.pdf"));
        p.panel->pressedFileRestore();
        QVERIFY(p.names().contains("q1 report.pdf"));
        QCOMPARE(p.ui().textField->toolTip(),
                 QString("Could not restore “q1 report.pdf”: an item of that name is on the "
                         "Desktop"));

        // Delete trashes every selected row.
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/a.txt", "a");
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/b.txt", "b");
        p.panel->buildFileList();
        p.waitForListing();
        QItemSelectionModel *selection = p.ui().tableView->selectionModel();
        selection->select(p.panel->model().index(p.rowOf("a.txt")), QItemSelectionModel::Select);
        selection->select(p.panel->model().index(p.rowOf("b.txt")), QItemSelectionModel::Select);
        QTest::keyClick(p.ui().tableView, Qt::Key_Delete);
        QVERIFY(!QFile::exists(shadow + "/a.txt"));
        QVERIFY(!QFile::exists(shadow + "/b.txt"));
        QVERIFY(QFile::exists(shadow + "/q1 report.pdf"));

        // Inside a folder nothing can be restored from here.
        p.panel->doubleClickedRow(p.rowOf("Reports"));
        p.waitForListing();
        p.panel->menuNeedsUpdate(p.rowOf("Summary.txt"));
        QVERIFY(visible().contains("Items in Folders Cannot Be Restored"));
        QVERIFY(!visible().contains("Restore to Desktop"));
        QVERIFY(!visible().contains("Restore to Desktop and Ignore"));
    }

    void draggedRowsGoOutAsFileUrlsInRowOrder()
    {
        PanelFixture p;
        // A name that is not UTF-8 keeps its bytes in the URL and back.
        const QByteArray shadow = FileNames::encode(p.f.sandbox.shadowDesktop());
        const int fd = ::open(shadow + "/caf\xe9.txt", O_WRONLY | O_CREAT | O_EXCL, 0600);
        QVERIFY(fd >= 0);
        ::close(fd);
        // QTemporaryDir cannot name it to remove it.
        const auto unlink = qScopeGuard([&shadow] { ::unlink(shadow + "/caf\xe9.txt"); });
        p.open();
        const QString odd = FileNames::decode(shadow + "/caf\xe9.txt");
        const int oddRow = int(p.panel->model().dirContentsFiltered().indexOf(odd));
        QVERIFY(oddRow >= 0);
        const int photoRow = p.rowOf("photo.png");
        const int reportsRow = p.rowOf("Reports");
        std::unique_ptr<QMimeData> mime(p.panel->model().mimeData(
            {p.panel->model().index(photoRow), p.panel->model().index(oddRow),
             p.panel->model().index(reportsRow)}));
        QList<int> rows{photoRow, oddRow, reportsRow};
        std::sort(rows.begin(), rows.end());
        QStringList expected;
        for (int row : rows)
            expected << p.panel->model().pathAt(row);
        QCOMPARE(PanelTableView::localPaths(mime.get()), expected);
        QVERIFY(mime->data("text/uri-list").contains("/caf%E9.txt\r\n"));
        QVERIFY(mime->data("text/uri-list").contains("/Shadow%20Desktop/photo.png"));

        // The drag's start counts the Desktop's entries, hidden ones too. The
        // press that began it selected the row: no preview comes over the rows.
        p.f.desktopItem(".hidden");
        p.f.desktopItem("a.txt");
        p.ui().tableView->setCurrentIndex(p.panel->model().index(photoRow));
        p.panel->tableViewDraggingSessionWillBeginAtPoint({p.shadowPath("photo.png")});
        QCOMPARE(p.panel->filesOnDesktopBeforeDrag(), 2);
        p.f.scheduler.advance(PanelController::kPreviewDelay);
        QVERIFY(!p.panel->previewPopover());
    }

    void filesDraggedBackToTheDesktopAreOfferedForTheIgnoreList()
    {
        PanelFixture p;
        p.open();
        const QString desktop = p.f.sandbox.desktop();
        QList<Alert> &alerts = p.f.alerts.m_alerts;
        const auto drag = [&p](const QStringList &names, Qt::DropAction done, bool landed = true) {
            QStringList paths;
            for (const QString &name : names)
                paths << p.shadowPath(name);
            p.panel->tableViewDraggingSessionWillBeginAtPoint(paths);
            if (landed)
                p.moveToDesktop(names);
            p.panel->tableViewDraggingSessionEndedAtPoint(paths, done);
        };

        // One file, "Yes": the Desktop path goes on the ignore list, and the
        // unpinned panel stays open under the question.
        p.f.alerts.m_whileShown = [&p](const Alert &) {
            QEvent deactivate(QEvent::WindowDeactivate);
            QApplication::sendEvent(p.panel->window(), &deactivate);
        };
        drag({"photo.png"}, Qt::MoveAction);
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts.at(0).title,
                 QString("It looks like you just dragged a file back to the Desktop. Would you "
                         "like Brevano to ignore these files when tidying?"));
        QCOMPARE(alerts.at(0).message, QString());
        QCOMPARE(alerts.at(0).buttons, QStringList({"Yes", "No"}));
        QVERIFY(p.f.data.shouldIgnoreFile(desktop + "/photo.png"));
        QVERIFY(p.panel->hasActivePanel());
        p.f.alerts.m_whileShown = nullptr;
        p.waitForListing();
        QVERIFY(!p.names().contains("photo.png"));

        // Two, "No": the plural question, and nothing ignored.
        p.f.alerts.m_answer = 1;
        drag({"Q1 Report.pdf", "q1 report.pdf"}, Qt::MoveAction);
        QCOMPARE(alerts.size(), 2);
        QVERIFY(alerts.at(1).title.startsWith("It looks like you just dragged files back"));
        QVERIFY(!p.f.data.shouldIgnoreFile(desktop + "/Q1 Report.pdf"));
        QVERIFY(!p.f.data.shouldIgnoreFile(desktop + "/q1 report.pdf"));

        // A copy, or a move that left the Desktop's count as it was (to another
        // folder, beside a Desktop item of the same name), asks nothing.
        p.f.alerts.m_answer = 0;
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/copied.txt", "c");
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/elsewhere.txt", "e");
        p.f.desktopItem("elsewhere.txt");
        p.panel->tableViewDraggingSessionWillBeginAtPoint({p.shadowPath("copied.txt")});
        QVERIFY(QFile::copy(p.shadowPath("copied.txt"), desktop + "/copied.txt"));
        p.panel->tableViewDraggingSessionEndedAtPoint({p.shadowPath("copied.txt")}, Qt::CopyAction);
        p.panel->tableViewDraggingSessionWillBeginAtPoint({p.shadowPath("elsewhere.txt")});
        QVERIFY(QFile::rename(p.shadowPath("elsewhere.txt"), p.f.sandbox.home() + "/e.txt"));
        p.panel->tableViewDraggingSessionEndedAtPoint({p.shadowPath("elsewhere.txt")},
                                                      Qt::MoveAction);
        QCOMPARE(alerts.size(), 2);

        // A file manager that moves the file a moment after the drag ended.
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/late.txt", "l");
        drag({"late.txt"}, Qt::MoveAction, false);
        p.f.scheduler.advance(PanelController::kDragSettleInterval);
        QCOMPARE(alerts.size(), 2);
        p.moveToDesktop({"late.txt"});
        p.f.scheduler.advance(PanelController::kDragSettleInterval);
        QCOMPARE(alerts.size(), 3);
        QVERIFY(p.f.data.shouldIgnoreFile(desktop + "/late.txt"));

        // A second drag that ends while the first one's item is still being
        // copied across (its copy already on the Desktop when the second
        // began) is looked at with it, against the Desktop before the first.
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/slow.txt", "s");
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/other.txt", "o");
        drag({"slow.txt"}, Qt::MoveAction, false);
        QVERIFY(QFile::copy(p.shadowPath("slow.txt"), desktop + "/slow.txt"));
        p.panel->tableViewDraggingSessionWillBeginAtPoint({p.shadowPath("other.txt")});
        QVERIFY(QFile::rename(p.shadowPath("other.txt"), p.f.sandbox.home() + "/other.txt"));
        p.panel->tableViewDraggingSessionEndedAtPoint({p.shadowPath("other.txt")}, Qt::MoveAction);
        QVERIFY(QFile::remove(p.shadowPath("slow.txt")));
        p.f.scheduler.advance(PanelController::kDragSettleInterval);
        QCOMPARE(alerts.size(), 4);
        QVERIFY(p.f.data.shouldIgnoreFile(desktop + "/slow.txt"));
    }

    void droppedFilesMoveIntoTheFolderShownOrOntoAFolderRow()
    {
        PanelFixture p;
        p.open();
        const QString desktop = p.f.sandbox.desktop();
        const QString shadow = p.f.sandbox.shadowDesktop();
        const auto url = [](const QString &path) {
            return FileNames::toUrl(path);
        };

        // Between rows: into the folder shown.
        Dropping between(p, {url(p.f.desktopItem("memo.txt"))});
        QVERIFY(between.allowedAt(between.at("photo.png", true)));
        between.dropAt(between.at("photo.png", true));
        QVERIFY(QFile::exists(shadow + "/memo.txt") && !QFile::exists(desktop + "/memo.txt"));
        QVERIFY(p.names().contains("memo.txt"));

        // Onto a folder's row: into that folder; onto a file's or a package's
        // row: refused.
        Dropping onto(p, {url(p.f.desktopItem("plan.txt"))});
        QVERIFY(!onto.allowedAt(onto.at("photo.png")));
        onto.dropAt(onto.at("photo.png"));
        QVERIFY(!onto.allowedAt(onto.at("Tool.app")));
        onto.dropAt(onto.at("Tool.app"));
        QVERIFY(QFile::exists(desktop + "/plan.txt"));
        QVERIFY(onto.allowedAt(onto.at("Reports")));
        onto.dropAt(onto.at("Reports"));
        QVERIFY(QFile::exists(shadow + "/Reports/plan.txt") &&
                !QFile::exists(desktop + "/plan.txt"));

        // A taken name: nothing is replaced, the dropped file stays, the line says why.
        Dropping taken(p, {url(p.f.desktopItem("photo.png", 3600, "desk"))});
        taken.dropAt(taken.at("Reports", true));
        QVERIFY(QFile::exists(desktop + "/photo.png"));
        QFile kept(shadow + "/photo.png");
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("p"));
        QCOMPARE(p.ui().textField->toolTip(),
                 QString("Could not move “photo.png” into “Shadow Desktop”: an item of that name "
                         "is already there"));

        // Only local files are taken; nothing else is even let in.
        Dropping web(p, {QUrl("https://example.com/a.txt")});
        QVERIFY(!web.allowedAt(web.at("photo.png", true)));
        Dropping mixed(p, {QUrl("https://example.com/b.txt"), url(p.f.desktopItem("c.txt"))});
        mixed.dropAt(mixed.at("photo.png", true));
        QVERIFY(QFile::exists(shadow + "/c.txt"));

        // The panel's own rows follow the same rules; a folder never goes into itself.
        Dropping row(p, {url(shadow + "/c.txt")});
        row.dropAt(row.at("Reports"));
        QVERIFY(QFile::exists(shadow + "/Reports/c.txt"));
        p.panel->doubleClickedRow(p.rowOf("Reports"));
        p.waitForListing();
        Dropping itself(p, {url(shadow + "/Reports")});
        QVERIFY(!itself.allowedAt(itself.at("2024")));
        QVERIFY(!itself.allowedAt(itself.at("2024", true)));
        // Nor by another name: with a trailing "/", or through a link.
        const QString home = p.f.sandbox.home();
        QVERIFY(QFile::link(shadow, home + "/linked"));
        Dropping slashed(p, {QUrl::fromEncoded(url(shadow + "/Reports").toEncoded() + "//")});
        QCOMPARE(PanelTableView::localPaths(&slashed.mime), QStringList(shadow + "/Reports"));
        Dropping linked(p, {url(home + "/linked/Reports")});
        for (Dropping *other : {&slashed, &linked}) {
            QVERIFY(!other->allowedAt(other->at("2024")));
            QVERIFY(!other->allowedAt(other->at("2024", true)));
        }

        // The Desktop, the home folder, and what holds the Shadow Desktop or
        // Brevano's data never move in; of that data, only the Shadow Desktop's items.
        p.panel->pressedShadowDesktop();
        p.waitForListing();
        for (const QString &path : {desktop, home, home + "/.local", home + "/.local/share/Brevano",
                                    shadow, home + "/.local/share/Brevano/Brevano.data"}) {
            Dropping drop(p, {url(path)});
            QVERIFY2(!drop.allowedAt(drop.at("Reports")), qPrintable(path));
        }
        // A link to the Shadow Desktop moves as a link.
        Dropping ownRowAndLink(p, {url(shadow + "/Reports/c.txt"), url(home + "/linked")});
        QVERIFY(ownRowAndLink.allowedAt(ownRowAndLink.at("photo.png", true)));
    }

    // A search may keep a dropped item out of the rows: the status line says it moved.
    void droppedItemsThatMovedAreNamedOnTheStatusLine()
    {
        PanelFixture p;
        p.open();
        p.ui().searchField->setText("photo");
        Dropping one(p, {FileNames::toUrl(p.f.desktopItem("memo.txt"))});
        one.dropAt(one.at("photo.png", true));
        QVERIFY(!p.names().contains("memo.txt"));
        QCOMPARE(p.ui().textField->toolTip(), QString("Moved “memo.txt” into “Shadow Desktop”"));
        p.ui().searchField->clear();
        Dropping two(p, {FileNames::toUrl(p.f.desktopItem("a.txt")),
                         FileNames::toUrl(p.f.desktopItem("b.txt"))});
        two.dropAt(two.at("Reports"));
        QCOMPARE(p.ui().textField->toolTip(), QString("Moved 2 items into “Reports”"));
    }

    // A file manager asked for a copy (Ctrl held) or a link offers no move:
    // the panel, which only moves, takes nothing.
    void dropsThatAllowNoMoveAreRefused()
    {
        PanelFixture p;
        p.open();
        const QString memo = p.f.desktopItem("memo.txt");
        Dropping copy(p, {FileNames::toUrl(memo)});
        for (const Qt::DropActions actions :
             {Qt::DropActions(Qt::CopyAction), Qt::DropActions(Qt::LinkAction),
              Qt::CopyAction | Qt::LinkAction}) {
            copy.actions = actions;
            QVERIFY(!copy.allowedAt(copy.at("photo.png", true)));
            QVERIFY(!copy.allowedAt(copy.at("Reports")));
            copy.dropAt(copy.at("Reports"));
            QVERIFY(QFile::exists(memo));
        }
        // A source that proposes a copy and allows a move is shown, and gets, a move.
        copy.actions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
        copy.dropAt(copy.at("Reports"));
        QVERIFY(!QFile::exists(memo) && QFile::exists(p.shadowPath("Reports/memo.txt")));
    }

    void droppedItemsMoveOffTheMainThreadOneDropAfterAnother()
    {
        PanelFixture p;
        p.open();
        const QString desktop = p.f.sandbox.desktop();
        const QString shadow = p.f.sandbox.shadowDesktop();
        MoveGate gate;
        p.panel->dropMover().setMoveHookForTesting(
            [&gate](const QString &source) { gate.pass(source); });
        QSignalSpy listed(p.panel.get(), &PanelController::fileListCompleted);

        // The drop returns while the item waits to move; the panel shows it is busy.
        Dropping memo(p, {FileNames::toUrl(p.f.desktopItem("memo.txt"))});
        memo.drop(memo.at("photo.png", true));
        QVERIFY(gate.waitForArrivals(1));
        QVERIFY(!gate.onMainThread);
        QVERIFY(QFile::exists(desktop + "/memo.txt"));
        QCoreApplication::processEvents();
        QVERIFY(!p.ui().progressIndicator->isHidden());
        QCOMPARE(p.ui().textField->toolTip(), QString("Moving “memo.txt” into “Shadow Desktop”…"));

        // A second drop waits its turn; an item already on its way goes once.
        Dropping more(p, {FileNames::toUrl(p.f.desktopItem("plan.txt")),
                          FileNames::toUrl(desktop + "/memo.txt")});
        more.drop(more.at("Reports"));
        QSignalSpy finished(&p.panel->dropMover(), &DroppedItemsMover::finished);
        gate.setOpen();
        QVERIFY(finished.wait(5000));
        p.waitForListing();
        QCOMPARE(gate.arrived, QStringList({desktop + "/memo.txt", desktop + "/plan.txt"}));
        QVERIFY(QFile::exists(shadow + "/memo.txt") && QFile::exists(shadow + "/Reports/plan.txt"));
        QCOMPARE(listed.count(), 1); // listed once, after both
        QVERIFY(p.names().contains("memo.txt"));
        QVERIFY(p.ui().progressIndicator->isHidden());

        // A panel that goes while an item moves waits for that move.
        Dropping last(p, {FileNames::toUrl(p.f.desktopItem("last.txt"))});
        MoveGate held;
        p.panel->dropMover().setMoveHookForTesting(
            [&held](const QString &source) { held.pass(source); });
        last.drop(last.at("photo.png", true));
        QVERIFY(held.waitForArrivals(1));
        std::thread opener([&held] { held.setOpen(); });
        p.panel.reset();
        opener.join();
        QVERIFY(QFile::exists(shadow + "/last.txt") && !QFile::exists(desktop + "/last.txt"));
    }

    // A copy to another file system and the removal of the original, on the
    // mover's thread.
    void droppedItemsFromAnotherFileSystemMoveOffTheMainThread()
    {
        TmpfsMount other;
        REQUIRE_TMPFS(other);
        PanelFixture p;
        p.open();
        MoveGate gate;
        gate.setOpen();
        p.panel->dropMover().setMoveHookForTesting(
            [&gate](const QString &source) { gate.pass(source); });
        QDir().mkpath(other.path() + "/Album");
        QFile photo(other.path() + "/Album/cat.jpg");
        QVERIFY(photo.open(QIODevice::WriteOnly) && photo.write("meow") == 4);
        photo.close();
        Dropping album(p, {FileNames::toUrl(other.path() + "/Album")});
        album.dropAt(album.at("Reports"));
        QVERIFY(!gate.onMainThread);
        QVERIFY(!QFile::exists(other.path() + "/Album"));
        QFile moved(p.f.sandbox.shadowDesktop() + "/Reports/Album/cat.jpg");
        QVERIFY(moved.open(QIODevice::ReadOnly));
        QCOMPARE(moved.readAll(), QByteArray("meow"));
    }

    void rowMenuOpensFromTheKeyboardOnTheCurrentRow()
    {
        PanelFixture p;
        for (int i = 0; i < 60; ++i)
            p.f.sandbox.write(QString(".local/share/Brevano/Shadow Desktop/z%1.txt").arg(i), "z");
        p.open();
        PanelTableView *table = p.ui().tableView;
        QMenu *menu = p.panel->fileMenu();
        // The current row out of sight: the menu comes beside it, scrolled into view.
        table->setCurrentIndex(p.panel->model().index(p.rowOf("z59.txt")));
        table->scrollToTop();
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QApplication::sendEvent(table, &menuKey);
        QVERIFY(menu->isVisible());
        const QRect rows(table->viewport()->mapToGlobal(QPoint(0, 0)), table->viewport()->size());
        QVERIFY(rows.contains(menu->pos()));
        menu->hide();

        table->setCurrentIndex(p.panel->model().index(p.rowOf("photo.png")));
        QTest::keyClick(table, Qt::Key_F10, Qt::ShiftModifier);
        QVERIFY(menu->isVisible());
        for (QAction *action : menu->actions())
            if (action->text() == "Restore to Desktop and Ignore")
                action->trigger();
        menu->hide();
        QVERIFY(QFile::exists(p.f.sandbox.desktop() + "/photo.png"));
        QVERIFY(p.f.data.shouldIgnoreFile(p.f.sandbox.desktop() + "/photo.png"));
    }

    void viewsChangeTheListingAndTheRows()
    {
        PanelFixture p;
        p.open();
        const auto &filters = p.f.data.filterItems();
        // The combo's entry k chooses view k - 1; the first entry changes nothing.
        p.panel->comboBoxSelectionDidChange(2);
        QCOMPARE(p.panel->currentFilter(), filters.at(1)); // Images
        p.waitForListing();
        QCOMPARE(p.names(), QStringList("photo.png"));
        p.panel->comboBoxSelectionDidChange(0);
        QCOMPARE(p.panel->currentFilter(), filters.at(1));

        // Flattened: every file at any depth, no folder rows, no way up.
        p.panel->pressedMenuItem(0);
        p.panel->pressedMenuItemFolderStyle(1);
        p.waitForListing();
        QVERIFY(p.names().contains("Old.txt"));
        QVERIFY(!p.names().contains("Reports"));
        QVERIFY(!p.ui().buttonBack->isEnabled());

        p.panel->pressedMenuItemIconSize(2);
        p.waitForListing();
        QCOMPARE(p.ui().tableView->visualRect(p.panel->model().index(0)).height(), 66);

        // A view removed elsewhere (Preferences) gives way to the first.
        p.panel->pressedMenuItem(2);
        p.f.data.removeQuickFilter(2);
        p.f.notifications.post(NotificationCenter::UpdateQuickLayouts);
        QCOMPARE(p.panel->currentFilter(), filters.at(0));
        QCOMPARE(p.ui().activeViewText->text(), filters.at(0)->getName());

        // The view is remembered at closing; one that no longer exists falls back to the first.
        p.panel->pressedMenuItem(3);
        p.panel->setHasActivePanel(false);
        QCOMPARE(QSettings().value("SelectedView").toInt(), 3);
        QSettings().setValue("SelectedView", 99);
        p.makePanel();
        QCOMPARE(p.panel->currentFilter(), filters.at(0));
        QSettings().setValue("SelectedView", -1);
        p.makePanel();
        QVERIFY(!p.panel->currentFilter());
        QVERIFY(!p.ui().buttonViewOptions->isEnabled());
    }

    void previewRowsShowTheirPicturesOnceMade()
    {
        PanelFixture p;
        // More rows than are shown; the fake has no picture of the JPEG.
        for (int i = 0; i < 9; ++i)
            p.f.sandbox.write(QString(".local/share/Brevano/Shadow Desktop/picture %1.png").arg(i),
                              "p");
        p.f.sandbox.write(".local/share/Brevano/Shadow Desktop/plain.jpg", "j");
        QListView *table = p.ui().tableView;
        p.panel->pressedMenuItem(1); // Images
        p.panel->pressedMenuItemIconSize(3);
        p.open();
        QCoreApplication::processEvents();
        QVERIFY(p.thumbnails.calls().isEmpty()); // type icons ask for no pictures

        p.panel->setHasActivePanel(false);
        p.panel->pressedMenuItemIconStyle(1);
        p.thumbnails.setOpen(false);
        p.open();
        QVERIFY(QTest::qWaitForWindowActive(p.panel->window()));
        QCoreApplication::processEvents(); // the rows are painted, asking for their pictures
        QStringList visible;
        QList<QRect> pictureRows;
        QRegion pictureArea;
        const QImage before = table->viewport()->grab().toImage();
        for (int row = 0; row < p.panel->model().rowCount(); ++row) {
            const QRect rect = table->visualRect(p.panel->model().index(row));
            if (!rect.intersects(table->viewport()->rect()))
                continue;
            visible << p.panel->model().pathAt(row);
            QVERIFY(before.pixelColor(FileRowDelegate::iconRect(rect).center()) != Qt::red);
            if (visible.last().endsWith(".png")) {
                pictureRows << rect;
                pictureArea += rect & table->viewport()->rect();
            }
        }
        QVERIFY(visible.size() < p.panel->model().rowCount());
        QVERIFY(!pictureRows.isEmpty());
        QCoreApplication::processEvents(); // the whole table again, after the grab

        PaintRecorder paints;
        table->viewport()->installEventFilter(&paints);
        p.thumbnails.setOpen(true);
        // Those rows only, as their pictures come.
        QTRY_COMPARE(paints.m_painted, pictureArea);
        const QImage after = table->viewport()->grab().toImage();
        for (const QRect &rect : pictureRows)
            if (const QPoint centre = FileRowDelegate::iconRect(rect).center();
                after.rect().contains(centre))
                QCOMPARE(after.pixelColor(centre), QColor(Qt::red));
        // The rows shown asked, each once, for pictures as tall as they are.
        QStringList asked;
        for (const FakeThumbnailService::Call &call : p.thumbnails.calls()) {
            QCOMPARE(call.size, 128);
            asked << call.path;
        }
        asked.sort();
        visible.sort();
        QCOMPARE(asked, visible);
    }

    void viewOptionsSaveOrCancel()
    {
        PanelFixture p;
        p.open();
        p.panel->pressedMenuItem(1);
        const auto images = p.f.data.filterItems().at(1);
        p.ui().buttonViewOptions->toggle(); // as assistive technology presses it
        QVERIFY(p.panel->viewOptionsPopover());
        p.ui().buttonViewOptions->click();
        QVERIFY(!p.panel->viewOptionsPopover());
        QVERIFY(!p.ui().buttonViewOptions->isChecked());
        p.ui().buttonViewOptions->click();
        ViewOptionsPopoverViewController *options = p.panel->viewOptionsPopover();
        QVERIFY(options);
        auto *iconSize = options->findChild<QComboBox *>("iconSizeComboBox");
        auto *dateMode = options->findChild<QComboBox *>("dateModeCombo");
        // Cancel keeps a date mode chosen in the list, in the working copy only.
        dateMode->setCurrentIndex(1);
        options->pressedCancel();
        QVERIFY(!p.panel->viewOptionsPopover());
        QCOMPARE(images->getDateMode(), 1u);
        QVERIFY(!QFile::exists(p.f.sandbox.dataFile()));

        // Escape in it closes it and the keyboard is back on its button.
        p.panel->window()->activateWindow();
        QTRY_VERIFY(QApplication::activeWindow() == p.panel->window());
        p.ui().buttonViewOptions->click();
        p.panel->viewOptionsPopover()->findChild<QComboBox *>("dateModeCombo")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(!p.panel->viewOptionsPopover());
        QVERIFY(p.panel->hasActivePanel());
        QCOMPARE(QApplication::focusWidget(), p.ui().buttonViewOptions);

        p.panel->pressedViewOptions();
        options = p.panel->viewOptionsPopover();
        options->findChild<QComboBox *>("dateModeCombo")->setCurrentIndex(0);
        options->findChild<QComboBox *>("iconSizeComboBox")->setCurrentIndex(3);
        Q_UNUSED(iconSize);
        options->pressedSave();
        QVERIFY(!p.panel->viewOptionsPopover());
        p.waitForListing();
        QCOMPARE(p.ui().tableView->visualRect(p.panel->model().index(0)).height(), 128);
        EngineFixture reread;
        reread.adoptDataFileOf(p.f);
        reread.load();
        QCOMPARE(reread.data.filterItems().at(1)->getIconSize(), 3u);
    }

    void previewOpensBesideOneSelectedRowAfterHalfASecond()
    {
        PanelFixture p;
        p.open();
        QWidget *window = p.panel->window();
        window->setGeometry(QRect(window->screen()->availableGeometry().topLeft() + QPoint(10, 10),
                                  window->minimumSize().expandedTo(QSize(320, 560))));
        window->activateWindow();
        QTRY_VERIFY(QApplication::activeWindow() == window);
        p.f.scheduler.advance(300ms); // the search field has had its turn
        QListView *table = p.ui().tableView;
        table->setFocus();
        table->setCurrentIndex(p.panel->model().index(p.rowOf("photo.png")));
        p.f.scheduler.advance(499ms);
        QVERIFY(!p.panel->previewPopover());
        p.thumbnails.setOpen(false);
        p.f.scheduler.advance(1ms);
        PreviewPopoverViewController *preview = p.panel->previewPopover();
        QVERIFY(preview && preview->isVisible());
        const QString photo = p.f.sandbox.shadowDesktop() + "/photo.png";
        QCOMPARE(preview->findChild<QLabel *>("filename")->text(), QString("photo.png"));
        QCOMPARE(preview->findChild<QLabel *>("filepath")->toolTip(), photo);
        // The type icon, until the file's own picture is made.
        const auto pictureCentre = [&preview] {
            const QImage shown = preview->findChild<QLabel *>("preview")->pixmap().toImage();
            return shown.pixelColor(shown.rect().center());
        };
        QVERIFY(pictureCentre() != Qt::red);
        p.thumbnails.setOpen(true);
        QTRY_COMPARE(pictureCentre(), QColor(Qt::red));
        const auto calls = p.thumbnails.calls();
        QVERIFY(std::any_of(calls.begin(), calls.end(), [&](const auto &call) {
            return call.path == photo && !call.asIcon; // the bare picture, not an icon
        }));
        // Beside the panel, 25 past the row's right edge, level with it.
        const QRect cell = table->visualRect(table->currentIndex());
        const QRect row(table->viewport()->mapToGlobal(cell.topLeft()), cell.size());
        QVERIFY(preview->isWindow());
        QCOMPARE(preview->x(), row.x() + row.width() + 25);
        QVERIFY(preview->geometry().top() <= row.center().y());
        QVERIFY(preview->geometry().bottom() >= row.center().y());
        QCOMPARE(preview->findChild<QLabel *>("preview")->width(), 380);
        // The keys still move through the rows.
        QTest::keyClick(table, Qt::Key_Down);
        QCOMPARE(table->currentIndex().row(), p.rowOf("photo.png") + 1);

        // Tab takes the keyboard to its buttons, and the panel stays open;
        // Escape in it closes it and not the panel.
        table->setCurrentIndex(p.panel->model().index(p.rowOf("photo.png")));
        p.f.scheduler.advance(500ms);
        preview = p.panel->previewPopover();
        QVERIFY(preview);
        QStringList reached;
        for (int i = 0; i < 4; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QVERIFY(p.panel->previewPopover() == preview);
            QTRY_VERIFY(QApplication::activeWindow() == preview);
            auto *button = qobject_cast<QPushButton *>(QApplication::focusWidget());
            QVERIFY(button && preview->isAncestorOf(button) && !button->toolTip().isEmpty());
            reached << button->accessibleName();
        }
        QCOMPARE(reached, QStringList({"Restore to Desktop and Ignore", "Move to Trash",
                                       "Show in File Manager", "Open"}));
        // Tab past the last button, or Shift+Tab before the first, goes back to
        // the rows and leaves the preview open.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTRY_COMPARE(QApplication::focusWidget(), table);
        QCOMPARE(p.panel->previewPopover(), preview);
        QTest::keyClick(table, Qt::Key_Tab);
        QTRY_VERIFY(preview->isAncestorOf(QApplication::focusWidget()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QTRY_COMPARE(QApplication::focusWidget(), table);
        QVERIFY(p.panel->hasActivePanel());
        QTest::keyClick(table, Qt::Key_Tab);
        QTRY_VERIFY(preview->isAncestorOf(QApplication::focusWidget()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(!p.panel->previewPopover());
        QVERIFY(p.panel->hasActivePanel());
        QTRY_COMPARE(QApplication::focusWidget(), table);

        // Where the screen has no room right of the panel, it opens on the left.
        const QRect screen = window->screen()->availableGeometry();
        window->move(screen.right() - window->width(), window->y());
        p.panel->previewFile(p.rowOf("photo.png"));
        preview = p.panel->previewPopover();
        const QRect moved(table->viewport()->mapToGlobal(cell.topLeft()), cell.size());
        QCOMPARE(preview->geometry().right() + 1, moved.x() - 25);
        // A wider panel keeps it beside the row.
        window->setGeometry(window->geometry().adjusted(-60, 0, 0, 0));
        QTRY_COMPARE(preview->geometry().right() + 1,
                     table->viewport()->mapToGlobal(cell.topLeft()).x() - 25);
        // A row that is no longer there opens nothing.
        p.panel->previewFile(int(p.names().size()));
        p.panel->previewFile(-1);
        QCOMPARE(p.panel->previewPopover(), preview);
    }

    void previewButtonsActOnTheItem()
    {
        PanelFixture p;
        p.openPinned();
        const QString shadow = p.f.sandbox.shadowDesktop();
        const auto button = [&p](const char *name) {
            return p.panel->previewPopover()->findChild<QPushButton *>(name);
        };
        p.panel->previewFile(p.rowOf("photo.png"));
        button("buttonReveal")->click();
        button("buttonOpen")->click();
        QCOMPARE(p.f.fileViewer.m_calls,
                 QStringList({"reveal " + shadow + "/photo.png", "open " + shadow + "/photo.png"}));
        // Restore puts it back on the Desktop and ignores it from then on.
        QVERIFY(button("buttonRestore")->isEnabled());
        button("buttonRestore")->click();
        QVERIFY(QFile::exists(p.f.sandbox.desktop() + "/photo.png"));
        QVERIFY(p.f.data.shouldIgnoreFile(p.f.sandbox.desktop() + "/photo.png"));
        QVERIFY(!p.names().contains("photo.png"));
        QVERIFY(!p.panel->previewPopover());

        // A restore that cannot be done keeps the row and says why.
        p.f.desktopItem("q1 report.pdf");
        p.panel->previewFile(p.rowOf("q1 report.pdf"));
        button("buttonRestore")->click();
        QVERIFY(p.names().contains("q1 report.pdf"));
        QVERIFY(!p.panel->previewPopover());
        QVERIFY(p.ui().textField->toolTip().startsWith("Could not restore “q1 report.pdf”"));

        p.panel->previewFile(p.rowOf("q1 report.pdf"));
        button("buttonTrash")->click();
        QVERIFY(QFile::exists(p.f.sandbox.home() + "/.local/share/Trash/files/q1 report.pdf"));
        QVERIFY(!p.names().contains("q1 report.pdf"));
        QVERIFY(!p.panel->previewPopover());

        // Inside a folder nothing can be restored from here.
        p.panel->doubleClickedRow(p.rowOf("Reports"));
        p.waitForListing();
        p.panel->previewFile(p.rowOf("Summary.txt"));
        QVERIFY(!button("buttonRestore")->isEnabled());
    }

    void previewClosesAtEachClosingEvent()
    {
        PanelFixture p;
        for (int i = 0; i < 40; ++i)
            p.f.sandbox.write(QString(".local/share/Brevano/Shadow Desktop/n%1.txt").arg(i), "n");
        p.openPinned();
        QWidget *window = p.panel->window();
        window->resize(1000, 560);
        QListView *table = p.ui().tableView;
        QItemSelectionModel *selection = table->selectionModel();
        const auto select = [&](const QString &name, QItemSelectionModel::SelectionFlags how) {
            selection->select(p.panel->model().index(p.rowOf(name)), how);
        };
        const auto previewOf = [&](const QString &name) {
            selection->clearSelection();
            select(name, QItemSelectionModel::ClearAndSelect);
            p.f.scheduler.advance(500ms);
            return p.panel->previewPopover() != nullptr;
        };

        QVERIFY(previewOf("photo.png")); // several rows
        select("n1.txt", QItemSelectionModel::Select);
        QVERIFY(!p.panel->previewPopover());
        QVERIFY(previewOf("photo.png")); // none
        selection->clearSelection();
        QVERIFY(!p.panel->previewPopover());
        QVERIFY(previewOf("photo.png")); // a click, beside the preview
        const QRect cell = table->visualRect(p.panel->model().index(p.rowOf("photo.png")));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          QPoint(cell.right() - 5, cell.center().y()));
        QVERIFY(!p.panel->previewPopover());
        p.f.scheduler.advance(500ms);
        QVERIFY(!p.panel->previewPopover()); // the same row: nothing new
        QVERIFY(previewOf("photo.png"));     // scrolling
        table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum());
        QVERIFY(!p.panel->previewPopover());
        QVERIFY(previewOf("photo.png")); // a new listing
        p.panel->buildFileList();
        p.waitForListing();
        QVERIFY(!p.panel->previewPopover());
        QVERIFY(previewOf("photo.png")); // closing the panel
        p.panel->setHasActivePanel(false);
        QVERIFY(!p.panel->previewPopover());

        // A double click, and closing the panel, cancel a waiting preview.
        p.open();
        select("photo.png", QItemSelectionModel::ClearAndSelect);
        p.panel->doubleClickedRow(p.rowOf("photo.png"));
        p.f.scheduler.advance(500ms);
        QVERIFY(!p.panel->previewPopover());
        select("n1.txt", QItemSelectionModel::ClearAndSelect);
        p.panel->setHasActivePanel(false);
        p.f.scheduler.advance(500ms);
        QVERIFY(!p.panel->previewPopover());

        // One popover at a time, of either kind.
        p.open();
        p.panel->pressedMenuItem(0);
        p.waitForListing();
        QVERIFY(previewOf("photo.png"));
        PreviewPopoverViewController *first = p.panel->previewPopover();
        p.panel->previewFile(p.rowOf("n1.txt"));
        QVERIFY(p.panel->previewPopover() != first);
        const auto shown = window->findChildren<PreviewPopoverViewController *>();
        QCOMPARE(std::count_if(shown.begin(), shown.end(), [](auto *w) { return w->isVisible(); }),
                 1);
        p.ui().buttonViewOptions->click();
        QVERIFY(p.panel->viewOptionsPopover());
        QVERIFY(!p.panel->previewPopover());
        p.panel->previewFile(p.rowOf("n1.txt"));
        QVERIFY(p.panel->previewPopover());
        QVERIFY(!p.panel->viewOptionsPopover());
        QVERIFY(!p.ui().buttonViewOptions->isChecked());
    }

    void actionMenuReachesTheApplication()
    {
        PanelFixture p;
        p.open();
        const auto trigger = [&p](const QString &title) {
            for (QAction *action : p.panel->actionMenu()->actions())
                if (action->text() == title)
                    return action->trigger();
            QFAIL(qPrintable("no entry " + title));
        };
        trigger("Tidy Now");
        trigger("Check for Updates");
        QCOMPARE(p.delegate.m_calls, QStringList({"doTidy", "checkForUpdates"}));
        QVERIFY(!p.panel->hasActivePanel()); // checking for updates closes the panel
        QSignalSpy preferences(&p.f.notifications, &NotificationCenter::posted);
        trigger("Preferences...");
        QCOMPARE(preferences.value(0).value(0).toString(), QString("OpenPreferences"));
    }

    // A drop of two items is one run, and the action menu's first line tells it.
    void actionMenuTellsWhatTheLastRunDid()
    {
        PanelFixture p;
        JournalFixture j;
        p.f.engine.setJournal(&j.journal);
        p.open();
        QMenu *menu = p.panel->actionMenu();
        emit menu->aboutToShow();
        QVERIFY(!menu->actions().first()->isVisible());

        Dropping two(p, {FileNames::toUrl(p.f.desktopItem("memo.txt")),
                         FileNames::toUrl(p.f.desktopItem("plan.txt"))});
        two.dropAt(two.at("photo.png", true));
        QCOMPARE(j.journal.runs().size(), 1);
        emit menu->aboutToShow();
        QAction *line = menu->actions().first();
        QVERIFY(line->isVisible());
        QVERIFY(!line->isEnabled());
        QVERIFY2(line->text().endsWith(u"  drop: moved 2, failed 0, deferred 0"),
                 qPrintable(line->text()));
    }
};

QTEST_MAIN(TestPanel)
#include "tst_Panel.moc"
