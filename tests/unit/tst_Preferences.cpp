#include "DesktopNotificationSettings.h"
#include "IgnoreDesktopItemsObjectController.h"
#include "IgnoreFilesListObjectController.h"
#include "LaunchAtLoginController.h"
#include "PreferencesWindowController.h"
#include "SettingsFixture.h"
#include "ui_Preferences.h"

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

namespace {

// A Preferences window over a sandbox store; the window is shown, as the
// application shows it.
struct PreferencesFixture : SettingsFixture
{
    PreferencesFixture() { f.load(); }
    ~PreferencesFixture()
    {
        delete PreferencesWindowController::openInstance();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    PreferencesWindowController *open()
    {
        auto *window = new PreferencesWindowController(services);
        window->show();
        return window;
    }
};

// The settings as the data file holds them.
struct SavedStore
{
    VirtualScheduler scheduler{QDateTime::currentDateTimeUtc()};
    NotificationCenter notifications;
    RecordingAlertPresenter alerts;
    BrevanoData data{scheduler, notifications, alerts};

    SavedStore() { data.loadDataFile(); }
    bool enabled() const
    {
        return data.saveData()
            .value(Brevano::SaveDataKey)
            .toDictionary()
            .value("Enabled")
            .boolValue(false);
    }
};

QList<QCheckBox *> settingBoxes(Ui::Preferences &ui)
{
    return {ui.tidyPeriodically, ui.displayRemaining, ui.autoIgnoreRestored,
            ui.ignoreHidden,     ui.ignoreAliases,    ui.ignoreFolders,
            ui.growlEnabled,     ui.growlBeforeTidy,  ui.growlBeforeTidyOnlyIfFiles,
            ui.growlOnComplete,  ui.growlFileMoved,   ui.growlFileMoveFailed,
            ui.growlOnEmpty,     ui.growlTidyDeferred};
}

} // namespace

class tst_Preferences : public QObject
{
    Q_OBJECT
private slots:
    void doneWritesEveryControlAndSaves();
    void doneSwapsTheEmptiedAndSkippedNotifications();
    void ignoredItemsListAndChecklistAgree();
    void closingKeepsWhatTookEffectAndTheWindow();
    void resetStoresTheDefaultFolderExplicitly();
    void tabAndModes();
    void notificationSettingsButton();
    void launchAtLoginBox();
    void keyboardAndAssistiveTechnology();
    void desktopNotificationSettingsFollowsTheDesktop();
    void screenshotsOfEveryTab();
};

void tst_Preferences::doneWritesEveryControlAndSaves()
{
    PreferencesFixture p;
    p.f.data.setTidyFrequency(5);
    p.f.data.setCurrentPreferencesTab(3);
    const QString keep = p.f.desktopItem("keep.txt");
    QPointer<PreferencesWindowController> window = p.open();
    Ui::Preferences &ui = window->ui();
    QCOMPARE(ui.tidyFrequency->currentIndex(), 5);
    QCOMPARE(ui.tabView->currentIndex(), 3);
    QCOMPARE(ui.tidyFrequency->count(), 9);
    QCOMPARE(ui.tidyFrequency->itemText(8), QStringLiteral("Every week"));

    // Every box the other way round from its default.
    for (QCheckBox *box : settingBoxes(ui))
        box->click();
    ui.tidyFrequency->setCurrentIndex(7);
    ui.tabView->setCurrentIndex(1);
    auto *checklist = window->findChild<IgnoreDesktopItemsObjectController *>("ignoreItems");
    QVERIFY(checklist);
    QTRY_VERIFY(!checklist->isReading());
    checklist->setIgnoreFileAtRow(checklist->sortedFilenames().indexOf("keep.txt"), true);
    QSignalSpy statusIcon(&p.f.data.statusDisplay(), &StatusDisplay::statusIconChanged);
    ui.doneButton->click();

    QVERIFY(!PreferencesWindowController::isOpen());
    QVERIFY(!window->isVisible());
    QCOMPARE(statusIcon.count(), 1);
    QCOMPARE(statusIcon.first().first().toBool(), true); // tidying is on now
    const SavedStore saved;
    const BrevanoData &data = saved.data;
    QVERIFY(saved.enabled());
    // Every box was the other way round from its default, so every key is now.
    const QStringList nowOn{"IgnoreAliases", "IgnoreFolders", "GrowlFileMoved"};
    for (const char *key : {"ShowTimeUntilTidy", "AutoIgnoreRestoredFiles", "IgnoreHidden",
                            "IgnoreAliases", "IgnoreFolders", "GrowlEnabled", "GrowlBeforeTidy",
                            "GrowlBeforeTidyOnlyIfFiles", "GrowlOnComplete", "GrowlFileMoved",
                            "GrowlFileMoveFailed", "GrowlOnEmpty", "GrowlDeferredStart"}) {
        const PropertyValue value = data.saveData().value(key);
        QVERIFY2(!value.isNull() && value.boolValue(false) == nowOn.contains(key), key);
    }
    QCOMPARE(data.getTidyFrequency(), 7u);
    QCOMPARE(data.getCurrentPreferencesTab(), 1u);
    QVERIFY(data.shouldIgnoreFile(keep)); // the checklist was saved before the file
    QTRY_VERIFY(window.isNull());

    // No frequency chosen stores all ones: a frequency without a period.
    window = p.open();
    window->ui().tidyFrequency->setCurrentIndex(-1);
    window->ui().doneButton->click();
    QCOMPARE(SavedStore().data.getTidyFrequency(), 0xFFFFFFFFu);
    // Which the next opening shows as no choice.
    window = p.open();
    QCOMPARE(window->ui().tidyFrequency->currentIndex(), -1);
}

void tst_Preferences::doneSwapsTheEmptiedAndSkippedNotifications()
{
    PreferencesFixture p;
    p.f.data.setGrowlOnEmpty(true);
    p.f.data.setGrowlDeferredTidy(false);
    PreferencesWindowController *window = p.open();
    QVERIFY(window->ui().growlOnEmpty->isChecked());
    QVERIFY(!window->ui().growlTidyDeferred->isChecked());
    window->ui().doneButton->click();
    QVERIFY(!p.f.data.getGrowlOnEmpty());
    QVERIFY(p.f.data.getGrowlDeferredTidy());
}

// The ignored items list writes at once and the checklist on Done: Done keeps
// what the list did as well as the ticks.
void tst_Preferences::ignoredItemsListAndChecklistAgree()
{
    PreferencesFixture p;
    const QString ticked = p.f.desktopItem("ticked.txt");
    const QString added = p.f.desktopItem("added.txt");
    const QString removed = p.f.desktopItem("removed.txt");
    const QString elsewhere = p.f.desktopItem("elsewhere.txt");
    p.f.data.addIgnoreFiles({removed});
    PreferencesWindowController *window = p.open();
    auto *checklist = window->findChild<IgnoreDesktopItemsObjectController *>("ignoreItems");
    auto *list = window->findChild<IgnoreFilesListObjectController *>("ignoreFiles");
    QVERIFY(checklist && list);
    QTRY_VERIFY(!checklist->isReading());
    checklist->setIgnoreFileAtRow(checklist->sortedFilenames().indexOf("ticked.txt"), true);
    p.chooser.m_answer = {added};
    list->pressedAdd();
    list->tableView()->selectRow(list->sortedFilenames().indexOf(removed));
    list->pressedRemove();
    QTRY_VERIFY(!checklist->isReading());
    QVERIFY(checklist->ignoreFile("ticked.txt"));
    QVERIFY(checklist->ignoreFile("added.txt"));
    QVERIFY(!checklist->ignoreFile("removed.txt"));
    // Ignored elsewhere while the window is open (a command, the tutorial): Done keeps it.
    p.f.data.addIgnoreFilesWithoutAlert({elsewhere});
    QTRY_VERIFY(!checklist->isReading());
    QVERIFY(checklist->ignoreFile("elsewhere.txt"));
    QVERIFY(list->sortedFilenames().contains(elsewhere));
    window->ui().doneButton->click();
    QVERIFY(p.f.data.shouldIgnoreFile(elsewhere));
    QVERIFY(p.f.data.shouldIgnoreFile(ticked));
    QVERIFY(p.f.data.shouldIgnoreFile(added));
    QVERIFY(!p.f.data.shouldIgnoreFile(removed));
}

void tst_Preferences::closingKeepsWhatTookEffectAndTheWindow()
{
    PreferencesFixture p;
    const QString before = p.f.data.getShadowDesktopPath();
    const QString chosen = p.f.sandbox.home() + "/Elsewhere";
    QDir().mkpath(chosen);
    QPointer<PreferencesWindowController> window = p.open();
    Ui::Preferences &ui = window->ui();
    QVERIFY(ui.overwriteKeepBoth->isChecked());
    ui.overwriteFail->click();
    QCOMPARE(p.f.data.getOverwriteMode(), 1u);
    ui.overwriteReplace->click();
    QCOMPARE(p.f.data.getOverwriteMode(), 2u);

    // A cancelled chooser changes nothing.
    ui.changePathButton->click();
    QCOMPARE(p.chooser.m_asked.size(), 1);
    const FileChooser::Options asked = p.chooser.m_asked.first();
    QCOMPARE(asked.title, QStringLiteral("Select Shadow Desktop Location"));
    QCOMPARE(asked.directory, before);
    QVERIFY(asked.mode == FileChooser::Mode::OneFolder);
    QVERIFY(asked.canCreateFolders);
    QVERIFY(ui.pathChangeNote->isHidden());
    // A folder holding the home folder, the Desktop or Brevano's data is refused
    // (emptying the Shadow Desktop would trash it all), and so is the Desktop's inside.
    for (const QString &unsafe :
         {QString("/"), p.f.sandbox.home(), p.f.sandbox.desktop() + "/Inside",
          p.f.sandbox.home() + "/.local/share/Brevano"}) {
        QDir().mkpath(unsafe);
        p.chooser.m_answer = {unsafe};
        ui.changePathButton->click();
        QCOMPARE(p.f.data.getShadowDesktopPath(), before);
        QVERIFY2(p.f.alerts.m_alerts.last().title.endsWith("cannot be the Shadow Desktop"),
                 qPrintable(unsafe));
    }
    // A folder with something in it is used only when the user says so.
    QFile old(chosen + "/old.txt");
    QVERIFY(old.open(QIODevice::WriteOnly));
    p.f.alerts.m_answer = AlertPresenter::Dismissed;
    p.chooser.m_answer = {chosen + "/"};
    ui.changePathButton->click();
    QCOMPARE(p.f.data.getShadowDesktopPath(), before);
    QCOMPARE(p.f.alerts.m_alerts.last().buttons, QStringList({"Cancel", "Use Folder"}));
    p.f.alerts.m_answer = 1;
    ui.changePathButton->click();
    QCOMPARE(p.f.data.getShadowDesktopPath(), chosen);
    QCOMPARE(ui.desktopPath->text(), chosen);
    QVERIFY(ui.pathChangeNote->isVisible());
    QCOMPARE(ui.pathChangeNote->text(), "Items already in “" + before + "” stay there.");
    // Choosing the same folder again is no change.
    ui.pathChangeNote->hide();
    ui.changePathButton->click();
    QVERIFY(ui.pathChangeNote->isHidden());
    ui.pathChangeNote->show();

    // Closed by the title bar or Escape, the window applies nothing and stays.
    ui.growlEnabled->click();
    window->close();
    QVERIFY(!window->isVisible());
    QVERIFY(PreferencesWindowController::isOpen());
    PreferencesWindowController::bringToFront();
    QCOMPARE(PreferencesWindowController::openInstance(), window.data());
    QVERIFY(window->isVisible());
    QTest::keyClick(window, Qt::Key_Escape);
    QVERIFY(!window->isVisible());
    QVERIFY(p.f.data.getGrowlEnabled());
    QVERIFY(!QFileInfo::exists(p.f.sandbox.dataFile()));
    // What took effect at once stays, and so does the window as it was left.
    PreferencesWindowController::bringToFront();
    QVERIFY(window->isVisible());
    QVERIFY(!ui.growlEnabled->isChecked());
    QVERIFY(ui.overwriteReplace->isChecked());
    QVERIFY(ui.pathChangeNote->isVisible());
    QCOMPARE(p.f.data.getOverwriteMode(), 2u);
    QCOMPARE(p.f.data.getShadowDesktopPath(), chosen);
}

void tst_Preferences::resetStoresTheDefaultFolderExplicitly()
{
    PreferencesFixture p;
    const QString defaultFolder = p.f.sandbox.shadowDesktop();
    QVERIFY(QDir(defaultFolder).removeRecursively());
    PreferencesWindowController *window = p.open();
    Ui::Preferences &ui = window->ui();
    // Already the default: stored explicitly all the same, and no note.
    ui.resetPathButton->click();
    QCOMPARE(p.f.data.saveData().value("ShadowDesktopPath").toString(), defaultFolder);
    QVERIFY(QFileInfo(defaultFolder).isDir());
    QVERIFY(ui.pathChangeNote->isHidden());

    const QString custom = p.f.shadowDesktopIn(p.f.sandbox.home() + "/custom");
    window->ui().resetPathButton->click(); // a window made before the custom folder was set
    QCOMPARE(ui.desktopPath->text(), defaultFolder);
    QCOMPARE(ui.pathChangeNote->text(), "Items already in “" + custom + "” stay there.");
    // A later change of the default does not move the folder.
    qputenv("XDG_DATA_HOME", QFile::encodeName(p.f.sandbox.home() + "/other"));
    QCOMPARE(p.f.data.getShadowDesktopPath(), defaultFolder);
}

void tst_Preferences::tabAndModes()
{
    PreferencesFixture p;
    p.f.data.setCurrentPreferencesTab(4); // the Advanced tab, not shown in basic mode
    QPointer<PreferencesWindowController> window = p.open();
    Ui::Preferences &ui = window->ui();
    const int advancedTab = ui.tabView->indexOf(ui.advancedTab);
    QCOMPARE(ui.tabView->currentIndex(), 0);
    QVERIFY(!ui.basicModeButton->isEnabled());
    QVERIFY(ui.advancedModeButton->isEnabled());
    QVERIFY(ui.advancedModeNote->isHidden());
    QVERIFY(!ui.tabView->isTabVisible(advancedTab));

    ui.advancedModeButton->click();
    QCOMPARE(p.f.data.getOperationMode(), 1u);
    QVERIFY(ui.basicModeButton->isEnabled());
    QVERIFY(!ui.advancedModeButton->isEnabled());
    QVERIFY(ui.advancedModeNote->isVisible());
    QVERIFY(ui.advancedModeNote->text().contains("no tidy moves anything"));
    QVERIFY(ui.tabView->isTabVisible(advancedTab));
    QVERIFY(window->findChild<QWidget *>("rulesAndLocations"));
    ui.tabView->setCurrentIndex(advancedTab);
    ui.doneButton->click();
    QCOMPARE(p.f.data.getCurrentPreferencesTab(), quint32(advancedTab));

    // Opened in advanced mode, on the tab left last.
    window = p.open();
    QCOMPARE(window->ui().tabView->currentIndex(), advancedTab);
    QVERIFY(!window->ui().advancedModeNote->isHidden());
    window->ui().basicModeButton->click();
    QCOMPARE(p.f.data.getOperationMode(), 0u);
    QVERIFY(!window->ui().tabView->isTabVisible(advancedTab));
    QVERIFY(window->ui().tabView->currentIndex() != advancedTab);
    QVERIFY(window->ui().advancedModeNote->isHidden());
}

void tst_Preferences::notificationSettingsButton()
{
    PreferencesFixture p;
    PreferencesWindowController *window = p.open();
    QVERIFY(!window->ui().openGrowlPreferences->isHidden());
    window->ui().openGrowlPreferences->click();
    QCOMPARE(p.notificationSettings.m_opened, 1);
    delete window;

    p.notificationSettings.m_available = false;
    window = p.open();
    QVERIFY(window->ui().openGrowlPreferences->isHidden());
}

void tst_Preferences::launchAtLoginBox()
{
    PreferencesFixture p;
    const QString autostart = p.f.sandbox.home() + "/.config/autostart";
    PreferencesWindowController *window = p.open();
    QCheckBox *box = window->ui().launchAtLogin;
    QVERIFY(!box->isChecked());
    box->click();
    QVERIFY(p.launchAtLogin.launchAtLogin());
    QCOMPARE(QDir(autostart).entryList(QDir::Files), QStringList{"brevano.desktop"});
    box->click();
    QVERIFY(QDir(autostart).entryList(QDir::Files).isEmpty());

    // Shown as it is when the window is shown again.
    window->close();
    QVERIFY(p.launchAtLogin.setLaunchAtLogin(true));
    PreferencesWindowController::bringToFront();
    QVERIFY(box->isChecked());

    // Where the entry cannot be removed or written, the box goes back and says so.
    QVERIFY(QDir(autostart).removeRecursively());
    p.f.sandbox.write(".config/autostart", "not a folder");
    box->click(); // nothing there to remove
    QVERIFY(!box->isChecked());
    QVERIFY(p.f.alerts.m_alerts.isEmpty());
    box->click();
    QVERIFY(!box->isChecked());
    QCOMPARE(p.f.alerts.m_alerts.size(), 1);
    QCOMPARE(p.f.alerts.m_alerts.first().title,
             QStringLiteral("Brevano could not change starting at login"));
    QVERIFY(p.f.alerts.m_alerts.first().message.contains(autostart));
}

void tst_Preferences::keyboardAndAssistiveTechnology()
{
    PreferencesFixture p;
    PreferencesWindowController *window = p.open();
    QVERIFY(QTest::qWaitForWindowActive(window));
    Ui::Preferences &ui = window->ui();
    for (QPushButton *button : window->findChildren<QPushButton *>()) {
        QCOMPARE(button->isDefault(), button == ui.doneButton);
        QCOMPARE(button->autoDefault(), button == ui.doneButton);
    }
    for (QWidget *control : window->findChildren<QWidget *>()) {
        if (control->focusPolicy() & Qt::TabFocus)
            QVERIFY2(
                !QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                qPrintable(control->objectName()));
    }
    // Tab leads from the boxes of the Ignore tab into its lists.
    ui.tabView->setCurrentWidget(ui.ignoreTab);
    ui.autoIgnoreRestored->setFocus();
    QTest::keyClick(ui.autoIgnoreRestored, Qt::Key_Tab);
    QVERIFY(window->findChild<QWidget *>("ignoreItems")->isAncestorOf(QApplication::focusWidget()));
    // Escape applies nothing; Return presses Done from any control.
    ui.ignoreFolders->setFocus();
    QTest::keyClick(ui.ignoreFolders, Qt::Key_Space);
    QTest::keyClick(ui.ignoreFolders, Qt::Key_Escape);
    QVERIFY(!p.f.data.getIgnoreFolders());
    PreferencesWindowController::bringToFront();
    QVERIFY(QTest::qWaitForWindowActive(window));
    ui.changePathButton->setFocus();
    QTest::keyClick(ui.changePathButton, Qt::Key_Return);
    QVERIFY(p.chooser.m_asked.isEmpty());
    QVERIFY(p.f.data.getIgnoreFolders());
    QVERIFY(!PreferencesWindowController::isOpen());
}

void tst_Preferences::desktopNotificationSettingsFollowsTheDesktop()
{
    QTemporaryDir bin;
    const QString record = bin.filePath("started");
    // Small stand-ins for the desktops' programs: each writes its name and arguments.
    const auto install = [&](const QString &name) {
        QFile script(bin.filePath(name));
        QVERIFY(script.open(QIODevice::WriteOnly));
        const QByteArray to = QFile::encodeName(record);
        script.write("#!/bin/sh\necho \"${0##*/} $*\" > \"" + to + ".tmp\" && /bin/mv \"" + to +
                     ".tmp\" \"" + to + "\"\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    };
    const QByteArray path = qgetenv("PATH");
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    const auto restore = qScopeGuard([&] {
        qputenv("PATH", path);
        qputenv("XDG_CURRENT_DESKTOP", desktop);
    });
    qputenv("PATH", QFile::encodeName(bin.path()));
    const auto opened = [&](const char *currentDesktop) {
        qputenv("XDG_CURRENT_DESKTOP", currentDesktop);
        QFile::remove(record);
        DesktopNotificationSettings settings;
        if (!settings.isAvailable())
            return QString();
        if (!settings.open())
            return QStringLiteral("failed to start");
        if (!QTest::qWaitFor([&] { return QFileInfo::exists(record); }, 10000))
            return QStringLiteral("never started");
        QFile file(record);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed()
                                              : QString();
    };

    QCOMPARE(opened("GNOME"), QString()); // nothing installed
    install("xfce4-notifyd-config");
    QCOMPARE(opened("GNOME"), QString()); // another desktop's settings are no use here
    install("gnome-control-center");
    install("kcmshell5");
    QCOMPARE(opened("ubuntu:GNOME"), QStringLiteral("gnome-control-center notifications"));
    QCOMPARE(opened("XFCE"), QStringLiteral("xfce4-notifyd-config"));
    QCOMPARE(opened("KDE"), QStringLiteral("kcmshell5 kcm_notifications"));
    install("systemsettings");
    QCOMPARE(opened("KDE"), QStringLiteral("systemsettings kcm_notifications"));
    QCOMPARE(opened(""), QString());
}

// Not a check of behaviour: pictures of every tab to look at, with every
// control laid out at no less than the size it asks for.
void tst_Preferences::screenshotsOfEveryTab()
{
    PreferencesFixture p;
    p.f.data.setOperationMode(1);
    for (const char *name : {"Notes.txt", "Photo.png", "Project", "report.pdf"})
        p.f.desktopItem(name);
    p.f.data.addIgnoreFiles({p.f.sandbox.desktop() + "/Project"});
    PreferencesWindowController *window = p.open();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    const QString folder = QCoreApplication::applicationDirPath() + "/screenshots";
    QDir().mkpath(folder);
    QTabWidget *tabs = window->ui().tabView;
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        QCoreApplication::processEvents();
        for (QWidget *control : tabs->currentWidget()->findChildren<QWidget *>()) {
            if (control->isVisible() && !qobject_cast<QAbstractScrollArea *>(control))
                QVERIFY2(control->height() >= control->minimumSizeHint().height(),
                         qPrintable(control->objectName()));
        }
        const QString file = QStringLiteral("%1/preferences-%2.png")
                                 .arg(folder, tabs->tabText(tab).remove(u'&').replace(u' ', u'-'));
        QVERIFY(window->grab().save(file));
    }
}

QTEST_MAIN(tst_Preferences)
#include "tst_Preferences.moc"
