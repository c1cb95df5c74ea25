#pragma once

#include "MenuEntry.h"
#include "QuickFilterItem.h"

#include <QDateTime>
#include <QHash>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class ItemInfo;

// Builds the Shadow Desktop submenu as a tree of entry descriptions: folders
// (depth first, at most 5 deep), files, their reveal / delete / restore
// alternates, and the quick filter submenus, within 128 entries per submenu and
// 2048 in all. Meant for a worker thread; the abort flag stops it between steps.
class ShadowDesktopMenuBuilder
{
public:
    static constexpr quint32 kMaxDepth = 5;
    static constexpr int kMaxItemsPerFolder = 128;
    static constexpr int kMaxItemsTotal = 2048;

    using Registry = QHash<QString, QList<QuickFilterItem *>>;
    using DatePredicate = std::function<bool(const QString &path)>;

    // One opening of the status menu: made on the main thread with a snapshot of
    // everything the build reads, then the worker's alone until it hands the run
    // back. The quick filters are the run's own copies, so nothing in it is
    // shared with the store.
    struct Run
    {
        std::shared_ptr<std::atomic<bool>> abort; // set when this opening's menu closes
        QString root;
        quint32 dateFilter = 0;
        QDateTime now;
        quint32 organiseMode = 0;
        std::vector<std::unique_ptr<QuickFilterItem>> filters;
        QList<MenuEntryPointer> filterMenus; // index-parallel with filters
        Registry registry;
        MenuEntry tree;
        quint64 size = 0; // the estimate of the Shadow Desktop's size, 0 when given up

        // Adds a copy of filter, registered for its extensions with an empty submenu.
        void addFilter(const QuickFilterItem &filter);
    };

    ShadowDesktopMenuBuilder(const ItemInfo &itemInfo, DatePredicate passesDateFilter,
                             const std::atomic<bool> &abort)
        : m_itemInfo(itemInfo), m_passesDateFilter(std::move(passesDateFilter)), m_abort(abort)
    {
    }

    // Builds the run's tree and filter submenus from its snapshot.
    void build(Run &run);
    // Fills shadowEntry's submenu from root, then (unless aborted) each filter's
    // submenu by organiseMode: 1 by folder, 2 by type, 3 alphabetically.
    void buildShadowDesktopMenu(MenuEntry &shadowEntry, const QString &root, Registry &registry,
                                const QList<QuickFilterItem *> &filters, quint32 organiseMode);

    void buildMenu(MenuEntry &entry, const QString &path, Registry &registry, quint32 depth);
    void buildFiltersMenu(const QList<QuickFilterItem *> &filters, quint32 organiseMode);

    static void addHiddenItemsCount(MenuEntry &entry, quint64 count);
    static void addSkippedItemsMessage(MenuEntry &entry);
    static QString containingFolder(const QString &root, const QString &filePath);

private:
    enum class Step
    {
        Go,
        Skip,
        Aborted,
        FolderLimit,
        TotalLimit
    };
    Step nextStep(const QString &name, int count);
    void addItemWithAlternates(MenuEntry &menu, const MenuEntry &item, quint32 depth,
                               std::vector<MenuEntryPointer> *made);
    void addQuickFilterEntries(Registry &registry, const QString &path, const QString &extension,
                               bool passes, const std::vector<MenuEntryPointer> &made);

    const ItemInfo &m_itemInfo;
    DatePredicate m_passesDateFilter;
    const std::atomic<bool> &m_abort;
    QString m_root;
    int m_totalItems = 0;
    bool m_itemsSkipped = false;
};
