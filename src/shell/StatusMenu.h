#pragma once

#include "MenuEntry.h"
#include "MenuRenderer.h"
#include "QuickFilterList.h"
#include "ShadowDesktopMenuBuilder.h"
#include "TidyUndo.h"

#include <QImage>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class AlertPresenter;
class PreviewCache;
class Brevano;
class BrevanoData;
class QAction;
class QMenu;

// The status menu: the panel (for tray hosts that never pass on a left click),
// tidy now and its undo, the periodic switch, the next tidy, the Shadow Desktop with its size
// and its browsable submenu, one submenu per quick filter, how they are
// organised, the date filter, restore and empty, and the window and web
// openers. The Shadow Desktop submenus are built on a worker each time the menu
// opens and filled in while it is open; previews of images follow as the worker
// decodes them.
class StatusMenu : public QObject
{
    Q_OBJECT
public:
    static constexpr int kAnchorTag = 99;
    static constexpr int kQuickFilterTag = 77;
    using Run = ShadowDesktopMenuBuilder::Run;
    // Runs a job on a worker thread; by default a thread of its own, joined when
    // done (or when the menu goes).
    using WorkerStarter = std::function<void(std::function<void()> job)>;

    StatusMenu(BrevanoData &data, Brevano &engine, AlertPresenter &alerts,
               QObject *parent = nullptr);
    ~StatusMenu() override;

    QMenu *menu() const { return m_menu.get(); }
    void updateQuickFiltersSelection();
    void updateDateFilterSelection();
    bool threadFinished() const { return m_threadFinished; }
    // Tests run the workers' jobs themselves.
    void setWorkerStarter(WorkerStarter starter) { m_startWorker = std::move(starter); }
    PreviewCache &previews() { return *m_previews; }

    void restoreAllFiles();
    void emptyShadowDesktop();
    // Takes the last tidy back on a worker, and tells what came of it once
    // done: a notification when everything went back, an alert naming what
    // stayed otherwise.
    void undoLastTidy();

signals:
    void openPanelRequested();
    void toggleEnabledRequested();
    void restoreFilesRequested();
    void preferencesRequested();
    void tutorialRequested();
    void aboutRequested();
    void helpRequested();
    void supportRequested();
    void emailSupportRequested();
    void reviewRequested();
    void quitRequested();
    void revealShadowDesktopRequested();
    void populationCompleted();
    // Every preview of the current opening is in (or the opening was closed).
    void previewsLoaded();

private:
    // What a worker hands the main thread.
    struct Delivery
    {
        enum Kind
        {
            Built,
            Preview,
            PreviewsDone
        } kind;
        std::shared_ptr<Run> run;
        QString path;
        QImage image;
    };
    struct Worker
    {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> done;
    };

    void build();
    void menuNeedsUpdate();
    void menuWillOpen();
    void menuDidClose();
    void updateTidyItems();
    void tellUndone(const TidyUndo::Report &report);
    void startThread(std::function<void()> job);
    void populate(const std::shared_ptr<Run> &run, int previewPixels);
    // Any thread: queues it and has takeDeliveries() called on the main thread.
    void deliver(Delivery delivery);
    Q_INVOKABLE void takeDeliveries();
    void populationComplete(const Run &run);
    QMenu *makeMenu(const QString &title, QWidget *parent);
    QMenu *addSubmenu(QMenu *menu, const QString &title);
    void writeOutlineIfAsked() const;
    QAction *addCheckable(QMenu *menu, const QString &title, int tag,
                          std::function<void(int)> chosen);

    BrevanoData &m_data;
    Brevano &m_engine;
    AlertPresenter &m_alerts;
    std::unique_ptr<QMenu> m_menu;
    MenuRenderer m_renderer;
    QAction *m_tidyNow = nullptr;
    QAction *m_undoLastTidy = nullptr;
    QAction *m_enabledMenuItem = nullptr;
    QAction *m_nextTidy = nullptr;
    QAction *m_shadowDesktop = nullptr;
    QMenu *m_shadowDesktopMenu = nullptr;
    QAction *m_updatingIndicator = nullptr;
    QAction *m_anchor = nullptr;
    QList<QAction *> m_organiseItems;
    QList<QAction *> m_dateFilterItems;
    QList<QAction *> m_filterEntries;
    QList<QuickFilterList::ItemPointer> m_filterItems; // index-parallel with m_filterEntries
    std::shared_ptr<Run> m_run; // the current opening's; results of others are dropped
    std::shared_ptr<PreviewCache> m_previews;
    std::vector<Worker> m_workers;
    WorkerStarter m_startWorker;
    std::mutex m_deliveriesMutex;
    std::vector<Delivery> m_deliveries;
    bool m_threadFinished = true;
};
