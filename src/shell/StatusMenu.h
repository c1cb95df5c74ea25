#pragma once

#include "MenuEntry.h"
#include "MenuRenderer.h"
#include "ShadowDesktopMenuBuilder.h"

#include <QObject>

#include <future>
#include <memory>

class AlertPresenter;
class Brevano;
class BrevanoData;
class QAction;
class QMenu;

// The status menu: tidy now, the periodic switch, the next tidy, the Shadow
// Desktop with its size and its browsable submenu, one submenu per quick filter,
// how they are organised, the date filter, restore and empty, and the window
// and web openers. The Shadow Desktop submenus are built on a worker each time
// the menu opens and filled in while it is open.
class StatusMenu : public QObject
{
    Q_OBJECT
public:
    static constexpr int kAnchorTag = 99;
    static constexpr int kQuickFilterTag = 77;

    StatusMenu(BrevanoData &data, Brevano &engine, AlertPresenter &alerts,
               QObject *parent = nullptr);
    ~StatusMenu() override;

    QMenu *menu() const { return m_menu.get(); }
    void updateQuickFiltersSelection();
    void updateDateFilterSelection();
    bool threadFinished() const { return m_threadFinished; }
    // Waits for a running population (tests, and the next opening).
    void waitForPopulation();

    void restoreAllFiles();
    void emptyShadowDesktop();

signals:
    void restoreFilesRequested();
    void aboutRequested();
    void helpRequested();
    void supportRequested();
    void emailSupportRequested();
    void reviewRequested();
    void quitRequested();
    void revealShadowDesktopRequested();
    void populationCompleted();

private:
    void build();
    void menuNeedsUpdate();
    void menuWillOpen();
    void menuDidClose();
    void populationComplete(const std::shared_ptr<MenuEntry> &tree);
    void writeOutlineIfAsked() const;
    QAction *addCheckable(QMenu *menu, const QString &title, int tag,
                          std::function<void(int)> chosen);

    BrevanoData &m_data;
    Brevano &m_engine;
    AlertPresenter &m_alerts;
    std::unique_ptr<QMenu> m_menu;
    MenuRenderer m_renderer;
    QAction *m_enabledMenuItem = nullptr;
    QAction *m_nextTidy = nullptr;
    QAction *m_shadowDesktop = nullptr;
    QMenu *m_shadowDesktopMenu = nullptr;
    QAction *m_updatingIndicator = nullptr;
    QAction *m_anchor = nullptr;
    QList<QAction *> m_organiseItems;
    QList<QAction *> m_dateFilterItems;
    QList<QAction *> m_filterEntries;
    QList<MenuEntryPointer> m_filterMenus;
    ShadowDesktopMenuBuilder::Registry m_menuDict;
    std::future<void> m_population;
    bool m_threadFinished = true;
};
