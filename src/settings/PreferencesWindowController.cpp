#include "PreferencesWindowController.h"

#include "AlertPresenter.h"
#include "AppFolders.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "FileChooser.h"
#include "FileNames.h"
#include "IgnoreDesktopItemsObjectController.h"
#include "IgnoreFileTypesListObjectController.h"
#include "IgnoreFilesListObjectController.h"
#include "LaunchAtLoginController.h"
#include "NotificationSettings.h"
#include "OperationMode.h"
#include "QuickFiltersListObjectController.h"
#include "RulesAndLocationsView.h"
#include "TidyFrequency.h"
#include "ui_Preferences.h"

#include <QDir>
#include <QDirIterator>
#include <QSignalBlocker>
#include <QTableView>

namespace {
// "Every minute", "Every 5 minutes", ... "Every week".
QString frequencyText(TidyFrequency::Period period)
{
    using Unit = Calendar::Unit;
    if (period.unit == Unit::Day && period.count % 7 == 0) {
        period.count /= 7;
        period.unit = Unit::Week;
    }
    QString unit;
    switch (period.unit) {
    case Unit::Minute:
        unit = QStringLiteral("minute");
        break;
    case Unit::Hour:
        unit = QStringLiteral("hour");
        break;
    case Unit::Day:
        unit = QStringLiteral("day");
        break;
    case Unit::Week:
        unit = QStringLiteral("week");
        break;
    case Unit::Month:
        unit = QStringLiteral("month");
        break;
    case Unit::Year:
        unit = QStringLiteral("year");
        break;
    }
    return period.count == 1 ? QStringLiteral("Every %1").arg(unit)
                             : QStringLiteral("Every %1 %2s").arg(period.count).arg(unit);
}

// Puts the controls of an embedded view that take the focus by Tab right after
// `before`, in their own order; returns the last of them.
QWidget *chainFocus(QWidget *before, QWidget *view)
{
    QList<QWidget *> inside;
    for (QWidget *widget = view->nextInFocusChain(); view->isAncestorOf(widget);
         widget = widget->nextInFocusChain()) {
        if (widget->focusPolicy() & Qt::TabFocus)
            inside.append(widget);
    }
    for (QWidget *widget : std::as_const(inside)) {
        QWidget::setTabOrder(before, widget);
        before = widget;
    }
    return before;
}

void embed(QWidget *view, QWidget *container, const QString &name)
{
    view->setObjectName(name);
    container->layout()->addWidget(view);
}
} // namespace

struct PreferencesWindowController::CheckBoxSetting
{
    QCheckBox *box;
    bool (BrevanoData::*get)() const;
    void (BrevanoData::*set)(bool);
};

PreferencesWindowController::PreferencesWindowController(const SettingsServices &services,
                                                         QWidget *parent)
    : QDialog(parent), m_services(services), m_ui(std::make_unique<Ui::Preferences>())
{
    m_ui->setupUi(this);
    for (quint32 index = 0; const auto period = TidyFrequency::period(index); ++index)
        m_ui->tidyFrequency->addItem(frequencyText(*period));
    m_ui->overwriteRadioButton->setId(m_ui->overwriteFail, 1);
    m_ui->overwriteRadioButton->setId(m_ui->overwriteReplace, 2);
    m_ui->overwriteRadioButton->setId(m_ui->overwriteKeepBoth, 3);
    m_ui->pathChangeNote->hide();
    embedViews();
    loadSettings();
    showDesktopState();

    connect(m_ui->overwriteRadioButton, &QButtonGroup::idToggled, this, [this](int id, bool on) {
        if (on)
            overwriteOptionChanged(id);
    });
    connect(m_ui->basicModeButton, &QPushButton::clicked, this,
            &PreferencesWindowController::pressedModeBasic);
    connect(m_ui->advancedModeButton, &QPushButton::clicked, this,
            &PreferencesWindowController::pressedModeAdvanced);
    connect(m_ui->changePathButton, &QPushButton::clicked, this,
            &PreferencesWindowController::pressedChangePath);
    connect(m_ui->resetPathButton, &QPushButton::clicked, this,
            &PreferencesWindowController::pressedResetPath);
    connect(m_ui->openGrowlPreferences, &QPushButton::clicked, this,
            &PreferencesWindowController::pressedOpenGrowlPreferences);
    connect(m_ui->launchAtLogin, &QCheckBox::clicked, this,
            &PreferencesWindowController::launchAtLoginChanged);
    connect(m_ui->doneButton, &QPushButton::clicked, this,
            &PreferencesWindowController::pressedDone);
    markOpen(this);
}

PreferencesWindowController::~PreferencesWindowController() = default;

void PreferencesWindowController::embedViews()
{
    Ui::Preferences &ui = *m_ui;
    BrevanoData &store = m_services.data;
    m_ignoreItems =
        new IgnoreDesktopItemsObjectController(store, m_services.engine.itemInfo(), this);
    embed(m_ignoreItems, ui.ignoreItemsContainer, QStringLiteral("ignoreItems"));
    auto *ignoreFiles = new IgnoreFilesListObjectController(store, m_services.chooser, this);
    embed(ignoreFiles, ui.ignoreFilesContainer, QStringLiteral("ignoreFiles"));
    m_ignoredPaths = ignoredPaths();
    connect(ignoreFiles->tableView()->model(), &QAbstractItemModel::modelReset, this,
            &PreferencesWindowController::followIgnoredItems);
    // Changed elsewhere (the tutorial, a command, a restore that ignores): the
    // lists follow, so that Done does not undo it.
    connect(&m_services.data, &BrevanoData::ignoreListChanged, ignoreFiles,
            &IgnoreFilesListObjectController::rebuildData);
    auto *ignoreFileTypes = new IgnoreFileTypesListObjectController(this);
    embed(ignoreFileTypes, ui.ignoreFileTypesContainer, QStringLiteral("ignoreFileTypes"));
    auto *quickFilters =
        new QuickFiltersListObjectController(store, m_services.engine.notifications(), this);
    embed(quickFilters, ui.quickFiltersContainer, QStringLiteral("quickFilters"));
    auto *rulesAndLocations = new RulesAndLocationsView(m_services.engine, this);
    embed(rulesAndLocations, ui.rulesAndLocationsContainer, QStringLiteral("rulesAndLocations"));

    QWidget *last = chainFocus(ui.autoIgnoreRestored, m_ignoreItems);
    last = chainFocus(last, ignoreFiles);
    last = chainFocus(last, ignoreFileTypes);
    chainFocus(last, quickFilters);
    chainFocus(ui.openGrowlPreferences, rulesAndLocations);
    // Return presses Done wherever the focus is: Done alone is a default button.
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setAutoDefault(button == ui.doneButton);
    ui.doneButton->setDefault(true);
}

QList<PreferencesWindowController::CheckBoxSetting>
PreferencesWindowController::checkBoxSettings() const
{
    const Ui::Preferences &ui = *m_ui;
    using D = BrevanoData;
    // The two boxes of the emptied and skipped notifications are read from their
    // own settings and written each to the other's: kept so, pressing Done with
    // the two in different states swaps the settings.
    return {
        {ui.growlEnabled, &D::getGrowlEnabled, &D::setGrowlEnabled},
        {ui.growlOnComplete, &D::getGrowlOnComplete, &D::setGrowlOnComplete},
        {ui.growlBeforeTidyOnlyIfFiles, &D::getGrowlBeforeTidyOnlyIfFiles,
         &D::setGrowlBeforeTidyOnlyIfFiles},
        {ui.growlBeforeTidy, &D::getGrowlBeforeTidy, &D::setGrowlBeforeTidy},
        {ui.growlOnEmpty, &D::getGrowlOnEmpty, &D::setGrowlDeferredTidy},
        {ui.growlTidyDeferred, &D::getGrowlDeferredTidy, &D::setGrowlOnEmpty},
        {ui.growlFileMoved, &D::getGrowlFileMoved, &D::setGrowlFileMoved},
        {ui.growlFileMoveFailed, &D::getGrowlFileMoveFailed, &D::setGrowlFileMoveFailed},
        {ui.ignoreAliases, &D::getIgnoreAliases, &D::setIgnoreAliases},
        {ui.ignoreFolders, &D::getIgnoreFolders, &D::setIgnoreFolders},
        {ui.ignoreHidden, &D::getIgnoreHidden, &D::setIgnoreHidden},
        {ui.autoIgnoreRestored, &D::getAutoIgnoreRestoredFiles, &D::setAutoIgnoreRestoredFiles},
    };
}

void PreferencesWindowController::loadSettings()
{
    Ui::Preferences &ui = *m_ui;
    const BrevanoData &store = m_services.data;
    for (const CheckBoxSetting &setting : checkBoxSettings())
        setting.box->setChecked((store.*setting.get)());
    ui.tidyPeriodically->setChecked(m_services.engine.getEnabled());
    ui.displayRemaining->setChecked(store.getShowTimeUntilTidy());
    const quint32 frequency = store.getTidyFrequency();
    ui.tidyFrequency->setCurrentIndex(
        frequency < quint32(ui.tidyFrequency->count()) ? int(frequency) : -1);
    if (QAbstractButton *overwrite = ui.overwriteRadioButton->button(int(store.getOverwriteMode())))
        overwrite->setChecked(true);
    ui.desktopPath->setText(FileNames::display(store.getShadowDesktopPath()));
    ui.desktopPath->setToolTip(ui.desktopPath->text());
    updateButtons();
    // The tab shown last, unless it is not there now.
    const quint32 tab = store.getCurrentPreferencesTab();
    if (tab < quint32(ui.tabView->count()) && ui.tabView->isTabVisible(int(tab)))
        ui.tabView->setCurrentIndex(int(tab));
    else
        ui.tabView->setCurrentIndex(0);
}

void PreferencesWindowController::showEvent(QShowEvent *event)
{
    showDesktopState();
    QDialog::showEvent(event);
}

void PreferencesWindowController::showDesktopState()
{
    m_ui->launchAtLogin->setChecked(m_services.launchAtLogin.launchAtLogin());
    m_ui->openGrowlPreferences->setVisible(m_services.notificationSettings.isAvailable());
}

void PreferencesWindowController::overwriteOptionChanged(int mode)
{
    m_services.data.setOverwriteMode(quint32(mode));
}

void PreferencesWindowController::setOperationMode(quint32 mode)
{
    m_services.data.setOperationMode(mode);
    updateButtons();
}

void PreferencesWindowController::updateButtons()
{
    Ui::Preferences &ui = *m_ui;
    const bool basic = OperationMode::tidies(m_services.data.getOperationMode());
    ui.basicModeButton->setEnabled(!basic);
    ui.advancedModeButton->setEnabled(basic);
    // The same words as the status menu and brevano status.
    ui.advancedModeNote->setText(OperationMode::nothingMovesNote());
    ui.advancedModeNote->setVisible(!basic);
    ui.tabView->setTabVisible(ui.tabView->indexOf(ui.advancedTab), !basic);
}

void PreferencesWindowController::pressedChangePath()
{
    FileChooser::Options options;
    options.title = QStringLiteral("Select Shadow Desktop Location");
    options.directory = m_services.data.getShadowDesktopPath();
    options.mode = FileChooser::Mode::OneFolder;
    options.canCreateFolders = true;
    const QStringList chosen = m_services.chooser.choose(options, this);
    if (chosen.isEmpty())
        return;
    const QString path = QDir::cleanPath(chosen.first());
    if (path != m_services.data.getShadowDesktopPath() && !mayBeShadowDesktop(path))
        return;
    useShadowDesktopPath(path);
}

// Emptying the Shadow Desktop trashes everything in it, and restoring all puts
// everything on the Desktop: the folder must hold nothing of the user's that
// matters, and a folder with things in it is used only when the user says so.
bool PreferencesWindowController::mayBeShadowDesktop(const QString &path)
{
    const QString shown = FileNames::display(path);
    const QString requirement = AppFolders::shadowDesktopRequirement(path);
    if (!requirement.isEmpty()) {
        m_services.alerts.runModal(
            {QStringLiteral("“%1” cannot be the Shadow Desktop").arg(shown),
             QStringLiteral("The Shadow Desktop must be %1.").arg(requirement)});
        return false;
    }
    QDirIterator entries(path,
                         QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    if (!entries.hasNext())
        return true;
    const int answer = m_services.alerts.runModal(
        {QStringLiteral("Use “%1”, which is not empty, as the Shadow Desktop?").arg(shown),
         QStringLiteral("What is in it will be listed with the tidied items, and Empty Shadow "
                        "Desktop would move it to the Trash."),
         {QStringLiteral("Cancel"), QStringLiteral("Use Folder")}});
    return answer == 1;
}

void PreferencesWindowController::pressedResetPath()
{
    // Stored explicitly, so that a later change of the default does not move it.
    useShadowDesktopPath(m_services.engine.getDefaultShadowDesktopFolder());
}

void PreferencesWindowController::useShadowDesktopPath(const QString &path)
{
    BrevanoData &store = m_services.data;
    const QString before = store.getShadowDesktopPath();
    store.setShadowDesktopPath(path);
    const QString now = store.getShadowDesktopPath();
    m_ui->desktopPath->setText(FileNames::display(now));
    m_ui->desktopPath->setToolTip(FileNames::display(now));
    if (now != before) {
        m_ui->pathChangeNote->setText(
            QStringLiteral("Items already in “%1” stay there.").arg(FileNames::display(before)));
        m_ui->pathChangeNote->show();
    }
}

QSet<QString> PreferencesWindowController::ignoredPaths() const
{
    QSet<QString> paths;
    const BrevanoData &store = m_services.data;
    for (const QString &path : store.ignoreList().paths()) {
        if (store.shouldIgnoreFile(path))
            paths.insert(path);
    }
    return paths;
}

// The ignored items list changes the store at once, while the checklist holds
// its ticks until Done and then writes every Desktop item's. So what the list
// just added or removed is brought into the checklist, and the ticks the user
// changed there are kept.
void PreferencesWindowController::followIgnoredItems()
{
    const QSet<QString> now = ignoredPaths();
    if (now == m_ignoredPaths)
        return;
    // The checklist reads the Desktop and the ignore list afresh, keeping the
    // ticks the user changed.
    m_ignoreItems->rebuildData();
    m_ignoredPaths = now;
}

void PreferencesWindowController::pressedOpenGrowlPreferences()
{
    m_services.notificationSettings.open();
}

void PreferencesWindowController::launchAtLoginChanged(bool enabled)
{
    if (m_services.launchAtLogin.setLaunchAtLogin(enabled))
        return;
    {
        const QSignalBlocker quiet(m_ui->launchAtLogin);
        m_ui->launchAtLogin->setChecked(!enabled);
    }
    const QString folder = QDir::toNativeSeparators(LaunchAtLoginController::autostartFolder());
    m_services.alerts.runModal(
        Alert{QStringLiteral("Brevano could not change starting at login"),
              (enabled ? QStringLiteral("Its entry in “%1” could not be written.")
                       : QStringLiteral("Its entry in “%1” could not be removed."))
                  .arg(folder)});
}

void PreferencesWindowController::pressedDone()
{
    Ui::Preferences &ui = *m_ui;
    BrevanoData &store = m_services.data;
    m_ignoreItems->saveSettings();
    if (const int overwrite = ui.overwriteRadioButton->checkedId(); overwrite > 0)
        store.setOverwriteMode(quint32(overwrite));
    for (const CheckBoxSetting &setting : checkBoxSettings())
        (store.*setting.set)(setting.box->checkState() == Qt::Checked);
    m_services.engine.setEnabled(ui.tidyPeriodically->checkState() == Qt::Checked);
    store.setShowTimeUntilTidy(ui.displayRemaining->checkState() == Qt::Checked);
    store.setCurrentPreferencesTab(quint32(ui.tabView->currentIndex()));
    // No selection stores all ones, a frequency without a period.
    store.setTidyFrequency(static_cast<quint32>(ui.tidyFrequency->currentIndex()));
    store.updateStatusIcon();
    hide();
    clearOpen();
    store.saveDataFile();
    deleteLater();
}
