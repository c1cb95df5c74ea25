#include "AlreadyRunningWindow.h"
#include "AlternateItemWidget.h"
#include "EngineFixture.h"
#include "FakeThumbnailService.h"
#include "GermanLocale.h"
#include "JournalFixture.h"
#include "KVBrevanoAppDelegate.h"
#include "MenuRenderer.h"
#include "MenubarController.h"
#include "MessageBoxAlertPresenter.h"
#include "PanelController.h"
#include "PreferencesWindowController.h"
#include "PreviewCache.h"
#include "RecordingAlertPresenter.h"
#include "RestoreFilesModel.h"
#include "RestoreFilesWindow.h"
#include "SettingsFixture.h"
#include "SizeText.h"
#include "StatusDisplay.h"
#include "StatusItemView.h"
#include "StatusMenu.h"
#include "WelcomeWindowController.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <clocale>
#include <thread>

using namespace std::chrono_literals;

namespace {

// A status menu over a sandbox whose workers run only when the test says so,
// each on a thread of its own that the test then joins.
struct MenuFixture
{
    EngineFixture f;
    RecordingAlertPresenter alerts;
    std::unique_ptr<StatusMenu> status;
    QList<std::function<void()>> jobs;

    enum Workers
    {
        WhenTold,
        OwnThreads // the menu's own, as in the application
    };
    explicit MenuFixture(Workers workers = WhenTold)
    {
        f.load();
        status = std::make_unique<StatusMenu>(f.data, f.engine, alerts);
        if (workers == WhenTold)
            status->setWorkerStarter(
                [this](std::function<void()> job) { jobs.append(std::move(job)); });
    }
    QString shadow(const QString &relative, const QByteArray &content = "x")
    {
        return f.sandbox.write(".local/share/Brevano/Shadow Desktop/" + relative, content);
    }
    QMenu *menu() const { return status->menu(); }
    void runWorker() { std::thread(jobs.takeFirst()).join(); }
    // Shown, built, handed back and closed.
    void openAndClose()
    {
        menu()->popup(QPoint(0, 0));
        runWorker();
        QCoreApplication::processEvents();
        menu()->hide();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    // Opened, as submenus fill when they are first shown.
    QMenu *submenu(const QMenu *parent, const QString &title) const
    {
        for (QAction *action : parent->actions()) {
            if (action->menu() && action->text() == title) {
                emit action->menu()->aboutToShow();
                return action->menu();
            }
        }
        return nullptr;
    }
    void browseAll(const QMenu *menu) const
    {
        for (QAction *action : menu->actions())
            if (action->menu())
                browseAll(submenu(menu, action->text()));
    }
    QStringList titles(const QMenu *menu) const
    {
        QStringList all;
        for (const QAction *action : menu->actions())
            if (action->isVisible() && !action->isSeparator())
                all.append(action->text());
        return all;
    }
};

QImage rowPicture(QAction *action)
{
    return action->icon().pixmap(16).toImage();
}

void writeImage(const QString &path, const QColor &colour)
{
    QImage image(300, 200, QImage::Format_RGB32);
    image.fill(colour);
    QDir().mkpath(QFileInfo(path).path());
    QVERIFY(image.save(path));
}
} // namespace

class tst_Shell : public QObject
{
    Q_OBJECT
private slots:
    void statusItemIconsAndRightButton();
    void launchAtLogin();
    void restoreFilesModel();
    void restoreFilesWindowByKeyboardAndAssistiveTechnology();
    void sizeTextKeepsItsPointInAnyLocale();
    void alternatesFollowTheModifiers();
    void supportMail();
    void thePanelAndTheActiveIcon();
    void windowOpeners();
    void aStaleCompletionIsDropped();
    void sizeIsEstimatedOnTheWorker();
    void closingBeforeTheWorkerStartsStopsIt();
    void previewsArriveOffTheMainThreadOncePerFile();
    void openingsOnTheMenusOwnThreads();
    void openingsKeepTheNumberOfMenus();
    void everyMenuShowsToolTips();
    void dismissingTheRestoreQuestionRestoresNothing();
    void messageBoxDismissal();
    void undoLastTidyEntry();
};

void tst_Shell::statusItemIconsAndRightButton()
{
    VirtualScheduler scheduler;
    StatusItemView view(scheduler);
    QCOMPARE(view.imageName(), QStringLiteral("statusIconUserDisabled.png"));
    view.setHighlighted(true); // the disabled icon wins
    QCOMPARE(view.imageName(), QStringLiteral("statusIconUserDisabled.png"));
    view.setEnabled(true);
    QCOMPARE(view.imageName(), QStringLiteral("statusIconMenu.png"));
    view.setHighlighted(false);
    QCOMPARE(view.imageName(), QStringLiteral("statusIcon.png"));

    QSignalSpy tidy(&view, &StatusItemView::startTidy);
    QSignalSpy reveal(&view, &StatusItemView::revealShadowDesktop);
    view.rightMouseDown(); // released after 0.4 s: reveal, no tidy
    scheduler.advance(400ms);
    view.rightMouseUp();
    scheduler.advance(1s);
    QCOMPARE(reveal.count(), 1);
    QCOMPARE(tidy.count(), 0);
    view.rightMouseDown(); // held 0.6 s: tidy at 0.5 s, nothing on release
    scheduler.advance(600ms);
    QCOMPARE(tidy.count(), 1);
    view.rightMouseUp();
    QCOMPARE(reveal.count(), 1);
    QVERIFY(view.tidied());
    QSignalSpy clicks(&view, &StatusItemView::action);
    view.mouseDown();
    view.mouseDown();
    QCOMPARE(clicks.count(), 2);
}

void tst_Shell::launchAtLogin()
{
    SandboxHome sandbox;
    const QString autostart = sandbox.home() + "/.config/autostart";
    LaunchAtLoginController controller("/opt/brevano/bin/brevano");
    QVERIFY(!controller.launchAtLogin());
    QVERIFY(controller.setLaunchAtLogin("/opt/brevano/bin/brevano", false)); // nothing to remove
    QVERIFY(!QFileInfo::exists(autostart));
    sandbox.write(".config/autostart/brevano.desktop",
                  "[Desktop Entry]\nExec=/usr/bin/other-brevano\n");
    controller.setLaunchAtLogin(true);
    controller.setLaunchAtLogin(true); // twice: still one entry
    QVERIFY(controller.launchAtLogin());
    QCOMPARE(QDir(autostart).entryList(QDir::Files).size(), 2); // someone else's entry is kept
    QFile ours(autostart + "/brevano-2.desktop");
    QVERIFY(ours.open(QIODevice::ReadOnly));
    QVERIFY(ours.readAll().contains("Exec=\"/opt/brevano/bin/brevano\""));
    controller.setLaunchAtLogin(false);
    QVERIFY(!controller.launchAtLogin());
    QCOMPARE(QDir(autostart).entryList(QDir::Files), QStringList{"brevano.desktop"});
    // A hidden entry does not start anything.
    sandbox.write(".config/autostart/x.desktop",
                  "[Desktop Entry]\nExec=/opt/brevano/bin/brevano\nHidden=true\n");
    QVERIFY(!controller.launchAtLogin());
}

void tst_Shell::restoreFilesModel()
{
    EngineFixture f;
    f.load();
    for (const char *name : {"apple", "Zebra", ".hidden", "Middle"})
        f.sandbox.write(QStringLiteral(".local/share/Brevano/Shadow Desktop/") + name, "x");
    RestoreFilesModel model(f.engine);
    model.rebuildData(f.sandbox.shadowDesktop());
    QCOMPARE(model.sortedFilenames(), (QStringList{".hidden", "Middle", "Zebra", "apple"}));
    QCOMPARE(model.applyRestoreSettings(true), 0); // nothing ticked: nothing moves
    QCOMPARE(f.shadowEntries().size(), 4);
    model.setRestoreFile("Zebra", true);
    model.setRestoreFile(".hidden", true);
    model.setRestoreFile("unknown", true);
    QVERIFY(!model.restoreFile("unknown"));
    QCOMPARE(model.applyRestoreSettings(true), 0);
    QCOMPARE(f.desktopEntries(), (QStringList{".hidden", "Zebra"}));
    QVERIFY(f.data.shouldIgnoreFile(f.sandbox.desktop() + "/Zebra"));
    model.setAll(true);
    QCOMPARE(model.applyRestoreSettings(false), 2); // the two restored before are gone
    QCOMPARE(f.shadowEntries(), QStringList{});
}

void tst_Shell::restoreFilesWindowByKeyboardAndAssistiveTechnology()
{
    EngineFixture f;
    f.load();
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt"})
        f.sandbox.write(QStringLiteral(".local/share/Brevano/Shadow Desktop/") + name, "x");
    QPointer<RestoreFilesWindow> window = new RestoreFilesWindow(f.engine);
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window));
    for (QPushButton *button : window->findChildren<QPushButton *>()) {
        const bool restore = button->objectName() == u"restoreButton";
        QCOMPARE(button->isDefault(), restore);
        QCOMPARE(button->autoDefault(), restore);
    }
    for (QWidget *control : window->findChildren<QWidget *>()) {
        if (qobject_cast<QAbstractButton *>(control) || qobject_cast<QAbstractItemView *>(control))
            QVERIFY2(
                !QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                qPrintable(control->objectName()));
    }

    // A screen reader ticks a row through its cell's toggle action, and unticks it.
    QListWidget *list = window->list();
    QAccessibleInterface *rows = QAccessible::queryAccessibleInterface(list);
    const auto toggle = [rows](int row) {
        rows->child(row)->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    };
    toggle(0);
    QVERIFY(rows->child(0)->state().checked);
    toggle(0);
    toggle(1);
    QCOMPARE(list->item(0)->checkState(), Qt::Unchecked);
    QCOMPARE(list->item(1)->checkState(), Qt::Checked);
    QVERIFY(rows->child(1)->state().checkable);
    // Space ticks the focused row.
    QCOMPARE(QApplication::focusWidget(), list);
    list->setCurrentRow(2, QItemSelectionModel::NoUpdate);
    QTest::keyClick(list, Qt::Key_Space);
    QCOMPARE(list->item(2)->checkState(), Qt::Checked);
    // A click on a box ticks it, once.
    QStyleOptionViewItem box;
    box.initFrom(list->viewport());
    box.rect = list->visualRect(list->model()->index(0, 0));
    box.features = QStyleOptionViewItem::HasCheckIndicator;
    const QRect boxRect =
        list->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &box);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, boxRect.center());
    QCOMPARE(list->item(0)->checkState(), Qt::Checked);

    // Return presses Restore, wherever the focus is.
    QTest::keyClick(list, Qt::Key_Return);
    QVERIFY(!RestoreFilesWindow::isOpen());
    QCOMPARE(f.desktopEntries(), (QStringList{"a.txt", "b.txt", "c.txt"}));
    QCOMPARE(f.shadowEntries(), QStringList{"d.txt"});
    QTRY_VERIFY(window.isNull());
}

// printf and QLocale would both write "1,5 KB" here.
void tst_Shell::sizeTextKeepsItsPointInAnyLocale()
{
    GermanLocale german;
    if (!german.isValid())
        QSKIP("localedef could not build a German locale");
    qputenv("LOCPATH", german.path().toUtf8());
    const QByteArray before = std::setlocale(LC_ALL, nullptr);
    QVERIFY(std::setlocale(LC_ALL, GermanLocale::Name));
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QStringList texts{SizeText::format(1536),       SizeText::format(1280),
                            SizeText::format(1048576),    SizeText::format(1572864),
                            SizeText::format(5368709120), StatusDisplay::timeRemainingText(5400)};
    std::setlocale(LC_ALL, before.constData());
    QLocale::setDefault(QLocale::system());
    qunsetenv("LOCPATH");
    // 1280 bytes are 1.25 KB: halves round to even, as "%.1f" rounds them.
    QCOMPARE(texts, (QStringList{"1.5 KB", "1.2 KB", "1024.0 KB", "1.5 MB", "5.0 GB", "2 hours"}));
}

void tst_Shell::alternatesFollowTheModifiers()
{
    MenuEntry root;
    for (const char *name : {"top.txt", "other.txt"}) {
        MenuEntry item = MenuEntry::of(MenuEntry::Kind::Item, name, 2, QString("/s/") + name);
        root.add(item);
        for (auto [title, tag, modifier] :
             {std::tuple{"Reveal", 3, MenuEntry::Modifier::Option},
              std::tuple{"Delete", 4, MenuEntry::Modifier::Shift},
              std::tuple{"Restore", 5, MenuEntry::Modifier::Control}}) {
            MenuEntry alternate = item;
            alternate.title = QString(title) + ' ' + name;
            alternate.tag = tag;
            alternate.modifier = modifier;
            root.add(alternate);
        }
    }
    root.addMessage("2 Older Files Hidden");
    QList<std::pair<int, QString>> chosen;
    MenuRenderer renderer([&](int tag, const QString &path) { chosen.append({tag, path}); });
    QMenu menu;
    renderer.render(&menu, root);
    const auto visible = [&menu] {
        QStringList titles;
        for (QAction *action : menu.actions())
            if (action->isVisible())
                titles.append(action->text());
        return titles;
    };
    QCOMPARE(visible(), (QStringList{"top.txt", "other.txt", "2 Older Files Hidden"}));
    QCOMPARE(menu.actions().size(), 3); // alternates are made when their key is first held
    renderer.applyModifiers(&menu, Qt::ShiftModifier);
    QCOMPARE(visible(),
             (QStringList{"Delete top.txt", "Delete other.txt", "2 Older Files Hidden"}));
    renderer.applyModifiers(&menu, Qt::ControlModifier);
    QCOMPARE(visible().first(), QStringLiteral("Restore top.txt"));
    renderer.applyModifiers(&menu, Qt::ShiftModifier | Qt::AltModifier); // no exact match
    QCOMPARE(visible().first(), QStringLiteral("top.txt"));
    renderer.applyModifiers(&menu, Qt::AltModifier);
    const QList<QAction *> actions = menu.actions();
    QAction *reveal = *std::find_if(actions.begin(), actions.end(),
                                    [](QAction *action) { return action->isVisible(); });
    QCOMPARE(reveal->text(), QStringLiteral("Reveal top.txt"));
    QCOMPARE(reveal->toolTip(), QStringLiteral("/s/top.txt"));
    reveal->trigger();
    QCOMPARE(chosen, (QList<std::pair<int, QString>>{{3, "/s/top.txt"}}));
    // Open, the alternate shown has its first word coloured; clicking it closes the menu and acts.
    menu.popup(QPoint(0, 0));
    renderer.applyModifiers(&menu, Qt::ShiftModifier);
    QList<AlternateItemWidget *> shown = menu.findChildren<AlternateItemWidget *>();
    shown.removeIf([](const AlternateItemWidget *row) { return !row->isVisible(); });
    QCOMPARE(shown.size(), 2);
    QCOMPARE(shown.first()->toolTip(), QStringLiteral("/s/top.txt"));
    emit shown.first()->activated();
    QCOMPARE(chosen.last(), (std::pair<int, QString>{4, "/s/top.txt"}));
    QVERIFY(!menu.isVisible());
    // Only the first word is coloured, and names are never taken for markup.
    QCOMPARE(
        AlternateItemWidget::styledTitle("Delete a<b>.txt", QColor::fromRgbF(1.0f, 0.5f, 0.5f)),
        QStringLiteral("<span style=\"color:#ff8080\">Delete</span> a&lt;b&gt;.txt"));
}

void tst_Shell::supportMail()
{
    // Blanks and line breaks survive the query's encoding.
    const QUrlQuery query{QUrl(KVBrevanoAppDelegate::supportMailUrl())};
    QVERIFY(query.queryItemValue("subject", QUrl::FullyDecoded).startsWith("Support request "));
    QVERIFY(query.queryItemValue("body", QUrl::FullyDecoded).startsWith("\n\nSent from "));
}

// Top-level windows of one kind that are on show.
template <typename Window> static QList<Window *> shownWindows()
{
    QList<Window *> shown;
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (auto *window = qobject_cast<Window *>(widget); window && window->isVisible())
            shown.append(window);
    return shown;
}

void tst_Shell::windowOpeners()
{
    SettingsFixture s;
    RecordingAlertPresenter alerts;
    FakeThumbnailService thumbnails;
    {
        // A first start opens the tutorial, once the store asks for it.
        KVBrevanoAppDelegate delegate(s.services, s.f.scheduler, s.f.fileViewer, thumbnails,
                                      alerts);
        delegate.applicationDidFinishLaunching();
        QCOMPARE(shownWindows<WelcomeWindowController>().size(), 1);
        delegate.openTutorial();
        delegate.openTutorial(); // each time another window
        QCOMPARE(shownWindows<WelcomeWindowController>().size(), 3);

        delegate.openPreferencesWindow();
        PreferencesWindowController *preferences = PreferencesWindowController::openInstance();
        QVERIFY(preferences && preferences->isVisible());
        preferences->close(); // not Done: it comes back as it was
        delegate.openPreferencesWindow();
        QCOMPARE(PreferencesWindowController::openInstance(), preferences);
        QCOMPARE(shownWindows<PreferencesWindowController>().size(), 1);
        delete preferences;

        // The Already Running window's button and the panel reach Preferences too.
        delegate.openAlreadyRunningWindow();
        auto *alreadyRunning = shownWindows<AlreadyRunningWindow>().value(0);
        QVERIFY(alreadyRunning);
        alreadyRunning->findChild<QPushButton *>("preferencesButton")->click();
        QVERIFY(!alreadyRunning->isVisible());
        QCOMPARE(shownWindows<PreferencesWindowController>().size(), 1);
        delete PreferencesWindowController::openInstance();
        QVERIFY(delegate.canOpenPreferences() && delegate.canOpenTutorial());
        s.f.notifications.post(NotificationCenter::OpenPreferences);
        QCOMPARE(shownWindows<PreferencesWindowController>().size(), 1);
        delete PreferencesWindowController::openInstance();

        // And so do the status menu's entries.
        const auto trigger = [](QMenu *menu, const QString &text) {
            for (QAction *action : menu->actions())
                if (action->text() == text)
                    return action->trigger(), true;
            return false;
        };
        QMenu *menu = delegate.statusMenu()->menu();
        QVERIFY(trigger(menu, "Preferences..."));
        QCOMPARE(shownWindows<PreferencesWindowController>().size(), 1);
        QMenu *help = nullptr;
        for (QMenu *submenu : menu->findChildren<QMenu *>())
            if (submenu->title() == "Help")
                help = submenu;
        QVERIFY(help && trigger(help, "Tutorial"));
        QCOMPARE(shownWindows<WelcomeWindowController>().size(), 4);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(shownWindows<QWidget>().isEmpty()); // the delegate's windows go with it

    // Told not to show it again, a start opens no tutorial.
    s.f.data.setShowWelcome(false);
    s.f.data.saveDataFile();
    KVBrevanoAppDelegate delegate(s.services, s.f.scheduler, s.f.fileViewer, thumbnails, alerts);
    delegate.applicationDidFinishLaunching();
    QVERIFY(shownWindows<WelcomeWindowController>().isEmpty());
}

void tst_Shell::thePanelAndTheActiveIcon()
{
    SettingsFixture s;
    EngineFixture &f = s.f;
    RecordingAlertPresenter alerts;
    FakeThumbnailService thumbnails;
    f.data.setShowWelcome(false);
    f.data.saveDataFile();
    KVBrevanoAppDelegate delegate(s.services, f.scheduler, f.fileViewer, thumbnails, alerts);
    delegate.applicationDidFinishLaunching();
    f.engine.setEnabled(true);
    f.data.updateStatusIcon();
    const StatusItemView &view = delegate.menubarController()->statusItemView();
    QVERIFY(!delegate.panelController()); // made on first use

    delegate.togglePanel();
    PanelController &panel = delegate.getPanelController();
    QVERIFY(panel.hasActivePanel());
    QCOMPARE(view.imageName(), QString("statusIconMenu.png"));
    // The panel closing itself takes the active icon with it.
    QTest::keyClick(panel.window(), Qt::Key_Escape);
    QCOMPARE(view.imageName(), QString("statusIcon.png"));
    delegate.togglePanel();
    delegate.togglePanel();
    QVERIFY(!panel.hasActivePanel());
    QCOMPARE(view.imageName(), QString("statusIcon.png"));

    // A click on the icon that took the focus from the panel only closes it.
    delegate.openPanel();
    QEvent deactivate(QEvent::WindowDeactivate);
    QApplication::sendEvent(panel.window(), &deactivate);
    delegate.togglePanel();
    QVERIFY(!panel.hasActivePanel());
    delegate.openPanel(); // asked for (a shortcut): opens all the same
    QVERIFY(panel.hasActivePanel());
    QApplication::sendEvent(panel.window(), &deactivate);
    f.scheduler.advance(1s);
    delegate.togglePanel();
    QVERIFY(panel.hasActivePanel());

    // Closing the status menu stops the ticks; the open panel's line goes on.
    emit delegate.statusMenu()->menu()->aboutToHide();
    QSignalSpy posted(&f.notifications, &NotificationCenter::posted);
    f.scheduler.advance(2s);
    QVERIFY(posted.count() > 0);

    // The disabled icon wins; opening an open panel keeps it open.
    f.engine.setEnabled(false);
    f.data.updateStatusIcon();
    QCOMPARE(view.imageName(), QString("statusIconUserDisabled.png"));
    delegate.openPanel();
    QVERIFY(panel.hasActivePanel());
    delegate.applicationWillTerminate();
}

void tst_Shell::aStaleCompletionIsDropped()
{
    MenuFixture m;
    for (int i = 0; i < 150; ++i)
        m.shadow(QStringLiteral("Folder/file%1.txt").arg(i));
    QSignalSpy completed(m.status.get(), &StatusMenu::populationCompleted);
    m.menu()->popup(QPoint(0, 0));
    m.runWorker(); // the first opening's completion waits in the queue
    m.menu()->hide();
    m.shadow("late.txt");
    m.menu()->popup(QPoint(0, 0));
    QCoreApplication::processEvents();
    QCOMPARE(completed.count(), 0);
    QVERIFY(!m.status->threadFinished());
    m.runWorker();
    QCoreApplication::processEvents();
    QCOMPARE(completed.count(), 1);
    QMenu *shadowMenu = m.submenu(m.menu(), "Browse Shadow Desktop");
    QVERIFY(shadowMenu->menuAction()->isEnabled());
    QVERIFY(m.titles(shadowMenu).contains("late.txt"));
    QVERIFY(m.titles(m.submenu(m.menu(), "Documents")).contains("late.txt"));
}

void tst_Shell::closingBeforeTheWorkerStartsStopsIt()
{
    MenuFixture m;
    m.shadow("a.txt");
    m.menu()->popup(QPoint(0, 0));
    m.menu()->hide();
    m.runWorker();
    QCoreApplication::processEvents();
    QVERIFY(m.status->threadFinished());
    QVERIFY(m.submenu(m.menu(), "Browse Shadow Desktop")->actions().isEmpty());
    QVERIFY(m.submenu(m.menu(), "Documents")->actions().isEmpty());
}

void tst_Shell::previewsArriveOffTheMainThreadOncePerFile()
{
    MenuFixture m;
    auto pictures = std::make_shared<QuickFilterItem>();
    pictures->setName("Pictures");
    pictures->setStyle(1);
    pictures->fileExtensions().append(QStringLiteral("png"));
    m.f.data.addQuickFilter(pictures);
    for (const char *name : {"a.png", "Sub/b.png", "c.png"})
        writeImage(m.shadow(name), Qt::red);
    std::mutex mutex;
    QStringList decoded;
    bool onMainThread = false;
    m.status->previews().setDecodeObserver([&](const QString &path) {
        const std::lock_guard lock(mutex);
        decoded.append(QFileInfo(path).fileName());
        onMainThread |= QThread::currentThread() == qApp->thread();
    });
    const auto previewRows = [&] {
        QList<QAction *> rows;
        for (const char *filter : {"Images", "Pictures"})
            for (QAction *action : m.submenu(m.menu(), filter)->actions())
                if (action->text().contains(".png"))
                    rows.append(action);
        return rows;
    };
    const auto isRed = [](QAction *row) {
        const QImage picture = rowPicture(row);
        return !picture.isNull() && picture.pixelColor(picture.rect().center()) == Qt::red;
    };
    MenuEntry typeEntry = MenuEntry::of(MenuEntry::Kind::Item, "x.png");
    typeEntry.iconKind = MenuEntry::IconKind::ForExtension;
    typeEntry.iconSource = "png";
    const QImage typeIcon = MenuRenderer::iconFor(typeEntry).pixmap(16).toImage();
    int rowsAtCompletion = 0;
    const auto atCompletion = connect(m.status.get(), &StatusMenu::populationCompleted, this, [&] {
        for (QAction *row : previewRows()) {
            QVERIFY(!isRed(row));
            QCOMPARE(rowPicture(row), typeIcon);
            ++rowsAtCompletion;
        }
    });
    QSignalSpy loaded(m.status.get(), &StatusMenu::previewsLoaded);
    m.openAndClose();
    QCOMPARE(rowsAtCompletion, 2 * 3); // two filters, no alternates until their key is held
    QCOMPARE(loaded.count(), 1);
    decoded.sort();
    QCOMPARE(decoded, (QStringList{"a.png", "b.png", "c.png"}));
    QVERIFY(!onMainThread);
    for (QAction *row : previewRows())
        QVERIFY2(isRed(row), qPrintable(row->text()));
    disconnect(atCompletion);
    m.openAndClose(); // the next opening takes them from the cache, before its rows are made
    QCOMPARE(decoded.size(), 3);
    QTest::keyPress(m.submenu(m.menu(), "Images"), Qt::Key_Shift); // its alternates are made
    const QList<QAction *> rows = previewRows();
    QCOMPARE(rows.size(), 2 * 3 + 3);
    for (QAction *row : rows)
        QVERIFY2(isRed(row), qPrintable(row->text()));
}

void tst_Shell::openingsOnTheMenusOwnThreads()
{
    MenuFixture m(MenuFixture::OwnThreads);
    for (int i = 0; i < 20; ++i)
        writeImage(m.shadow(QStringLiteral("Pictures/p%1.png").arg(i)), Qt::red);
    m.shadow("notes.txt");
    QSignalSpy loaded(m.status.get(), &StatusMenu::previewsLoaded);
    m.menu()->popup(QPoint(0, 0));
    // While the first worker builds, the store changes (as the 61-second check and
    // the menu's own entries change it), and the menu closes and opens again.
    m.f.data.setLastTidyTime(QDateTime::currentDateTimeUtc());
    m.f.data.setQuickFiltersMode(2);
    m.f.data.filterItems().at(1)->fileExtensions().append(QStringLiteral("txt"));
    m.menu()->hide();
    m.menu()->popup(QPoint(0, 0));
    QVERIFY(loaded.wait(60000));
    QCoreApplication::processEvents(); // nothing of the first opening follows
    QCOMPARE(loaded.count(), 1);
    QMenu *images = m.submenu(m.menu(), "Images");
    const QStringList rows = m.titles(images);
    QCOMPARE(rows.size(), 1 + 20 + 2); // by type, as the second opening was asked
    QCOMPARE(rows.first(), QStringLiteral("PNG"));
    QCOMPARE(rows.mid(21), (QStringList{"TXT", "notes.txt"}));
    for (QAction *row : images->actions())
        if (row->text().endsWith(".png"))
            QVERIFY2(rowPicture(row).pixelColor(8, 8) == Qt::red, qPrintable(row->text()));
    m.menu()->hide();
}

void tst_Shell::sizeIsEstimatedOnTheWorker()
{
    MenuFixture m;
    m.shadow("a.txt", QByteArray(100, 'x'));
    m.menu()->popup(QPoint(0, 0));
    m.runWorker();
    m.shadow("b.txt", QByteArray(50, 'x')); // after the worker's look
    QCoreApplication::processEvents();
    QVERIFY(m.titles(m.menu()).contains("Shadow Desktop (100 bytes)"));
}

void tst_Shell::openingsKeepTheNumberOfMenus()
{
    MenuFixture m;
    m.shadow("Top/Inner/deep.txt");
    m.shadow("Other/b.jpg");
    m.shadow("c.txt");
    const auto count = [&m] {
        m.browseAll(m.menu());
        return std::pair(m.menu()->findChildren<QMenu *>().size(),
                         m.menu()->findChildren<QAction *>().size());
    };
    m.openAndClose();
    const auto first = count();
    for (int i = 0; i < 3; ++i) {
        m.openAndClose();
        QCOMPARE(count(), first);
    }
}

void tst_Shell::everyMenuShowsToolTips()
{
    MenuFixture m;
    m.shadow("Folder/inner.txt");
    for (int i = 0; i < 130; ++i)
        m.shadow(QStringLiteral("file%1.txt").arg(i));
    m.openAndClose();
    m.browseAll(m.menu());
    QList<QMenu *> menus = m.menu()->findChildren<QMenu *>();
    menus.append(m.menu());
    QVERIFY(m.submenu(m.submenu(m.menu(), "Browse Shadow Desktop"), "Folder"));
    for (const QMenu *menu : std::as_const(menus))
        QVERIFY2(menu->toolTipsVisible(), qPrintable(menu->title()));
    // A message row carries its explanation as a tool tip.
    const QList<QAction *> rows = m.submenu(m.menu(), "Browse Shadow Desktop")->actions();
    QVERIFY(rows.last()->toolTip().startsWith("Brevano limits the number of items"));
    // Tidy Now says why it moves nothing in advanced mode, at the next opening.
    const auto tidyNow = [&m] {
        for (QAction *action : m.menu()->actions())
            if (action->text() == "Tidy Now")
                return action->toolTip();
        return QString();
    };
    QVERIFY(!tidyNow().startsWith("Advanced mode is chosen"));
    m.f.data.setOperationMode(1);
    m.openAndClose();
    QVERIFY(tidyNow().startsWith("Advanced mode is chosen"));
}

void tst_Shell::dismissingTheRestoreQuestionRestoresNothing()
{
    MenuFixture m;
    m.shadow("a.txt");
    m.alerts.m_answer = AlertPresenter::Dismissed;
    m.status->restoreAllFiles();
    m.status->emptyShadowDesktop();
    QCOMPARE(m.alerts.m_alerts.size(), 2);
    QCOMPARE(m.f.shadowEntries(), QStringList{"a.txt"});
    m.alerts.m_answer = 1; // "No": restored, not ignored
    m.status->restoreAllFiles();
    QCOMPARE(m.f.desktopEntries(), QStringList{"a.txt"});
    QVERIFY(!m.f.data.shouldIgnoreFile(m.f.sandbox.desktop() + "/a.txt"));
}

void tst_Shell::messageBoxDismissal()
{
    MessageBoxAlertPresenter presenter;
    const Alert question{"Restore?", QString(), {"Yes", "No"}};
    const auto answerWith = [&](const std::function<void(QMessageBox *)> &act) {
        QTimer::singleShot(0, this, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            act(box);
        });
        return presenter.runModal(question);
    };
    QCOMPARE(answerWith([](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); }),
             AlertPresenter::Dismissed);
    QCOMPARE(answerWith([](QMessageBox *box) { box->close(); }), AlertPresenter::Dismissed);
    QCOMPARE(answerWith([](QMessageBox *box) {
                 for (QAbstractButton *button : box->buttons())
                     if (button->text() == "No")
                         button->click();
             }),
             1);
}

void tst_Shell::undoLastTidyEntry()
{
    MenuFixture m;
    JournalFixture j;
    m.f.engine.setJournal(&j.journal);
    const QString shadow = m.f.sandbox.shadowDesktop();
    QDir().mkpath(shadow);
    const QString undoTitle = "Undo Last Tidy (2 items)";
    m.openAndClose();
    QVERIFY(!m.titles(m.menu()).join(u'|').contains(u"Undo"));

    const QString a = m.f.desktopItem("a.txt");
    j.recordTidy({a, m.f.desktopItem("b.txt")}, shadow);
    m.openAndClose();
    const QStringList titles = m.titles(m.menu());
    QCOMPARE(titles.indexOf(undoTitle), titles.indexOf("Tidy Now") + 1);
    QSignalSpy undone(&m.f.engine, &Brevano::undoFinished);
    // A scheduled tidy announced before the undo began waits for it too.
    m.f.engine.setEnabled(true);
    m.f.desktopItem("c.txt");
    m.f.engine.performTidyFromRequest(Brevano::TidyRequestScheduled);
    QAction *undo = m.menu()->findChild<QAction *>("undoLastTidyItem");
    undo->trigger();
    // The worker's report comes back through the event loop, not run here:
    // until then the undo is under way, whatever the worker has done.
    QVERIFY(!undo->isEnabled());
    QCOMPARE(undo->text(), "Undoing Last Tidy…");
    for (const QAction *action : m.menu()->actions())
        if (action->text() == "Tidy Now")
            QVERIFY(!action->isEnabled());
    QSignalSpy held(&m.f.engine, &Brevano::tidyHeld);
    m.f.scheduler.advance(10s);
    m.f.engine.performManualTidy();
    QCOMPARE(held.count(), 2);
    QVERIFY(!m.f.engine.undoLastTidyInBackground()); // one at a time
    QVERIFY(undone.wait());
    QCOMPARE(undone.count(), 1);
    QCOMPARE(m.f.desktopEntries(), QStringList({"a.txt", "b.txt", "c.txt"}));
    QVERIFY(!m.f.data.shouldIgnoreFile(a));
    QCOMPARE(m.f.notifier.m_delivered.last().text, "Put back 2 items on the Desktop.");
    QVERIFY(m.alerts.m_alerts.isEmpty());
    m.openAndClose();
    QVERIFY(!m.titles(m.menu()).join(u'|').contains(u"Undo"));

    // What stayed behind is told in an alert.
    j.recordTidy({a}, shadow);
    m.f.desktopItem("a.txt");
    m.status->undoLastTidy();
    QVERIFY(undone.wait());
    QCOMPARE(m.alerts.m_alerts.size(), 1);
    QCOMPARE(m.alerts.m_alerts.first().title,
             "Left 1 item in the Shadow Desktop: its name on the Desktop is taken: “a.txt”");
}

QTEST_MAIN(tst_Shell)
#include "tst_Shell.moc"
