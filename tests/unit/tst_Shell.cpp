#include "AlternateItemWidget.h"
#include "EngineFixture.h"
#include "GermanLocale.h"
#include "KVBrevanoAppDelegate.h"
#include "LaunchAtLoginController.h"
#include "MenuRenderer.h"
#include "RestoreFilesModel.h"
#include "RestoreFilesWindow.h"
#include "SizeText.h"
#include "StatusDisplay.h"
#include "StatusItemView.h"

#include <QAccessible>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <clocale>

using namespace std::chrono_literals;

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
    MenuRenderer::applyModifiers(&menu, Qt::ShiftModifier);
    QCOMPARE(visible(),
             (QStringList{"Delete top.txt", "Delete other.txt", "2 Older Files Hidden"}));
    MenuRenderer::applyModifiers(&menu, Qt::ControlModifier);
    QCOMPARE(visible().first(), QStringLiteral("Restore top.txt"));
    MenuRenderer::applyModifiers(&menu, Qt::ShiftModifier | Qt::AltModifier); // no exact match
    QCOMPARE(visible().first(), QStringLiteral("top.txt"));
    MenuRenderer::applyModifiers(&menu, Qt::AltModifier);
    menu.actions().at(0 + 1)->trigger(); // "Reveal top.txt"
    QCOMPARE(chosen, (QList<std::pair<int, QString>>{{3, "/s/top.txt"}}));
    QCOMPARE(menu.actions().at(1)->toolTip(), QStringLiteral("/s/top.txt"));
    // Only the first word is coloured, and names are never taken for markup.
    QCOMPARE(
        AlternateItemWidget::styledTitle("Delete a<b>.txt", QColor::fromRgbF(1.0f, 0.5f, 0.5f)),
        QStringLiteral("<span style=\"color:#ff8080\">Delete</span> a&lt;b&gt;.txt"));
}

void tst_Shell::supportMail()
{
    const QUrl url(KVBrevanoAppDelegate::supportMailUrl());
    QCOMPARE(url.scheme(), QStringLiteral("mailto"));
    const QUrlQuery query(url);
    QCOMPARE(query.queryItemValue("subject", QUrl::FullyDecoded),
             "Support request from Brevano v" + BrevanoData::getAppVersion() + " for OS X");
    QVERIFY(query.queryItemValue("body", QUrl::FullyDecoded)
                .startsWith("\n\nSent from machine using OS " + BrevanoData::getOSVersion() +
                            "\nBrevano v"));
}

QTEST_MAIN(tst_Shell)
#include "tst_Shell.moc"
