#include "PanelController.h"

#include "AppFolders.h"
#include "BackgroundFileListBuilder.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "DraggedBackFiles.h"
#include "DroppedItemsMover.h"
#include "DroppedItemsRule.h"
#include "FileListModel.h"
#include "FileNames.h"
#include "FileRowDelegate.h"
#include "FileStat.h"
#include "FileTypeIcons.h"
#include "FileViewer.h"
#include "ItemInfo.h"
#include "MoveJournal.h"
#include "NotificationCenter.h"
#include "PanelControllerDelegate.h"
#include "PanelPlacement.h"
#include "PanelWindow.h"
#include "PathBar.h"
#include "RunDescription.h"
#include "ThumbnailLoader.h"
#include "ViewOptionsPopoverViewController.h"
#include "ui_Panel.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QPropertyAnimation>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QSignalBlocker>

#include <utility>

namespace {

const QString kPanelWidth = QStringLiteral("PanelWidth");
const QString kPanelHeight = QStringLiteral("PanelHeight");
const QString kSelectedView = QStringLiteral("SelectedView");

bool shiftHeldNow()
{
    // Shift, with or without Alt (Option), and nothing else.
    const Qt::KeyboardModifiers held =
        QGuiApplication::queryKeyboardModifiers() & ~Qt::KeypadModifier;
    return held == Qt::ShiftModifier || held == (Qt::ShiftModifier | Qt::AltModifier);
}

QIcon toolbarIcon(const QString &name)
{
    return QIcon(QStringLiteral(":/panel/") + name + QStringLiteral(".svg"));
}

// The item's name as the status line shows it.
QString shownName(const QString &path)
{
    return FileNames::display(path.mid(path.lastIndexOf(u'/') + 1));
}

} // namespace

// Keys on the table that act like the mouse: Return opens, Backspace goes up,
// Delete trashes, the menu key shows the row's menu.
class PanelController::TableKeys : public QObject
{
public:
    explicit TableKeys(PanelController &panel) : QObject(&panel), m_panel(panel) {}

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (!m_panel.m_window)
            return false;
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::MouseButtonPress)
            m_panel.m_userInRows = true; // the search field then keeps out of the way
        if (event->type() != QEvent::ContextMenu && event->type() != QEvent::KeyPress)
            return false;
        QListView *table = m_panel.m_window->ui().tableView;
        if (event->type() == QEvent::ContextMenu) {
            auto *menuEvent = static_cast<QContextMenuEvent *>(event);
            QModelIndex index;
            QPoint at;
            if (menuEvent->reason() == QContextMenuEvent::Keyboard) {
                index = table->currentIndex();
                table->scrollTo(index); // the menu comes beside the row, in sight
                at = table->viewport()->mapToGlobal(table->visualRect(index).center());
            } else {
                const QPoint local = table->viewport()->mapFromGlobal(menuEvent->globalPos());
                index = table->indexAt(local);
                at = menuEvent->globalPos();
            }
            if (index.isValid()) {
                if (!table->selectionModel()->isSelected(index))
                    table->setCurrentIndex(index);
                m_panel.showFileMenu(index.row(), at);
            }
            return true;
        }
        if (event->type() != QEvent::KeyPress || watched != table)
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_F10 && key->modifiers() == Qt::ShiftModifier) {
            QContextMenuEvent menu(QContextMenuEvent::Keyboard, QPoint(), QPoint());
            return eventFilter(table, &menu);
        }
        if (key->modifiers() & ~Qt::KeypadModifier)
            return false;
        const int row = table->currentIndex().isValid() ? table->currentIndex().row() : -1;
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            m_panel.doubleClickedRow(row);
            return true;
        case Qt::Key_Tab:
            // On to the preview's buttons, in its own window.
            if (!m_panel.m_previewPopover)
                return false;
            m_panel.m_previewPopover->takeKeyboard();
            return true;
        case Qt::Key_Backspace:
            if (m_panel.m_window->ui().buttonBack->isEnabled())
                m_panel.pressedUpDirectory();
            return true;
        case Qt::Key_Delete: {
            QStringList selected;
            for (const QModelIndex &index : table->selectionModel()->selectedIndexes())
                selected.append(m_panel.m_model->pathAt(index.row()));
            if (selected.isEmpty() && row >= 0)
                selected.append(m_panel.m_model->pathAt(row));
            m_panel.trashPaths(selected);
            return true;
        }
        default:
            return false;
        }
    }

private:
    PanelController &m_panel;
};

PanelController::PanelController(const Services &services, PanelControllerDelegate &delegate,
                                 QObject *parent)
    : QObject(parent), m_data(services.data), m_engine(services.engine),
      m_fileViewer(services.fileViewer), m_scheduler(services.scheduler),
      m_notifications(services.notifications), m_delegate(delegate), m_shiftHeld(shiftHeldNow),
      m_thumbnails(std::make_unique<ThumbnailLoader>(services.thumbnails)),
      m_alerts(services.alerts)
{
    for (const auto &filter : m_data.filterItems())
        m_desktopViews.append(filter->getName());
    setUpWindow();
    setUpThumbnails();
}

PanelController::~PanelController()
{
    m_scheduler.cancel(m_focusTask);
    m_scheduler.cancel(m_initialUpdateTask);
    m_scheduler.cancel(m_previewTask);
    m_scheduler.cancel(m_dragSettleTask);
    // Waits for the move under way; nothing it did is reported any more.
    m_dropMover.reset();
    if (m_hasActivePanel)
        m_data.stopUpdatingTimeRemaining();
    m_backgroundBuilder.reset(); // stops the listing; nothing it finds arrives after this
    // The key filters see no window while it goes.
    delete std::exchange(m_window, nullptr).data();
}

void PanelController::setUpWindow()
{
    Q_INIT_RESOURCE(panel);
    m_window = new PanelWindow;
    Ui::Panel &ui = m_window->ui();

    ui.buttonAction->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_action")));
    ui.buttonReveal->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_reveal")));
    ui.buttonViewOptions->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_viewoptions")));
    ui.buttonBack->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_up")));
    ui.viewPopup->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_views")));
    ui.buttonIconSize->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_iconsize")));
    ui.buttonIconStyle->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_iconstyle")));
    ui.buttonFolderStyle->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_folderstyle")));
    ui.buttonShadowDesktop->setIcon(toolbarIcon(QStringLiteral("ui_toolbar_home")));
    const bool pinned = m_data.getPin();
    ui.buttonPin->setChecked(pinned);
    ui.buttonPin->setIcon(toolbarIcon(pinned ? QStringLiteral("ui_toolbar_pin_h")
                                             : QStringLiteral("ui_toolbar_pin")));
    ui.versionNumber->setText(QStringLiteral("v%1").arg(BrevanoData::getAppVersion()));

    m_model = new FileListModel(FileTypeIcons::shared(), this);
    m_rowDelegate = new FileRowDelegate(this);
    ui.tableView->setModel(m_model);
    ui.tableView->setItemDelegate(m_rowDelegate);
    ui.tableView->setSpacing(0);
    ui.tableView->setContextMenuPolicy(Qt::DefaultContextMenu);
    auto *keys = new TableKeys(*this);
    ui.tableView->installEventFilter(keys);
    ui.tableView->viewport()->installEventFilter(keys);
    connect(ui.tableView, &QListView::doubleClicked, this,
            [this](const QModelIndex &index) { doubleClickedRow(index.row()); });
    setUpPreview();
    setUpDragAndDrop();
    m_pathBar = new PathBar(ui.pathControl);
    connect(m_pathBar, &PathBar::componentClicked, this, &PanelController::pathControlClicked);

    connect(ui.searchField, &QLineEdit::textChanged, this, &PanelController::runSearch);
    ui.searchField->installEventFilter(this);
    connect(ui.buttonAction, &QToolButton::clicked, this, &PanelController::pressedAction);
    connect(ui.buttonReveal, &QToolButton::clicked, this,
            &PanelController::pressedActionRevealShadowDesktop);
    // Toggled, not clicked: assistive technology toggles a check button.
    connect(ui.buttonViewOptions, &QToolButton::toggled, this, [this](bool on) {
        if (on != !m_viewOptionsPopover.isNull())
            pressedViewOptions();
    });
    connect(ui.buttonBack, &QToolButton::clicked, this, &PanelController::pressedUpDirectory);
    connect(ui.buttonShadowDesktop, &QToolButton::clicked, this,
            &PanelController::pressedShadowDesktop);
    connect(ui.buttonPin, &QToolButton::toggled, this, &PanelController::pressedPin);
    connect(ui.tidyAutomaticallyCheck, &QCheckBox::clicked, this, &PanelController::toggleEnabled);
    connect(ui.comboView, &QComboBox::activated, this,
            &PanelController::comboBoxSelectionDidChange);

    connect(m_window, &PanelWindow::resignedKey, this, [this] { windowLostKeyboard(m_window); });
    connect(m_window, &PanelWindow::cancelOperation, this, [this] { setHasActivePanel(false); });
    connect(m_window, &PanelWindow::closing, this, [this] { setHasActivePanel(false); });
    connect(m_window, &PanelWindow::resized, this, [this] {
        setArrowPosition();
        // The preview stays beside its row.
        if (m_previewPopover) {
            const int row = m_model->rowOfPath(m_previewPopover->filenameToPreview());
            if (row >= 0)
                placePreviewPopover(*m_previewPopover, row);
        }
    });

    m_notifications.observe(NotificationCenter::UpdateNextTidyText, this,
                            [this](const QVariant &text) { updateNextTidyText(text.toString()); });
    m_notifications.observe(NotificationCenter::UpdateQuickLayouts, this,
                            [this](const QVariant &) { updateQuickLayouts(); });
    // Every opening lists afresh, so a closed panel need not follow a tidy.
    m_notifications.observe(NotificationCenter::TidyComplete, this, [this](const QVariant &) {
        if (m_hasActivePanel)
            refreshFileList();
    });

    setUpActionMenu();
    setUpFileMenu();
    setUpViewMenus();

    ui.nextTidyText->setText(QStringLiteral("Tidy Periodically Disabled"));
    ui.tidyAutomaticallyCheck->setText(QStringLiteral("Automatic tidy disabled"));
    ui.progressIndicator->hide();
    ui.scanningLabel->hide();
    updateQuickLayouts();
    ui.comboView->setCurrentIndex(0);
    applySavedView();
    configureControls();
}

// Down from the search field goes to the rows.
// The panel or a preview of its rows (`window`) lost the keyboard. To another
// of them, the panel stays open; to anything else, it closes unless pinned.
void PanelController::windowLostKeyboard(QWidget *window)
{
    if (m_askingAboutDrag)
        return; // the panel's own question took the focus; the panel waits for it
    QWidget *active = QApplication::activeWindow();
    const bool ours = active == m_window || (qobject_cast<PreviewPopoverViewController *>(active) &&
                                             active->parentWidget() == m_window);
    if (active && active != window && ours)
        return;

    // The keyboard went to a window of ours that is no widget: the XEmbed
    // tray icon, told by its tray that it was clicked, sometimes only after
    // the panel opened. A click toggles the panel itself; an open panel
    // takes the keyboard back.
    if (QGuiApplication::focusWindow() && !QApplication::activeWindow()) {
        m_scheduler.schedule(std::chrono::milliseconds(0), [window = m_window, this] {
            if (window && m_hasActivePanel)
                window->reactivate();
        });
        return;
    }
    if (m_hasActivePanel && m_window->isVisible() && !m_data.getPin()) {
        m_resignedAt = m_scheduler.now();
        setHasActivePanel(false);
    }
}

bool PanelController::eventFilter(QObject *watched, QEvent *event)
{
    if (m_window && watched == m_window->ui().searchField && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Down && m_model->rowCount() > 0) {
        QListView *table = m_window->ui().tableView;
        table->setFocus(Qt::TabFocusReason);
        if (!table->currentIndex().isValid() ||
            !table->selectionModel()->isSelected(table->currentIndex()))
            table->selectionModel()->setCurrentIndex(
                table->currentIndex().isValid() ? table->currentIndex() : m_model->index(0),
                QItemSelectionModel::ClearAndSelect);
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void PanelController::applySavedView()
{
    const QSettings settings;
    const int selected = settings.value(kSelectedView, 0).toInt();
    const auto &filters = m_data.filterItems();
    if (selected < 0)
        return; // plain browsing, as the panel was left
    // A stored view that no longer exists falls back to the first.
    const int index = selected < filters.size() ? selected : 0;
    if (index < filters.size())
        applyView(filters.at(index));
}

void PanelController::setHasActivePanel(bool active)
{
    if (active == m_hasActivePanel)
        return;
    m_hasActivePanel = active;
    if (active)
        openPanel();
    else
        closePanel();
    emit hasActivePanelChanged(active);
}

QScreen *PanelController::screenFor(const QRect &statusRect)
{
    if (QScreen *screen = QGuiApplication::screenAt(statusRect.center()))
        return screen;
    return QGuiApplication::primaryScreen();
}

void PanelController::openPanel()
{
    Ui::Panel &ui = m_window->ui();
    if (m_fade)
        m_fade->stop();
    ui.scanningLabel->show();
    m_userInRows = false;
    ui.textField->clear();
    ui.textField->setToolTip(QString());
    m_data.startUpdatingTimeRemaining();
    m_model->storeFilteredArray({});
    // Quick filters reordered in Preferences announce nothing: the views follow here.
    updateQuickLayouts();

    m_statusRect = m_delegate.statusItemRectForPanelController(*this);
    const QSettings settings;
    QSize size = m_window->size();
    if (settings.contains(kPanelWidth) && settings.contains(kPanelHeight))
        size = QSize(qRound(settings.value(kPanelWidth).toDouble()),
                     qRound(settings.value(kPanelHeight).toDouble()))
                   .expandedTo(m_window->minimumSize())
                   .boundedTo(m_window->maximumSize());
    QRect screen(QPoint(0, 0), size), available = screen;
    if (QScreen *on = screenFor(m_statusRect)) {
        screen = on->geometry();
        available = on->availableGeometry();
    }
    const PanelPlacement::Result placed =
        PanelPlacement::place(m_statusRect, size, screen, available);
    m_arrowEdge = placed.arrowEdge;

    // The rows take the keys at once; the search field only after the delay.
    ui.tableView->setFocus(Qt::OtherFocusReason);
    m_window->setWindowOpacity(0);
    m_window->setGeometry(placed.frame);
    m_window->show();
    m_window->setWindowOpacity(1);
    m_window->raise();
    m_window->activateWindow();
    setArrowPosition();

    m_scheduler.cancel(m_focusTask);
    m_focusTask = m_scheduler.schedule(
        m_shiftHeld() ? kSearchFocusDelayWithShift : kSearchFocusDelay, [this] {
            m_focusTask = 0;
            // Not when the keyboard has already moved on into the rows.
            if (!m_hasActivePanel || m_userInRows)
                return;
            // Asked again: an XEmbed icon's click can leave Qt thinking no window
            // is active although the panel has the keyboard.
            if (QGuiApplication::focusWindow() != m_window->windowHandle())
                m_window->reactivate();
            m_window->ui().searchField->setFocus(Qt::OtherFocusReason);
        });
    m_scheduler.cancel(m_initialUpdateTask);
    m_initialUpdateTask = m_scheduler.schedule(std::chrono::milliseconds(0), [this] {
        m_initialUpdateTask = 0;
        if (m_hasActivePanel)
            initialUpdate();
    });
}

void PanelController::bringToFront()
{
    m_window->raise();
    m_window->activateWindow();
}

bool PanelController::justClosedByFocusLoss() const
{
    return m_resignedAt.isValid() && m_resignedAt.msecsTo(m_scheduler.now()) < 400;
}

void PanelController::initialUpdate()
{
    m_currentPath = shadowDesktopPath();
    buildFileList();
    configureControls();
    m_pathBar->setPath(shadowDesktopPath(), m_currentPath);
    m_window->ui().scanningLabel->hide();
}

void PanelController::closePanel()
{
    saveDefaults();
    m_data.stopUpdatingTimeRemaining();
    closePopovers();
    m_scheduler.cancel(m_focusTask);
    m_scheduler.cancel(m_initialUpdateTask);
    m_scheduler.cancel(m_previewTask);
    m_focusTask = m_initialUpdateTask = m_previewTask = 0;
    // Nobody sees the rest of a listing of a closed panel.
    m_backgroundBuilder.reset();
    showProgress();
    if (!m_fade) {
        m_fade = new QPropertyAnimation(m_window, "windowOpacity", this);
        m_fade->setDuration(150);
        m_fade->setEndValue(0.0);
        connect(m_fade, &QPropertyAnimation::finished, this, [this] {
            if (!m_hasActivePanel)
                m_window->hide();
        });
    }
    m_fade->setStartValue(m_window->windowOpacity());
    m_fade->start();
}

void PanelController::saveDefaults()
{
    QSettings settings;
    settings.setValue(kPanelWidth, double(m_window->width()));
    settings.setValue(kPanelHeight, double(m_window->height()));
    settings.setValue(kSelectedView, int(m_data.filterItems().indexOf(m_currentFilter)));
    settings.sync();
}

void PanelController::setArrowPosition()
{
    if (!m_statusRect.isValid())
        return;
    const QRect frame = m_window->geometry();
    const QPoint centre(qRound(m_statusRect.x() + m_statusRect.width() / 2.0),
                        qRound(m_statusRect.y() + m_statusRect.height() / 2.0));
    const bool alongX = m_arrowEdge == Qt::TopEdge || m_arrowEdge == Qt::BottomEdge;
    m_window->setArrow(m_arrowEdge, PanelPlacement::arrowInside(
                                        alongX ? centre.x() - frame.x() : centre.y() - frame.y(),
                                        alongX ? frame.width() : frame.height()));
}

void PanelController::configureControls()
{
    Ui::Panel &ui = m_window->ui();
    ui.tidyAutomaticallyCheck->setChecked(m_engine.getEnabled());
    const QString root = shadowDesktopPath();
    const bool browsesFolders = !m_currentFilter || m_currentFilter->getFolderStyle() == 0;
    ui.buttonBack->setEnabled(browsesFolders && !root.isEmpty() && m_currentPath != root);
    ui.buttonViewOptions->setEnabled(m_currentFilter != nullptr);
}

QString PanelController::shadowDesktopPath() const
{
    return m_engine.getTargetFilename();
}

// ---- listing ----

void PanelController::buildFileList()
{
    m_refreshing = false;
    m_backgroundBuilder.reset(); // stops it; a superseded listing shows nothing more
    std::shared_ptr<const QuickFilterItem> view;
    if (m_currentFilter)
        view =
            std::make_shared<const QuickFilterItem>(m_currentFilter->tempDictionary().deepCopy());
    m_backgroundBuilder = std::make_unique<BackgroundFileListBuilder>(
        m_currentPath, std::move(view), m_window->ui().searchField->text(), shadowDesktopPath(),
        m_engine.itemInfo());
    connect(m_backgroundBuilder.get(), &BackgroundFileListBuilder::fileListUpdated, this,
            &PanelController::fileListUpdated);
    connect(m_backgroundBuilder.get(), &BackgroundFileListBuilder::fileListCompleted, this,
            &PanelController::fileListCompletedForTask);
    m_backgroundBuilder->startBackgroundTask();
    showProgress();
}

// The same folder and view listed again (after a tidy): the rows stay until the
// new list is whole, and the row the user was on stays current, where it was.
void PanelController::refreshFileList()
{
    buildFileList();
    m_refreshing = true;
}

void PanelController::fileListUpdated(const QStringList &paths, BackgroundFileListBuilder *)
{
    if (!m_refreshing)
        m_model->storeFilteredArray(paths);
}

void PanelController::storeKeepingTheCurrentRow(const QStringList &paths)
{
    QListView *table = m_window->ui().tableView;
    const QString current = m_model->pathAt(table->currentIndex().row());
    const int scrolled = table->verticalScrollBar()->value();
    m_model->storeFilteredArray(paths);
    if (const int row = int(m_model->dirContentsFiltered().indexOf(current)); row >= 0)
        table->selectionModel()->setCurrentIndex(m_model->index(row),
                                                 QItemSelectionModel::ClearAndSelect);
    table->verticalScrollBar()->setValue(scrolled);
}

void PanelController::fileListCompletedForTask(const QStringList &paths,
                                               BackgroundFileListBuilder *task)
{
    if (std::exchange(m_refreshing, false))
        storeKeepingTheCurrentRow(paths);
    else
        m_model->storeFilteredArray(paths);
    if (task == m_backgroundBuilder.get())
        m_backgroundBuilder.release()->deleteLater();
    showProgress();
    emit fileListCompleted();
}

void PanelController::runSearch(const QString &phrase)
{
    m_window->ui().textField->setText(
        phrase.isEmpty() ? QString() : QStringLiteral("Search for ‘%1’…").arg(phrase));
    m_model->setSearchPhrase(phrase);
}

// ---- navigation ----

void PanelController::navigateTo(const QString &path)
{
    m_currentPath = path;
    buildFileList();
    configureControls();
    m_pathBar->setPath(shadowDesktopPath(), m_currentPath);
}

void PanelController::pathControlClicked(const QString &path)
{
    navigateTo(path);
}

void PanelController::pressedShadowDesktop()
{
    navigateTo(shadowDesktopPath());
}

void PanelController::pressedUpDirectory()
{
    const qsizetype slash = m_currentPath.lastIndexOf(u'/');
    navigateTo(slash > 0 ? m_currentPath.left(slash) : QStringLiteral("/"));
}

void PanelController::doubleClickedRow(int row)
{
    m_scheduler.cancel(std::exchange(m_previewTask, 0));
    const QString path = m_model->pathAt(row);
    if (path.isEmpty())
        return;
    if (m_engine.getFileFlags(path) & (ItemInfo::Container | ItemInfo::Package))
        navigateTo(path);
    else
        m_fileViewer.open(path);
}

// ---- the rows' context menu ----

void PanelController::setUpFileMenu()
{
    m_fileMenu = new QMenu(m_window);
    m_fileMenu->setAccessibleName(QStringLiteral("Item"));
    connect(m_fileMenu->addAction(QStringLiteral("Open")), &QAction::triggered, this,
            &PanelController::pressedFileOpen);
    connect(m_fileMenu->addAction(QStringLiteral("Show in File Manager")), &QAction::triggered,
            this, &PanelController::pressedFileReveal);
    m_fileMenu->addSeparator();
    m_fileMenuItemRestore = m_fileMenu->addAction(QStringLiteral("Restore to Desktop"));
    connect(m_fileMenuItemRestore, &QAction::triggered, this, &PanelController::pressedFileRestore);
    m_fileMenuItemRestoreAndIgnore =
        m_fileMenu->addAction(QStringLiteral("Restore to Desktop and Ignore"));
    m_fileMenuItemRestoreAndIgnore->setToolTip(
        QStringLiteral("Put it back on the Desktop and leave it there at every tidy"));
    connect(m_fileMenuItemRestoreAndIgnore, &QAction::triggered, this,
            &PanelController::pressedFileRestoreAndIgnore);
    m_fileMenuCannotRestore =
        m_fileMenu->addAction(QStringLiteral("Items in Folders Cannot Be Restored"));
    m_fileMenuCannotRestore->setEnabled(false);
    m_fileMenu->addSeparator();
    connect(m_fileMenu->addAction(QStringLiteral("Move to Trash")), &QAction::triggered, this,
            &PanelController::pressedFileTrash);
}

void PanelController::showFileMenu(int row, const QPoint &globalPos)
{
    menuNeedsUpdate(row);
    m_fileMenu->popup(globalPos);
}

// The menu acts on the item it was opened for, by its path: a listing that
// arrives while it is open may move the rows.
void PanelController::menuNeedsUpdate(int clickedRow)
{
    m_clickedPath = m_model->pathAt(clickedRow);
    const bool restorable = m_engine.fileResidesInShadowDesktopRoot(m_clickedPath);
    m_fileMenuItemRestore->setVisible(restorable);
    m_fileMenuItemRestoreAndIgnore->setVisible(restorable);
    m_fileMenuCannotRestore->setVisible(!restorable);
}

QString PanelController::clickedPath() const
{
    return m_clickedPath;
}

void PanelController::pressedFileOpen()
{
    if (const QString path = clickedPath(); !path.isEmpty())
        m_fileViewer.open(path);
}

void PanelController::pressedFileReveal()
{
    if (const QString path = clickedPath(); !path.isEmpty())
        m_fileViewer.reveal(path);
}

void PanelController::pressedFileRestore()
{
    restorePath(clickedPath(), false);
}

void PanelController::pressedFileRestoreAndIgnore()
{
    restorePath(clickedPath(), true);
}

void PanelController::restorePath(const QString &path, bool addToIgnore)
{
    if (path.isEmpty())
        return;
    const FileMover::Result result = m_engine.restoreItem(path, addToIgnore);
    if (result.moved())
        fileRestoredAtRow(path);
    else
        showStatus(
            QStringLiteral("Could not restore “%1”: %2")
                .arg(shownName(path), result.status == FileMover::Status::TargetExists
                                          ? QStringLiteral("an item of that name is on the Desktop")
                                          : reasonOf(result.message)));
}

void PanelController::pressedFileTrash()
{
    trashPaths({clickedPath()});
}

// A failed restore or trash leaves the item where it is, and its row with it.
void PanelController::trashPaths(const QStringList &paths)
{
    const Brevano::Batch batch(m_engine, MoveJournal::RunKind::Trash, Brevano::trashingsOf(paths));
    for (const QString &path : paths) {
        if (path.isEmpty())
            continue;
        const Trash::Result result = m_engine.trashItem(path);
        if (result.ok)
            fileDeletedAtRow(path);
        else
            showStatus(QStringLiteral("Could not move “%1” to the Trash: %2")
                           .arg(shownName(path), reasonOf(result.message)));
    }
}

// The mover's and the Trash's messages begin with the path; the line has the name.
QString PanelController::reasonOf(const QString &message)
{
    const qsizetype colon = message.lastIndexOf(QStringLiteral(": "));
    return colon >= 0 ? message.mid(colon + 2) : message;
}

void PanelController::showStatus(const QString &text)
{
    QLabel *line = m_window->ui().textField;
    line->setToolTip(text);
    line->setText(line->fontMetrics().elidedText(text, Qt::ElideMiddle, line->width()));
}

// The indicator turns while the panel lists or dropped items move.
void PanelController::showProgress()
{
    m_window->ui().progressIndicator->setVisible(m_hasActivePanel &&
                                                 (m_backgroundBuilder || m_dropMover->isBusy()));
}

void PanelController::fileRestoredAtRow(const QString &path)
{
    closePopovers();
    m_model->removePath(path);
}

void PanelController::fileDeletedAtRow(const QString &path)
{
    closePopovers();
    m_model->removePath(path);
}

// ---- drag and drop ----

void PanelController::setUpDragAndDrop()
{
    m_dropMover = std::make_unique<DroppedItemsMover>(&Brevano::doMoveFileFromWithoutReplacing);
    connect(m_dropMover.get(), &DroppedItemsMover::moveStarted, this,
            [this](const QString &path, const QString &target) {
                showStatus(
                    QStringLiteral("Moving “%1” into “%2”…")
                        .arg(shownName(path), shownName(target.left(target.lastIndexOf(u'/')))));
                showProgress();
            });
    connect(m_dropMover.get(), &DroppedItemsMover::moveEnded, this,
            &PanelController::dropMoveEnded);
    connect(m_dropMover.get(), &DroppedItemsMover::finished, this, &PanelController::dropsMoved);
    PanelTableView *table = m_window->ui().tableView;
    connect(table, &PanelTableView::dragWillBegin, this,
            &PanelController::tableViewDraggingSessionWillBeginAtPoint);
    // After the drag's own event handling is over: the question may be asked.
    connect(table, &PanelTableView::dragEnded, this,
            &PanelController::tableViewDraggingSessionEndedAtPoint, Qt::QueuedConnection);
    table->setDropHandlers(
        [this](const QStringList &paths, const PanelTableView::DropPlace &place) {
            return tableViewValidateDrop(paths, place);
        },
        [this](const QStringList &paths, const PanelTableView::DropPlace &place) {
            tableViewAcceptDrop(paths, place);
        });
}

qsizetype PanelController::countFilesOnDesktop() const
{
    qsizetype count = 0;
    m_engine.forEachDesktopEntry([&count](const QString &) {
        ++count;
        return true;
    });
    return count;
}

void PanelController::tableViewDraggingSessionWillBeginAtPoint(const QStringList &)
{
    m_filesOnDesktopBeforeDrag = countFilesOnDesktop();
    // The press that began the drag selected the row: no preview comes over the rows now.
    m_scheduler.cancel(std::exchange(m_previewTask, 0));
    closePreviewPopover();
}

void PanelController::tableViewDraggingSessionEndedAtPoint(const QStringList &paths,
                                                           Qt::DropAction operation)
{
    // Nothing here deletes a dragged item: a target that moved one (into the
    // Trash too) did so itself. The listing shows what is left.
    if (operation != Qt::MoveAction) {
        if (m_hasActivePanel)
            buildFileList();
        return;
    }
    // A drag that ends while an earlier one's items are still awaited joins
    // it: one question for both, against the Desktop as it was before the first.
    if (m_dragSettleTask) {
        m_scheduler.cancel(std::exchange(m_dragSettleTask, 0));
        for (const QString &path : paths)
            if (!m_draggedPaths.contains(path))
                m_draggedPaths.append(path);
    } else {
        m_draggedPaths = paths;
        m_desktopCountBeforeDrags = m_filesOnDesktopBeforeDrag;
    }
    lookForDraggedBackFiles(kDragSettleChecks);
}

void PanelController::lookForDraggedBackFiles(int checksLeft)
{
    const bool moving = std::any_of(m_draggedPaths.begin(), m_draggedPaths.end(), FileStat::exists);
    if (moving && checksLeft > 0) {
        m_dragSettleTask = m_scheduler.schedule(kDragSettleInterval, [this, checksLeft] {
            m_dragSettleTask = 0;
            lookForDraggedBackFiles(checksLeft - 1);
        });
        return;
    }
    const QStringList found = DraggedBackFiles::find(
        std::exchange(m_draggedPaths, {}), m_desktopCountBeforeDrags, m_engine.desktopEntries());
    if (!found.isEmpty())
        askToIgnoreDraggedBackFiles(found);
    if (m_hasActivePanel)
        buildFileList();
}

// The question is the panel's own: the panel stays open under it, pinned or
// not, and has the keyboard again once it is answered.
void PanelController::askToIgnoreDraggedBackFiles(const QStringList &desktopPaths)
{
    m_askingAboutDrag = true;
    const int answer = m_alerts.runModal(DraggedBackFiles::question(desktopPaths.size()));
    m_askingAboutDrag = false;
    if (answer == 0)
        m_data.addIgnoreFiles(desktopPaths);
    if (m_hasActivePanel && m_window->isVisible())
        bringToFront();
}

QString PanelController::dropFolder(const PanelTableView::DropPlace &place) const
{
    return place.onRow ? m_model->pathAt(place.row) : m_currentPath;
}

bool PanelController::tableViewValidateDrop(const QStringList &paths,
                                            const PanelTableView::DropPlace &place) const
{
    const QString folder = dropFolder(place);
    if (paths.isEmpty() || folder.isEmpty())
        return false;
    if (place.onRow && (m_engine.getFileFlags(folder) &
                        (ItemInfo::Container | ItemInfo::Package)) != ItemInfo::Container)
        return false;
    return DroppedItemsRule::allows(
        paths, folder,
        {m_engine.getDesktopFolder(), QDir::homePath(), shadowDesktopPath(),
         AppFolders::applicationSupportFolder() + QStringLiteral("/Brevano")});
}

bool PanelController::tableViewAcceptDrop(const QStringList &paths,
                                          const PanelTableView::DropPlace &place)
{
    if (!tableViewValidateDrop(paths, place))
        return false;
    moveFiles(paths, dropFolder(place));
    // Not accepted, whatever moves: the source is never to delete anything.
    return false;
}

// One drop, queued behind the drops before it: one run of the journal.
void PanelController::moveFiles(const QStringList &paths, const QString &folder)
{
    QList<DroppedItemsMover::Move> moves;
    for (const QString &path : paths) {
        const QString target = folder + u'/' + path.mid(path.lastIndexOf(u'/') + 1);
        if (target != path)
            moves.append({path, target});
    }
    m_dropMover->add(moves, m_engine.journal());
}

// A taken name leaves the item where it was, and the status line says so.
void PanelController::dropMoveEnded(const QString &path, const QString &target,
                                    const FileMover::Result &result)
{
    const QString folderName = shownName(target.left(target.lastIndexOf(u'/')));
    if (result.moved()) {
        ++m_droppedItemsMoved;
        m_lastDroppedName = shownName(path);
        if (!m_dropFolders.contains(folderName))
            m_dropFolders.append(folderName);
        return;
    }
    m_droppedItemFailed = true;
    showStatus(QStringLiteral("Could not move “%1” into “%2”: %3")
                   .arg(shownName(path), folderName,
                        result.status == FileMover::Status::TargetExists
                            ? QStringLiteral("an item of that name is already there")
                            : reasonOf(result.message)));
}

// The listing follows once all have moved. The status line keeps a failure,
// or says what moved: a search may keep it out of the rows.
void PanelController::dropsMoved()
{
    if (!m_droppedItemFailed && m_droppedItemsMoved > 0) {
        const QString into = m_dropFolders.size() == 1
                                 ? QStringLiteral(" into “%1”").arg(m_dropFolders.first())
                                 : QString();
        showStatus(m_droppedItemsMoved == 1
                       ? QStringLiteral("Moved “%1”%2").arg(m_lastDroppedName, into)
                       : QStringLiteral("Moved %1 items%2").arg(m_droppedItemsMoved).arg(into));
    }
    m_droppedItemsMoved = 0;
    m_droppedItemFailed = false;
    m_dropFolders.clear();
    if (m_hasActivePanel)
        buildFileList();
    showProgress();
}

// ---- the action menu ----

void PanelController::setUpActionMenu()
{
    m_actionMenu = new QMenu(m_window);
    m_actionMenu->setAccessibleName(QStringLiteral("Actions"));
    const auto add = [this](const QString &title, auto slot) {
        QAction *action = m_actionMenu->addAction(title);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    m_lastRunItem = m_actionMenu->addAction(QString());
    m_lastRunItem->setObjectName(QStringLiteral("lastRunItem"));
    m_lastRunItem->setEnabled(false);
    m_lastRunSeparator = m_actionMenu->addSeparator();
    add(QStringLiteral("Tidy Now"), [this] { m_delegate.doTidy(); });
    add(QStringLiteral("Restore Files..."), [this] { m_delegate.restoreFiles(); });
    add(QStringLiteral("Restore All Files..."), [this] { m_delegate.restoreAllFiles(); });
    add(QStringLiteral("Empty Shadow Desktop..."), [this] { m_delegate.emptyShadowDesktop(); });
    add(QStringLiteral("Show Shadow Desktop in File Manager"),
        &PanelController::pressedActionRevealShadowDesktop);
    m_actionMenu->addSeparator();
    add(QStringLiteral("Brevano User Guide"), [this] { m_delegate.openHelp(); });
    m_tutorialItem = add(QStringLiteral("Brevano Tutorial"), [this] { m_delegate.openTutorial(); });
    add(QStringLiteral("Brevano Support Site"), [this] { m_delegate.openSupport(); });
    add(QStringLiteral("E-mail Support"), [this] { m_delegate.emailSupport(); });
    add(QStringLiteral("Review Brevano"), [this] { m_delegate.reviewApp(); });
    m_actionMenu->addSeparator();
    add(QStringLiteral("About Brevano"), [this] { m_delegate.openAboutWindow(); });
    add(QStringLiteral("Check for Updates"), &PanelController::pressedCheckForUpdates);
    m_preferencesItem = add(QStringLiteral("Preferences..."),
                            [this] { m_notifications.post(NotificationCenter::OpenPreferences); });
    m_actionMenu->addSeparator();
    add(QStringLiteral("Quit Brevano"), [this] { m_delegate.terminate(); });
    connect(m_actionMenu, &QMenu::aboutToShow, this, [this] {
        m_tutorialItem->setVisible(m_delegate.canOpenTutorial());
        m_preferencesItem->setVisible(m_delegate.canOpenPreferences());
        const MoveJournal *journal = m_engine.journal();
        const QList<MoveJournal::Run> runs = journal ? journal->runs() : QList<MoveJournal::Run>();
        m_lastRunItem->setVisible(!runs.isEmpty());
        m_lastRunSeparator->setVisible(!runs.isEmpty());
        if (!runs.isEmpty())
            m_lastRunItem->setText(RunDescription::line(runs.last()));
    });
}

void PanelController::pressedAction()
{
    qInfo("Presed action");
    showMenuAtButton(m_actionMenu, m_window->ui().buttonAction);
}

void PanelController::pressedActionRevealShadowDesktop()
{
    m_fileViewer.openFolder(shadowDesktopPath());
}

void PanelController::pressedCheckForUpdates()
{
    setHasActivePanel(false);
    m_delegate.checkForUpdates();
}

void PanelController::showMenuAtButton(QMenu *menu, QWidget *button)
{
    menu->popup(button->mapToGlobal(QPoint(0, button->height())));
}

// ---- views ----

void PanelController::setUpViewMenus()
{
    Ui::Panel &ui = m_window->ui();
    m_viewMenu = new QMenu(m_window);
    m_viewMenu->setAccessibleName(QStringLiteral("Views"));
    ui.viewPopup->setMenu(m_viewMenu);
    connect(m_viewMenu, &QMenu::aboutToShow, this, &PanelController::updateQuickLayouts);

    const auto makeChoiceMenu = [this](const QString &name, const QStringList &titles,
                                       void (PanelController::*chosen)(int)) {
        auto *menu = new QMenu(m_window);
        menu->setAccessibleName(name);
        for (int i = 0; i < titles.size(); ++i) {
            QAction *action = menu->addAction(titles.at(i));
            action->setCheckable(true);
            connect(action, &QAction::triggered, this, [this, chosen, i] { (this->*chosen)(i); });
        }
        return menu;
    };
    m_iconSizeMenu = makeChoiceMenu(QStringLiteral("Icon Size"),
                                    {QStringLiteral("Small"), QStringLiteral("Medium"),
                                     QStringLiteral("Large"), QStringLiteral("Extra Large")},
                                    &PanelController::pressedMenuItemIconSize);
    m_iconStyleMenu = makeChoiceMenu(QStringLiteral("Icon Style"),
                                     {QStringLiteral("Icons"), QStringLiteral("Previews")},
                                     &PanelController::pressedMenuItemIconStyle);
    m_folderStyleMenu =
        makeChoiceMenu(QStringLiteral("Folder Style"),
                       {QStringLiteral("Browse Folders"), QStringLiteral("All Files")},
                       &PanelController::pressedMenuItemFolderStyle);
    const auto popUp = [this](QMenu *menu, QToolButton *button,
                              quint32 (QuickFilterItem::*value)() const) {
        connect(button, &QToolButton::clicked, this, [this, menu, button, value] {
            checkViewMenu(menu, m_currentFilter ? int(((*m_currentFilter).*value)()) : -1);
            showMenuAtButton(menu, button);
        });
    };
    popUp(m_iconSizeMenu, ui.buttonIconSize, &QuickFilterItem::getIconSize);
    popUp(m_iconStyleMenu, ui.buttonIconStyle, &QuickFilterItem::getIconStyle);
    popUp(m_folderStyleMenu, ui.buttonFolderStyle, &QuickFilterItem::getFolderStyle);
}

void PanelController::checkViewMenu(QMenu *menu, int checkedIndex)
{
    const QList<QAction *> actions = menu->actions();
    for (int i = 0; i < actions.size(); ++i)
        actions.at(i)->setChecked(i == checkedIndex);
}

void PanelController::updateQuickLayouts()
{
    // A view removed in Preferences must not stay on show under its old name.
    const auto &filters = m_data.filterItems();
    if (m_currentFilter && !filters.contains(m_currentFilter) && !filters.isEmpty())
        applyView(filters.first());
    m_desktopViews.clear();
    for (const auto &filter : m_data.filterItems())
        m_desktopViews.append(filter->getName());
    Ui::Panel &ui = m_window->ui();
    const int comboIndex = ui.comboView->currentIndex();
    ui.comboView->clear();
    ui.comboView->addItems(m_desktopViews);
    ui.comboView->setCurrentIndex(qMin(comboIndex, int(m_desktopViews.size()) - 1));

    const QString checkedName =
        m_currentFilter ? m_currentFilter->getName() : QStringLiteral("All Contents");
    m_viewMenu->clear();
    for (int i = 0; i < m_desktopViews.size(); ++i) {
        QAction *item = m_viewMenu->addAction(m_desktopViews.at(i));
        item->setCheckable(true);
        item->setChecked(m_desktopViews.at(i) == checkedName);
        connect(item, &QAction::triggered, this, [this, i] { pressedMenuItem(i); });
    }
}

void PanelController::applyView(const QuickFilterList::ItemPointer &view)
{
    if (view != m_currentFilter)
        closePopovers(); // its options are another view's
    m_currentFilter = view;
    Ui::Panel &ui = m_window->ui();
    ui.activeViewText->setText(view ? view->getName() : QStringLiteral("All Contents"));
    m_rowDelegate->setRowHeight(FileRowDelegate::rowHeight(view.get()));
    m_rowDelegate->setThumbnails(view && view->getIconStyle() == 1 ? m_thumbnails.get() : nullptr);
    ui.tableView->doItemsLayout();
    if (m_hasActivePanel)
        buildFileList();
    configureControls();
}

// A row shows its picture once it is made; the rows of another listing want others.
void PanelController::setUpThumbnails()
{
    connect(m_thumbnails.get(), &ThumbnailLoader::thumbnailReady, this,
            [this](const QString &path) {
                if (const int row = m_model->rowOfPath(path); row >= 0)
                    m_window->ui().tableView->update(m_model->index(row));
            });
    connect(m_model, &QAbstractItemModel::modelReset, m_thumbnails.get(), &ThumbnailLoader::clear);
}

void PanelController::pressedMenuItem(int index)
{
    const auto &filters = m_data.filterItems();
    if (index >= 0 && index < filters.size())
        applyView(filters.at(index));
}

// The combo's entries are the views' names, and entry k chooses view k - 1:
// the first entry chooses nothing.
void PanelController::comboBoxSelectionDidChange(int index)
{
    pressedMenuItem(index - 1);
}

void PanelController::pressedMenuItemIconSize(int index)
{
    if (!m_currentFilter)
        return;
    m_currentFilter->setIconSize(quint32(index));
    applyView(m_currentFilter);
}

void PanelController::pressedMenuItemIconStyle(int index)
{
    if (!m_currentFilter)
        return;
    m_currentFilter->setIconStyle(quint32(index));
    applyView(m_currentFilter);
}

void PanelController::pressedMenuItemFolderStyle(int index)
{
    if (!m_currentFilter)
        return;
    m_currentFilter->setFolderStyle(quint32(index));
    applyView(m_currentFilter);
}

void PanelController::pressedViewOptions()
{
    Ui::Panel &ui = m_window->ui();
    if (m_viewOptionsPopover) {
        cancelViewOptionsChange();
        return;
    }
    closePopovers();
    if (!m_currentFilter) {
        setViewOptionsButtonChecked(false);
        return;
    }
    m_viewOptionsPopover = new ViewOptionsPopoverViewController(*m_currentFilter, m_window);
    connect(m_viewOptionsPopover, &ViewOptionsPopoverViewController::applyViewOptionsChange, this,
            &PanelController::applyViewOptionsChange);
    connect(m_viewOptionsPopover, &ViewOptionsPopoverViewController::cancelViewOptionsChange, this,
            &PanelController::cancelViewOptionsChange);
    m_viewOptionsPopover->adjustSize();
    const QPoint below =
        ui.buttonViewOptions->mapTo(m_window, QPoint(0, ui.buttonViewOptions->height() + 2));
    const int x =
        qBound(4, below.x(), qMax(4, m_window->width() - m_viewOptionsPopover->width() - 4));
    m_viewOptionsPopover->move(x, below.y());
    m_viewOptionsPopover->show();
    m_viewOptionsPopover->raise();
    m_viewOptionsPopover->setFocus(Qt::PopupFocusReason);
    setViewOptionsButtonChecked(true);
}

void PanelController::applyViewOptionsChange(QuickFilterItem *item)
{
    m_data.saveDataFile();
    closePopovers();
    for (const auto &view : m_data.filterItems())
        if (view.get() == item)
            return applyView(view);
}

void PanelController::cancelViewOptionsChange()
{
    closePopovers();
}

void PanelController::closePopovers()
{
    closePreviewPopover();
    if (m_viewOptionsPopover) {
        // The keyboard goes back to the button that opened it.
        if (m_viewOptionsPopover->isAncestorOf(QApplication::focusWidget()))
            m_window->ui().buttonViewOptions->setFocus(Qt::PopupFocusReason);
        m_viewOptionsPopover->hide();
        m_viewOptionsPopover->deleteLater();
    }
    m_viewOptionsPopover = nullptr;
    setViewOptionsButtonChecked(false);
}

void PanelController::setViewOptionsButtonChecked(bool checked)
{
    if (!m_window)
        return;
    const QSignalBlocker quiet(m_window->ui().buttonViewOptions);
    m_window->ui().buttonViewOptions->setChecked(checked);
}

// ---- the automatic tidy switch and the pin ----

void PanelController::pressedPin(bool on)
{
    m_window->ui().buttonPin->setIcon(
        toolbarIcon(on ? QStringLiteral("ui_toolbar_pin_h") : QStringLiteral("ui_toolbar_pin")));
    m_data.setPin(on);
}

void PanelController::toggleEnabled(bool on)
{
    m_engine.setEnabled(on);
    m_data.saveDataFile();
    m_data.updateStatusIcon();
}

void PanelController::updateNextTidyText(const QString &text)
{
    Ui::Panel &ui = m_window->ui();
    const bool enabled = m_engine.getEnabled();
    ui.nextTidyText->setText(enabled ? text : QStringLiteral("Tidy Periodically Disabled"));
    ui.tidyAutomaticallyCheck->setText(enabled ? text : QStringLiteral("Automatic tidy disabled"));
    ui.tidyAutomaticallyCheck->setChecked(enabled);
}

// ---- the preview ----

void PanelController::setUpPreview()
{
    QListView *table = m_window->ui().tableView;
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PanelController::tableViewSelectionDidChange);
    connect(table, &QListView::clicked, this, &PanelController::singleClickedRow);
    connect(table->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &PanelController::scrolledTable);
    // A new listing leaves no row selected (and says nothing of it), and the
    // row a waiting preview was for may hold another item now.
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        m_scheduler.cancel(std::exchange(m_previewTask, 0));
        closePreviewPopover();
    });
}

// One row selected: its preview opens once the selection has settled for a
// moment, so that going through the rows by key opens none on the way.
void PanelController::tableViewSelectionDidChange()
{
    m_scheduler.cancel(std::exchange(m_previewTask, 0));
    int selected = 0;
    int row = -1;
    // Counted by ranges: a selection of all of many rows is one range.
    for (const QItemSelectionRange &range :
         m_window->ui().tableView->selectionModel()->selection()) {
        selected += range.height();
        row = range.top();
        if (selected > 1)
            break;
    }
    if (selected != 1)
        return closePreviewPopover();
    m_previewTask = m_scheduler.schedule(kPreviewDelay, [this, row] {
        m_previewTask = 0;
        previewFile(row);
    });
}

void PanelController::previewFile(int row)
{
    if (row < 0 || row >= m_model->rowCount())
        return;
    closePopovers(); // one popover at a time, of either kind
    auto *popover =
        new PreviewPopoverViewController(m_engine, m_fileViewer, m_model->pathAt(row), m_window);
    m_previewPopover = popover;
    // The panel's own restore and trash: a failure keeps the row and is told
    // on the status line, which the popover would hide.
    connect(popover, &PreviewPopoverViewController::restoreFileRequested, this,
            [this](const QString &path) {
                closePreviewPopover();
                restorePath(path, true);
            });
    connect(popover, &PreviewPopoverViewController::deleteFileRequested, this,
            [this](const QString &path) {
                closePreviewPopover();
                trashPaths({path});
            });
    connect(popover, &PreviewPopoverViewController::closeRequested, this,
            &PanelController::closePreviewPopover);
    connect(popover, &PreviewPopoverViewController::resignedKey, this,
            [this, popover] { windowLostKeyboard(popover); });
    popover->applyPreview();

    connect(popover, &PreviewPopoverViewController::keyboardLeft, this, [this] {
        m_window->activateWindow();
        m_window->ui().tableView->setFocus(Qt::TabFocusReason);
    });
    popover->applyPreview();
    placePreviewPopover(*popover, row);
    showPreviewPicture(*popover);
    // Shown without the keyboard: the keys still move through the rows, and
    // Tab from the rows goes to its buttons.
    popover->show();
    popover->raise();
}

// Beside the row, on the screen; a screen too small for the whole picture gets
// a smaller one.
void PanelController::placePreviewPopover(PreviewPopoverViewController &popover, int row)
{
    QListView *table = m_window->ui().tableView;
    const QRect cell = table->visualRect(m_model->index(row));
    const QRect rowOnScreen(table->viewport()->mapToGlobal(cell.topLeft()), cell.size());
    const QScreen *screen = m_window->screen();
    const QRect available = screen ? screen->availableGeometry() : m_window->geometry();
    popover.setPreviewSide(PreviewPopoverViewController::kPreviewSide);
    const int overflow =
        qMax(popover.width() - available.width(), popover.height() - available.height()) +
        2 * PanelPlacement::kPopoverMargin;
    if (overflow > 0)
        popover.setPreviewSide(qMax(kSmallestPreview, popover.previewSide() - overflow));
    popover.setGeometry(PanelPlacement::popoverBesideRow(rowOnScreen, popover.size(), available));
}

// The file's type icon fills the square until its own picture comes.
void PanelController::showPreviewPicture(PreviewPopoverViewController &popover)
{
    const QString path = popover.filenameToPreview();
    const int side = qRound(popover.previewSide() * popover.devicePixelRatioF());
    const QImage picture = m_thumbnails->thumbnail(path, side, ThumbnailLoader::Mode::Picture);
    if (!picture.isNull()) {
        popover.setPicture(picture);
        return;
    }
    popover.setPicture(FileTypeIcons::shared().forPath(path).pixmap(side, side).toImage());
    connect(m_thumbnails.get(), &ThumbnailLoader::thumbnailReady, &popover,
            [&popover, path, side](const QString &madePath, int madeSide,
                                   ThumbnailLoader::Mode mode, const QImage &made) {
                if (madePath == path && madeSide == side && mode == ThumbnailLoader::Mode::Picture)
                    popover.setPicture(made);
            });
}

void PanelController::singleClickedRow()
{
    closePreviewPopover();
}

void PanelController::scrolledTable()
{
    closePreviewPopover();
}

void PanelController::closePreviewPopover()
{
    if (!m_previewPopover)
        return;
    PreviewPopoverViewController *popover = std::exchange(m_previewPopover, nullptr);
    popover->disconnect(this);
    // The keyboard goes back to the rows.
    if (popover->isActiveWindow()) {
        m_window->activateWindow();
        m_window->ui().tableView->setFocus(Qt::PopupFocusReason);
    }
    popover->hide();
    popover->deleteLater();
}
