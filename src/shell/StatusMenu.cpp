#include "StatusMenu.h"

#include "AlertPresenter.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "FolderSize.h"
#include "NotificationCenter.h"
#include "OperationMode.h"
#include "PreviewCache.h"
#include "ShadowDesktopQuestions.h"
#include "SizeText.h"
#include "TidyUndo.h"

#include <QMenu>
#include <QSaveFile>

StatusMenu::StatusMenu(BrevanoData &data, Brevano &engine, AlertPresenter &alerts, QObject *parent)
    : QObject(parent), m_data(data), m_engine(engine), m_alerts(alerts),
      m_menu(std::make_unique<QMenu>()),
      m_renderer([&engine](int tag, const QString &path) { engine.menuItemPressed(tag, path); }),
      m_previews(std::make_shared<PreviewCache>()),
      m_startWorker([this](std::function<void()> job) { startThread(std::move(job)); })
{
    m_menu->setToolTipsVisible(true);
    build();
    connect(m_menu.get(), &QMenu::aboutToShow, this, [this] {
        menuNeedsUpdate();
        menuWillOpen();
    });
    connect(m_menu.get(), &QMenu::aboutToHide, this, &StatusMenu::menuDidClose);
    connect(&m_data.statusDisplay(), &StatusDisplay::statusIconChanged, this,
            [this](bool enabled, const QString &title, const QString &) {
                m_enabledMenuItem->setEnabled(true);
                m_enabledMenuItem->setText(title);
                m_enabledMenuItem->setChecked(enabled);
            });
    NotificationCenter::defaultCenter().observe(
        NotificationCenter::UpdateNextTidyText, this,
        [this](const QVariant &line) { m_nextTidy->setText(line.toString()); });
    connect(&m_engine, &Brevano::undoFinished, this, &StatusMenu::tellUndone);
}

StatusMenu::~StatusMenu()
{
    // Workers deliver to this object: they stop at their next check, and are waited for.
    if (m_run)
        *m_run->abort = true;
    for (Worker &worker : m_workers)
        worker.thread.join();
}

void StatusMenu::startThread(std::function<void()> job)
{
    std::erase_if(m_workers, [](Worker &worker) {
        if (!*worker.done)
            return false;
        worker.thread.join();
        return true;
    });
    auto done = std::make_shared<std::atomic<bool>>(false);
    m_workers.push_back({std::thread([job = std::move(job), done] {
                             job();
                             *done = true;
                         }),
                         done});
}

QMenu *StatusMenu::makeMenu(const QString &title, QWidget *parent)
{
    auto *menu = new QMenu(title, parent);
    menu->setToolTipsVisible(true);
    return menu;
}

QMenu *StatusMenu::addSubmenu(QMenu *menu, const QString &title)
{
    QMenu *submenu = makeMenu(title, menu);
    menu->addMenu(submenu);
    return submenu;
}

QAction *StatusMenu::addCheckable(QMenu *menu, const QString &title, int tag,
                                  std::function<void(int)> chosen)
{
    QAction *action = menu->addAction(title);
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, [chosen, tag] { chosen(tag); });
    return action;
}

void StatusMenu::build()
{
    QMenu *menu = m_menu.get();
    // Some tray hosts deliver every click as a menu request: the panel is here too.
    QAction *openPanel = menu->addAction(QStringLiteral("Open Panel"));
    openPanel->setObjectName(QStringLiteral("openPanelItem"));
    openPanel->setToolTip(QStringLiteral("The panel listing the Shadow Desktop"));
    connect(openPanel, &QAction::triggered, this, &StatusMenu::openPanelRequested);
    menu->addSeparator();
    m_tidyNow = menu->addAction(QStringLiteral("Tidy Now"));
    connect(m_tidyNow, &QAction::triggered, this, [this] { m_engine.performManualTidy(); });
    m_undoLastTidy = menu->addAction(QString());
    m_undoLastTidy->setObjectName(QStringLiteral("undoLastTidyItem"));
    m_undoLastTidy->setToolTip(
        QStringLiteral("Put back on the Desktop what the last tidy moved, where nothing "
                       "has taken its name since"));
    m_undoLastTidy->setVisible(false);
    connect(m_undoLastTidy, &QAction::triggered, this, &StatusMenu::undoLastTidy);
    m_enabledMenuItem = menu->addAction(QStringLiteral("Tidy Periodically"));
    m_enabledMenuItem->setCheckable(true);
    connect(m_enabledMenuItem, &QAction::triggered, this, &StatusMenu::toggleEnabledRequested);
    m_nextTidy = menu->addAction(QStringLiteral("Automatic tidy in"));
    m_nextTidy->setEnabled(false);
    menu->addSeparator();

    m_shadowDesktop = menu->addAction(QStringLiteral("Shadow Desktop"));
    connect(m_shadowDesktop, &QAction::triggered, this, &StatusMenu::revealShadowDesktopRequested);
    m_shadowDesktopMenu = addSubmenu(menu, QStringLiteral("Browse Shadow Desktop"));
    m_updatingIndicator = menu->addAction(QStringLiteral("Updating..."));
    m_updatingIndicator->setVisible(false);
    m_anchor = menu->addSeparator();
    m_anchor->setData(kAnchorTag);

    QMenu *organise = addSubmenu(menu, QStringLiteral("Organise Quick Filters"));
    const auto selectOrganise = [this](int tag) {
        m_data.setQuickFiltersMode(quint32(tag));
        updateQuickFiltersSelection();
    };
    m_organiseItems = {addCheckable(organise, QStringLiteral("By Folder"), 1, selectOrganise),
                       addCheckable(organise, QStringLiteral("By Type"), 2, selectOrganise),
                       addCheckable(organise, QStringLiteral("Alphabetically"), 3, selectOrganise)};
    QMenu *dateFilter = addSubmenu(menu, QStringLiteral("Show Files Modified"));
    const auto selectDateFilter = [this](int tag) {
        m_data.setDateFilter(quint32(tag));
        updateDateFilterSelection();
    };
    const QStringList dateTitles{
        QStringLiteral("Any Time"),        QStringLiteral("Within 1 Day"),
        QStringLiteral("Within 1 Week"),   QStringLiteral("Within 2 Weeks"),
        QStringLiteral("Within 1 Month"),  QStringLiteral("Within 2 Months"),
        QStringLiteral("Within 3 Months"), QStringLiteral("Within 6 Months"),
        QStringLiteral("Within 1 Year")};
    for (int tag = 0; tag < dateTitles.size(); ++tag)
        m_dateFilterItems.append(
            addCheckable(dateFilter, dateTitles.at(tag), tag, selectDateFilter));
    menu->addSeparator();

    connect(menu->addAction(QStringLiteral("Restore All Files...")), &QAction::triggered, this,
            &StatusMenu::restoreAllFiles);
    connect(menu->addAction(QStringLiteral("Restore Files...")), &QAction::triggered, this,
            &StatusMenu::restoreFilesRequested);
    connect(menu->addAction(QStringLiteral("Empty Shadow Desktop...")), &QAction::triggered, this,
            &StatusMenu::emptyShadowDesktop);
    menu->addSeparator();
    connect(menu->addAction(QStringLiteral("Preferences...")), &QAction::triggered, this,
            &StatusMenu::preferencesRequested);
    QMenu *help = addSubmenu(menu, QStringLiteral("Help"));
    connect(help->addAction(QStringLiteral("Tutorial")), &QAction::triggered, this,
            &StatusMenu::tutorialRequested);
    connect(help->addAction(QStringLiteral("User Guide")), &QAction::triggered, this,
            &StatusMenu::helpRequested);
    connect(help->addAction(QStringLiteral("Support")), &QAction::triggered, this,
            &StatusMenu::supportRequested);
    connect(help->addAction(QStringLiteral("E-mail Support")), &QAction::triggered, this,
            &StatusMenu::emailSupportRequested);
    connect(help->addAction(QStringLiteral("Review Brevano")), &QAction::triggered, this,
            &StatusMenu::reviewRequested);
    connect(menu->addAction(QStringLiteral("About Brevano")), &QAction::triggered, this,
            &StatusMenu::aboutRequested);
    menu->addSeparator();
    connect(menu->addAction(QStringLiteral("Quit Brevano")), &QAction::triggered, this,
            &StatusMenu::quitRequested);
    updateQuickFiltersSelection();
    updateDateFilterSelection();
}

void StatusMenu::updateQuickFiltersSelection()
{
    const quint32 mode = m_data.getQuickFiltersMode();
    for (int i = 0; i < m_organiseItems.size(); ++i)
        m_organiseItems[i]->setChecked(quint32(i + 1) == mode);
}

void StatusMenu::updateDateFilterSelection()
{
    const quint32 filter = m_data.getDateFilter();
    for (int i = 0; i < m_dateFilterItems.size(); ++i)
        m_dateFilterItems[i]->setChecked(quint32(i) == filter);
}

void StatusMenu::menuNeedsUpdate()
{
    m_shadowDesktopMenu->menuAction()->setEnabled(false);
    m_shadowDesktop->setText(QStringLiteral("Shadow Desktop Updating..."));
    m_updatingIndicator->setVisible(false);
    for (QAction *entry : std::as_const(m_filterEntries)) {
        m_menu->removeAction(entry);
        entry->menu()->deleteLater();
    }
    m_filterEntries.clear();
    // This opening's own state, with a cleared abort flag; an earlier opening's
    // worker and completion go on with theirs and are then ignored.
    m_run = m_engine.beginMenuPopulate();
    m_filterItems = m_data.filterItems();
    QAction *before = m_menu->actions().value(m_menu->actions().indexOf(m_anchor) + 1);
    for (const auto &filter : std::as_const(m_filterItems)) {
        QAction *entry = makeMenu(filter->getName(), m_menu.get())->menuAction();
        entry->setData(kQuickFilterTag);
        entry->setVisible(!filter->wasLastHidden());
        entry->setEnabled(false);
        m_menu->insertAction(before, entry);
        m_filterEntries.append(entry);
    }
    m_threadFinished = false;
    const int previewPixels = MenuRenderer::previewPixels(m_menu.get());
    m_startWorker([this, run = m_run, previewPixels] { populate(run, previewPixels); });
}

// On the worker: the build, then the previews of the quick filters' images,
// each handed over as it is ready.
void StatusMenu::populate(const std::shared_ptr<Run> &run, int previewPixels)
{
    m_engine.buildShadowDesktopMenu(*run);
    // Here too: the estimate may take its whole half second.
    if (!*run->abort)
        run->size = FolderSize::estimateNow(run->root);
    const QStringList previewSources = MenuRenderer::previewSources(run->filterMenus);
    deliver({Delivery::Built, run, {}, {}});
    for (const QString &path : previewSources) {
        if (*run->abort)
            break;
        const QImage image = m_previews->preview(path, previewPixels);
        if (!image.isNull())
            deliver({Delivery::Preview, run, path, image});
    }
    deliver({Delivery::PreviewsDone, run, {}, {}});
}

// A worker's results travel through this queue under a lock, not inside the
// queued call, so that what the worker made is seen whole here.
void StatusMenu::deliver(Delivery delivery)
{
    bool wasEmpty = false;
    {
        const std::lock_guard lock(m_deliveriesMutex);
        wasEmpty = m_deliveries.empty();
        m_deliveries.push_back(std::move(delivery));
    }
    if (wasEmpty)
        QMetaObject::invokeMethod(this, "takeDeliveries", Qt::QueuedConnection);
}

void StatusMenu::takeDeliveries()
{
    std::vector<Delivery> deliveries;
    {
        const std::lock_guard lock(m_deliveriesMutex);
        deliveries.swap(m_deliveries);
    }
    for (const Delivery &delivery : deliveries) {
        if (delivery.run != m_run)
            continue; // an earlier opening's
        switch (delivery.kind) {
        case Delivery::Built:
            populationComplete(*delivery.run);
            break;
        case Delivery::Preview:
            m_renderer.setPreview(delivery.path, delivery.image);
            break;
        case Delivery::PreviewsDone:
            emit previewsLoaded();
            break;
        }
    }
}

void StatusMenu::menuWillOpen()
{
    updateTidyItems();
    const bool showNext = m_engine.getEnabled() && m_data.getShowTimeUntilTidy();
    m_nextTidy->setVisible(showNext);
    if (showNext)
        m_data.startUpdatingTimeRemaining();
}

void StatusMenu::menuDidClose()
{
    m_engine.setAbortMenuPopulate(true);
    m_data.stopUpdatingTimeRemaining();
}

void StatusMenu::populationComplete(const Run &run)
{
    m_updatingIndicator->setVisible(false);
    m_shadowDesktopMenu->menuAction()->setVisible(true);
    m_shadowDesktopMenu->menuAction()->setEnabled(true);
    m_renderer.forgetPreviews();
    m_renderer.render(m_shadowDesktopMenu, run.tree);
    for (qsizetype i = 0; i < m_filterEntries.size(); ++i) {
        QAction *entry = m_filterEntries.at(i);
        m_renderer.renderWhenShown(entry->menu(), run.filterMenus.at(i));
        const bool empty = run.filterMenus.at(i)->submenu.empty();
        m_filterItems.at(i)->setWasLastHidden(empty);
        entry->setVisible(!empty);
        entry->setEnabled(!empty);
    }
    const quint64 size = run.size;
    m_shadowDesktop->setText(QStringLiteral("Shadow Desktop (%1)").arg(SizeText::format(size)));
    m_shadowDesktop->setToolTip(
        size == 0 ? QStringLiteral("Size estimation took too long and was aborted, there "
                                   "are a large number of files or folders in the Shadow "
                                   "Desktop, you should consider removing unused files.")
                  : QString());
    m_threadFinished = true;
    writeOutlineIfAsked();
    emit populationCompleted();
}

// For tests on a real tray host: with BREVANO_MENU_OUTLINE set, each completed
// opening writes the visible titles of the menu and its submenus there.
void StatusMenu::writeOutlineIfAsked() const
{
    const QString path = qEnvironmentVariable("BREVANO_MENU_OUTLINE");
    if (path.isEmpty())
        return;
    QStringList lines;
    std::function<void(const QMenu *, int)> walk = [&](const QMenu *menu, int depth) {
        for (const QAction *action : menu->actions()) {
            if (!action->isVisible())
                continue;
            lines.append(QString(depth * 2, u' ') +
                         (action->isSeparator() ? QStringLiteral("--") : action->text()));
            if (action->menu())
                walk(action->menu(), depth + 1);
        }
    };
    walk(m_menu.get(), 0);
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(lines.join(u'\n').toUtf8() + '\n');
        file.commit();
    }
}

void StatusMenu::restoreAllFiles()
{
    const int answer = m_alerts.runModal(ShadowDesktopQuestions::restoreAll());
    // Put away without an answer, the question restores nothing.
    if (answer == 0 || answer == 1)
        m_engine.restoreAllFiles(answer == 0);
}

void StatusMenu::emptyShadowDesktop()
{
    if (m_alerts.runModal(ShadowDesktopQuestions::empty()) == 0)
        m_engine.deleteShadowDesktopContents();
}

// Answered from the journal's memory: cheap enough for every opening.
void StatusMenu::updateTidyItems()
{
    const QString why = m_engine.whyTidiesWait();
    m_tidyNow->setEnabled(why.isEmpty());
    // In advanced mode no tidy moves anything; the menu says so where one is asked for.
    m_tidyNow->setToolTip(!why.isEmpty() ? QStringLiteral("No tidy now: %1").arg(why)
                          : OperationMode::tidies(m_data.getOperationMode())
                              ? QStringLiteral("Move what lies on the Desktop into the Shadow "
                                               "Desktop now")
                              : OperationMode::nothingMovesNote());
    if (m_engine.isUndoing()) {
        m_undoLastTidy->setVisible(true);
        m_undoLastTidy->setEnabled(false);
        m_undoLastTidy->setText(QStringLiteral("Undoing Last Tidy…"));
        return;
    }
    MoveJournal *journal = m_engine.journal();
    const std::optional<MoveJournal::Run> tidy =
        journal ? TidyUndo(*journal).candidate() : std::nullopt;
    m_undoLastTidy->setVisible(tidy.has_value());
    m_undoLastTidy->setEnabled(true);
    if (tidy)
        m_undoLastTidy->setText(QStringLiteral("Undo Last Tidy (%ld items)")
                                    .replace(QStringLiteral("%ld"), QString::number(tidy->moved)));
}

void StatusMenu::undoLastTidy()
{
    // The items move on a worker; undoFinished() brings the report back.
    if (m_engine.undoLastTidyInBackground())
        updateTidyItems();
}

void StatusMenu::tellUndone(const TidyUndo::Report &report)
{
    updateTidyItems();
    const QStringList lines = report.lines();
    // What stayed behind wants the person's eye, not a notification that may
    // go unseen.
    if (report.nameTaken.isEmpty() && report.split.isEmpty() && report.notThere.isEmpty() &&
        report.failed.isEmpty()) {
        if (m_data.getGrowlEnabled())
            m_engine.notifyUser(QStringLiteral("Undo Last Tidy"), lines.join(u' '), QString(),
                                QStringLiteral("UndoComplete"));
        return;
    }
    m_alerts.runModal(Alert{lines.first(), lines.mid(1).join(u'\n')});
}
