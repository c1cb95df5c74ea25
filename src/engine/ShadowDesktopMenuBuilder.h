#pragma once

#include "MenuEntry.h"
#include "QuickFilterItem.h"

#include <QHash>

#include <atomic>
#include <functional>

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

    ShadowDesktopMenuBuilder(const ItemInfo &itemInfo, DatePredicate passesDateFilter,
                             const std::atomic<bool> &abort)
        : m_itemInfo(itemInfo), m_passesDateFilter(std::move(passesDateFilter)), m_abort(abort)
    {
    }

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
