#pragma once

#include "FileMover.h"
#include "PanelTableView.h"
#include "PanelWindow.h"
#include "PreviewPopoverViewController.h"
#include "QuickFilterList.h"
#include "Scheduler.h"
#include "ViewOptionsPopoverViewController.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QStringList>

#include <functional>
#include <memory>

class AlertPresenter;
class BackgroundFileListBuilder;
class Brevano;
class BrevanoData;
class DroppedItemsMover;
class FileListModel;
class FileRowDelegate;
class FileViewer;
class NotificationCenter;
class PanelControllerDelegate;
class QAction;
class QMenu;
class QModelIndex;
class QuickFilterItem;
class ThumbnailLoader;
class ThumbnailService;

// The drop-down panel under the status item: lists the Shadow Desktop by view,
// searches the listing, navigates its folders and opens, reveals, restores or
// trashes what it shows. Opening and closing go through hasActivePanel, which
// the application watches for the status item's active icon.
class PanelController : public QObject
{
    Q_OBJECT
public:
    struct Services
    {
        BrevanoData &data;
        Brevano &engine;
        FileViewer &fileViewer;
        Scheduler &scheduler;
        NotificationCenter &notifications;
        ThumbnailService &thumbnails;
        AlertPresenter &alerts;
    };
    static constexpr std::chrono::milliseconds kSearchFocusDelay{300};
    static constexpr std::chrono::milliseconds kSearchFocusDelayWithShift{3000};
    // How long one selected row stays selected before its preview opens.
    static constexpr std::chrono::milliseconds kPreviewDelay{500};
    static constexpr int kSmallestPreview = 96;

    PanelController(const Services &services, PanelControllerDelegate &delegate,
                    QObject *parent = nullptr);
    ~PanelController() override;

    bool hasActivePanel() const { return m_hasActivePanel; }
    void setHasActivePanel(bool active);
    // Whether Shift is held as the panel opens (the search field then waits longer).
    void setShiftHeldQuery(std::function<bool()> query) { m_shiftHeld = std::move(query); }

    PanelWindow *window() const { return m_window; }
    FileListModel &model() const { return *m_model; }
    QString currentPath() const { return m_currentPath; }
    QuickFilterList::ItemPointer currentFilter() const { return m_currentFilter; }
    const QStringList &desktopViews() const { return m_desktopViews; }
    bool isListing() const { return m_backgroundBuilder != nullptr; }
    ViewOptionsPopoverViewController *viewOptionsPopover() const { return m_viewOptionsPopover; }
    PreviewPopoverViewController *previewPopover() const { return m_previewPopover; }
    QMenu *fileMenu() const { return m_fileMenu; }
    QMenu *actionMenu() const { return m_actionMenu; }
    // The pictures of the rows (and of whatever else shows a file).
    ThumbnailLoader &thumbnails() const { return *m_thumbnails; }

    void bringToFront();
    // The panel closed because it lost the focus a moment ago (to a click on
    // the status item, say).
    bool justClosedByFocusLoss() const;
    void openPanel();
    void closePanel();
    void initialUpdate();
    void configureControls();
    void buildFileList();
    void refreshFileList();

    // Navigation.
    void pathControlClicked(const QString &path);
    void pressedShadowDesktop();
    void pressedUpDirectory();
    void doubleClickedRow(int row);

    // The context menu's actions, on the clicked row.
    void menuNeedsUpdate(int clickedRow);
    void pressedFileOpen();
    void pressedFileReveal();
    void pressedFileRestore();
    void pressedFileRestoreAndIgnore();
    void pressedFileTrash();
    // Named for the row; they take its path, which stays right when rows move.
    void fileRestoredAtRow(const QString &path);
    void fileDeletedAtRow(const QString &path);
    // Trashes each (Delete on several selected rows).
    void trashPaths(const QStringList &paths);

    // Drag and drop. Rows dragged out: the Desktop's entries are counted as
    // the drag begins; when it ended in a move after which the Desktop holds
    // more of them, those named like the dragged items are offered for the
    // ignore list. A file manager moves what it took after the drag has ended,
    // so that is looked for again every kDragSettleInterval, kDragSettleChecks
    // times at most, until the dragged items have left.
    static constexpr std::chrono::milliseconds kDragSettleInterval{250};
    static constexpr int kDragSettleChecks = 12;
    void tableViewDraggingSessionWillBeginAtPoint(const QStringList &paths);
    void tableViewDraggingSessionEndedAtPoint(const QStringList &paths, Qt::DropAction operation);
    qsizetype countFilesOnDesktop() const;
    qsizetype filesOnDesktopBeforeDrag() const { return m_filesOnDesktopBeforeDrag; }
    // Items dropped on the rows: between rows into the folder shown, onto the
    // row of a folder (not a package) into that folder, never replacing. They
    // move off the main thread, one drop after another; the status line tells
    // how it went and the folder is listed again once all have moved.
    bool tableViewValidateDrop(const QStringList &paths,
                               const PanelTableView::DropPlace &place) const;
    bool tableViewAcceptDrop(const QStringList &paths, const PanelTableView::DropPlace &place);
    DroppedItemsMover &dropMover() const { return *m_dropMover; }

    // Views.
    void applyView(const QuickFilterList::ItemPointer &view);
    void comboBoxSelectionDidChange(int index);
    void pressedMenuItem(int index);
    void pressedMenuItemIconSize(int index);
    void pressedMenuItemIconStyle(int index);
    void pressedMenuItemFolderStyle(int index);
    void pressedViewOptions();
    void applyViewOptionsChange(QuickFilterItem *item);
    void cancelViewOptionsChange();
    void updateQuickLayouts();

    void pressedAction();
    void pressedActionRevealShadowDesktop();
    void pressedCheckForUpdates();
    void pressedPin(bool on);
    void toggleEnabled(bool on);
    void updateNextTidyText(const QString &text);

    // The preview beside one selected row.
    void tableViewSelectionDidChange();
    void previewFile(int row);
    void singleClickedRow();
    void scrolledTable();

signals:
    void hasActivePanelChanged(bool active);
    // A listing has been shown whole (tests and benchmarks wait for it).
    void fileListCompleted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class TableKeys;
    void setUpWindow();
    void setUpActionMenu();
    void setUpFileMenu();
    void setUpViewMenus();
    void setUpThumbnails();
    void fileListUpdated(const QStringList &paths, BackgroundFileListBuilder *task);
    void fileListCompletedForTask(const QStringList &paths, BackgroundFileListBuilder *task);
    void showFileMenu(int row, const QPoint &globalPos);
    void storeKeepingTheCurrentRow(const QStringList &paths);
    static class QScreen *screenFor(const QRect &statusRect);
    void runSearch(const QString &phrase);
    void navigateTo(const QString &path);
    void closePopovers();
    void setViewOptionsButtonChecked(bool checked);
    QString shadowDesktopPath() const;
    QString clickedPath() const;
    void restorePath(const QString &path, bool addToIgnore);
    void showStatus(const QString &text);
    void showProgress();
    static QString reasonOf(const QString &message);
    void checkViewMenu(QMenu *menu, int checkedIndex);
    void showMenuAtButton(QMenu *menu, class QWidget *button);
    void saveDefaults();
    void applySavedView();
    void windowResized();
    void setArrowPosition();
    void setUpPreview();
    void closePreviewPopover();
    void placePreviewPopover(PreviewPopoverViewController &popover, int row);
    void showPreviewPicture(PreviewPopoverViewController &popover);
    void windowLostKeyboard(QWidget *window);

    void setUpDragAndDrop();
    void lookForDraggedBackFiles(int checksLeft);
    void askToIgnoreDraggedBackFiles(const QStringList &desktopPaths);
    QString dropFolder(const PanelTableView::DropPlace &place) const;
    void moveFiles(const QStringList &paths, const QString &folder);
    void dropMoveEnded(const QString &path, const QString &target, const FileMover::Result &result);
    void dropsMoved();

    BrevanoData &m_data;
    Brevano &m_engine;
    FileViewer &m_fileViewer;
    Scheduler &m_scheduler;
    NotificationCenter &m_notifications;
    PanelControllerDelegate &m_delegate;
    std::function<bool()> m_shiftHeld;
    std::unique_ptr<ThumbnailLoader> m_thumbnails;

    bool m_hasActivePanel = false;
    QPointer<PanelWindow> m_window;
    FileListModel *m_model = nullptr;
    FileRowDelegate *m_rowDelegate = nullptr;
    QString m_currentPath;
    QuickFilterList::ItemPointer m_currentFilter;
    QStringList m_desktopViews;
    std::unique_ptr<BackgroundFileListBuilder> m_backgroundBuilder;
    QPointer<ViewOptionsPopoverViewController> m_viewOptionsPopover;
    class PathBar *m_pathBar = nullptr;
    QPointer<class QPropertyAnimation> m_fade;
    QRect m_statusRect;
    Qt::Edge m_arrowEdge = Qt::TopEdge;
    QDateTime m_resignedAt;
    QString m_clickedPath;
    bool m_refreshing = false;
    bool m_userInRows = false; // keys or clicks in the rows since the panel opened
    Scheduler::TaskId m_focusTask = 0;
    Scheduler::TaskId m_initialUpdateTask = 0;
    QPointer<PreviewPopoverViewController> m_previewPopover;
    Scheduler::TaskId m_previewTask = 0;

    AlertPresenter &m_alerts;
    qsizetype m_filesOnDesktopBeforeDrag = 0;
    Scheduler::TaskId m_dragSettleTask = 0;
    // The items of the drags whose end is being looked at, and the Desktop's
    // count before the first of them began.
    QStringList m_draggedPaths;
    qsizetype m_desktopCountBeforeDrags = 0;
    bool m_askingAboutDrag = false; // the question's window has the focus
    std::unique_ptr<DroppedItemsMover> m_dropMover;
    // What the drops moved since the mover was last idle.
    int m_droppedItemsMoved = 0;
    bool m_droppedItemFailed = false;
    QString m_lastDroppedName;
    QStringList m_dropFolders;

    QMenu *m_actionMenu = nullptr;
    QMenu *m_fileMenu = nullptr;
    QAction *m_fileMenuItemRestore = nullptr;
    QAction *m_fileMenuItemRestoreAndIgnore = nullptr;
    QAction *m_fileMenuCannotRestore = nullptr;
    QMenu *m_viewMenu = nullptr;
    QMenu *m_iconSizeMenu = nullptr;
    QMenu *m_iconStyleMenu = nullptr;
    QMenu *m_folderStyleMenu = nullptr;
    QAction *m_tutorialItem = nullptr;
    QAction *m_lastRunItem = nullptr; // what the journal's newest run did; not a button
    QAction *m_lastRunSeparator = nullptr;
    QAction *m_preferencesItem = nullptr;
};
