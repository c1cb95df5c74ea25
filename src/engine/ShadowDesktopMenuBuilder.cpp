#include "ShadowDesktopMenuBuilder.h"

#include "BackgroundFileListBuilder.h"
#include "DirectoryListing.h"
#include "FileNames.h"
#include "ItemInfo.h"

#include <QtDebug>

#include <algorithm>

namespace {
const QString kLimitTip = QStringLiteral(
    "Brevano limits the number of items displayed in the menu to ensure browsing the menu remains "
    "responsive. You should consider removing unused items from the Shadow Desktop which contains "
    "a "
    "large number of files.");
const QString kDepthTip = QStringLiteral(
    "Brevano limits the depth of the folder structure displayed in the menu to ensure browsing the "
    "menu remains responsive. You should consider removing unused items from the Shadow Desktop "
    "which contains a large number of files.");

// Names keep their bytes (a name that is not UTF-8 still names its item); only
// titles are made readable.
QStringList namesInFileSystemOrder(const QString &folder)
{
    QStringList names;
    const qsizetype prefix = folder.size() + 1;
    DirectoryListing::forEach(folder, [&](QString &&path, unsigned char) {
        names.append(path.mid(prefix));
        return true;
    });
    return names;
}

void addLimitMessage(MenuEntry &menu)
{
    menu.addSeparator();
    menu.addMessage(QStringLiteral("Maximum Items Reached"), kLimitTip);
}

MenuEntry itemEntry(const QString &title, int tag, const QString &path,
                    MenuEntry::IconKind iconKind, const QString &iconSource)
{
    MenuEntry entry = MenuEntry::of(MenuEntry::Kind::Item, title, tag, path);
    entry.iconKind = iconKind;
    entry.iconSource = iconSource;
    return entry;
}

struct FolderToDescend
{
    MenuEntryPointer item;
    QString path;
};
} // namespace

void ShadowDesktopMenuBuilder::Run::addFilter(const QuickFilterItem &filter)
{
    // Over a copy of the record: later edits of the store's filter are not seen.
    auto copy = std::make_unique<QuickFilterItem>(filter.tempDictionary().deepCopy());
    auto menu = std::make_shared<MenuEntry>(MenuEntry::of(MenuEntry::Kind::Item, copy->getName()));
    menu->hasSubmenu = true;
    copy->registerFileTypes(registry, QVariant::fromValue(menu));
    filters.push_back(std::move(copy));
    filterMenus.append(menu);
}

void ShadowDesktopMenuBuilder::build(Run &run)
{
    QList<QuickFilterItem *> filters;
    for (const auto &filter : run.filters)
        filters.append(filter.get());
    buildShadowDesktopMenu(run.tree, run.root, run.registry, filters, run.organiseMode);
}

void ShadowDesktopMenuBuilder::buildShadowDesktopMenu(MenuEntry &shadowEntry, const QString &root,
                                                      Registry &registry,
                                                      const QList<QuickFilterItem *> &filters,
                                                      quint32 organiseMode)
{
    m_root = root;
    m_totalItems = 0;
    m_itemsSkipped = false;
    buildMenu(shadowEntry, root, registry, 0);
    if (m_abort) {
        shadowEntry.submenu.clear();
        return;
    }
    buildFiltersMenu(filters, organiseMode);
}

void ShadowDesktopMenuBuilder::addItemWithAlternates(MenuEntry &menu, const MenuEntry &item,
                                                     quint32 depth,
                                                     std::vector<MenuEntryPointer> *made)
{
    const QString name = item.title;
    std::vector<MenuEntryPointer> entries{menu.add(item)};
    const struct
    {
        const char *format;
        int tag;
        MenuEntry::Modifier modifier;
    } alternates[] = {{"Reveal %1", 3, MenuEntry::Modifier::Option},
                      {"Delete %1", 4, MenuEntry::Modifier::Shift},
                      {"Restore %1", 5, MenuEntry::Modifier::Control}};
    for (const auto &alternate : alternates) {
        // Restoring is for items lying directly in the Shadow Desktop only.
        if (alternate.tag == 5 && depth != 0)
            continue;
        MenuEntry entry = item;
        entry.title = QString::fromLatin1(alternate.format).arg(name);
        entry.tag = alternate.tag;
        entry.modifier = alternate.modifier;
        entry.hasSubmenu = false;
        entry.submenu.clear();
        entries.push_back(menu.add(std::move(entry)));
    }
    if (made)
        *made = std::move(entries);
}

// Every name of a pass is checked here first; a limit is checked before the
// item is looked at, so once one is reached the next name of any kind ends the pass.
ShadowDesktopMenuBuilder::Step ShadowDesktopMenuBuilder::nextStep(const QString &name, int count)
{
    if (m_abort) {
        m_itemsSkipped = true;
        return Step::Aborted;
    }
    if (name.startsWith(u'.'))
        return Step::Skip;
    if (count >= kMaxItemsPerFolder || m_totalItems >= kMaxItemsTotal) {
        m_itemsSkipped = true;
        return count >= kMaxItemsPerFolder ? Step::FolderLimit : Step::TotalLimit;
    }
    return Step::Go;
}

void ShadowDesktopMenuBuilder::buildMenu(MenuEntry &entry, const QString &path, Registry &registry,
                                         quint32 depth)
{
    if (m_abort) {
        m_itemsSkipped = true;
        return;
    }
    entry.submenu.clear();
    entry.hasSubmenu = true;
    entry.add(
        itemEntry(QStringLiteral("Reveal in Finder"), 1, path, MenuEntry::IconKind::None, {}));
    if (depth >= kMaxDepth) {
        m_itemsSkipped = true;
        entry.addSeparator();
        entry.addMessage(QStringLiteral("Maximum Depth Reached"), kDepthTip);
        return;
    }
    const QStringList names = namesInFileSystemOrder(path);
    int count = 0;
    bool folderLimitShown = false;
    bool totalLimitShown = false;
    std::vector<FolderToDescend> folders;

    for (const QString &name : names) {
        const Step step = nextStep(name, count);
        if (step == Step::Skip)
            continue;
        if (step != Step::Go) {
            if (step != Step::Aborted) {
                addLimitMessage(entry);
                (step == Step::FolderLimit ? folderLimitShown : totalLimitShown) = true;
            }
            break;
        }
        const QString full = path + u'/' + name;
        if (!BackgroundFileListBuilder::isDirButNotPackage(
                m_itemInfo.flags(full, ItemInfo::Container | ItemInfo::Package)))
            continue;
        if (folders.empty()) {
            entry.addSeparator();
            entry.addHeader(QStringLiteral("Folders"));
        }
        MenuEntry folder =
            itemEntry(FileNames::display(name), 0, full, MenuEntry::IconKind::ForPath, full);
        folder.hasSubmenu = true;
        std::vector<MenuEntryPointer> made;
        addItemWithAlternates(entry, folder, depth, &made);
        ++count;
        ++m_totalItems;
        folders.push_back({made.front(), full});
    }

    quint64 hidden = 0;
    bool anyFile = false;
    for (const QString &name : names) {
        const Step step = nextStep(name, count);
        if (step == Step::Skip)
            continue;
        if (step != Step::Go) {
            // The message once per limit: the folders pass may have shown it.
            if ((step == Step::FolderLimit && !folderLimitShown) ||
                (step == Step::TotalLimit && !totalLimitShown))
                addLimitMessage(entry);
            break;
        }
        const QString full = path + u'/' + name;
        const quint32 flags = m_itemInfo.flags(full);
        if (BackgroundFileListBuilder::isDirButNotPackage(flags) || (flags & ItemInfo::Invisible))
            continue;
        const bool passes = m_passesDateFilter(full);
        const qsizetype dot = name.lastIndexOf(u'.');
        const QString extension = dot < 0 ? QString() : name.mid(dot + 1).toLower();
        std::vector<MenuEntryPointer> made;
        if (passes) {
            if (!anyFile) {
                entry.addSeparator();
                entry.addHeader(QStringLiteral("Files"));
                anyFile = true;
            }
            addItemWithAlternates(entry,
                                  itemEntry(FileNames::display(name), 2, full,
                                            MenuEntry::IconKind::ForExtension, extension),
                                  depth, &made);
            ++count;
            ++m_totalItems;
        } else {
            ++hidden;
        }
        if (!extension.isEmpty())
            addQuickFilterEntries(registry, full, extension, passes, made);
    }

    if (m_abort)
        return;
    if (hidden != 0) {
        entry.addSeparator();
        entry.addMessage(QStringLiteral("%1 Older Files Hidden").arg(hidden));
    }
    for (const FolderToDescend &folder : folders) {
        if (m_abort) {
            m_itemsSkipped = true;
            return;
        }
        buildMenu(*folder.item, folder.path, registry, depth + 1);
    }
}

QString ShadowDesktopMenuBuilder::containingFolder(const QString &root, const QString &filePath)
{
    const QString rootParent = root.left(qMax<qsizetype>(0, root.lastIndexOf(u'/')));
    QString folder = filePath.left(filePath.lastIndexOf(u'/'));
    if (!rootParent.isEmpty())
        folder.replace(rootParent, QString());
    return folder;
}

void ShadowDesktopMenuBuilder::addQuickFilterEntries(Registry &registry, const QString &path,
                                                     const QString &extension, bool passes,
                                                     const std::vector<MenuEntryPointer> &made)
{
    const auto filters = registry.constFind(extension);
    if (filters == registry.constEnd())
        return;
    const QString folder = FileNames::display(containingFolder(m_root, path));
    static const char *const keys[] = {"MenuItem", "MenuItemAlt", "MenuItemShift",
                                       "MenuItemControl"};
    for (QuickFilterItem *filter : *filters) {
        if (!filter->mainMenuItem().isValid())
            continue;
        if (!passes) {
            filter->incrementHiddenCount();
            continue;
        }
        // Each filter gets copies, with previews as large as its style asks.
        static constexpr int previewSizes[] = {0, 22, 48, 64};
        const quint32 style = filter->getStyle();
        QVariantMap item;
        for (size_t i = 0; i < made.size() && i < 4; ++i) {
            MenuEntryPointer copy = made[i]->copy();
            if (style >= 1 && style <= 3) {
                copy->iconKind = MenuEntry::IconKind::Preview;
                copy->iconSource = path;
                copy->iconSize = previewSizes[style];
            }
            item.insert(QLatin1String(keys[i]), QVariant::fromValue(copy));
        }
        item.insert(QStringLiteral("ContainingFolder"), folder);
        item.insert(QStringLiteral("Type"), extension.toUpper());
        item.insert(QStringLiteral("DisplayName"), folder);
        filter->addItem(item);
    }
}

void ShadowDesktopMenuBuilder::buildFiltersMenu(const QList<QuickFilterItem *> &filters,
                                                quint32 organiseMode)
{
    static const char *const sortKeys[] = {nullptr, "ContainingFolder", "Type", "DisplayName"};
    if (organiseMode < 1 || organiseMode > 3)
        return;
    const QString key = QLatin1String(sortKeys[organiseMode]);
    for (QuickFilterItem *filter : filters) {
        const auto menu = filter->mainMenuItem().value<MenuEntryPointer>();
        if (!menu) {
            if (organiseMode == 1)
                qInfo("No type menu");
            continue;
        }
        QList<QVariantMap> items = filter->itemList();
        std::stable_sort(items.begin(), items.end(),
                         [&key](const QVariantMap &a, const QVariantMap &b) {
                             return a.value(key).toString() < b.value(key).toString();
                         });
        QString previous;
        for (qsizetype i = 0; i < items.size(); ++i) {
            const QVariantMap &item = items.at(i);
            const QString value = item.value(key).toString();
            if (organiseMode != 3 && (i == 0 || value != previous)) {
                if (i != 0)
                    menu->addSeparator();
                menu->addHeader(value);
            }
            previous = value;
            for (const char *entryKey :
                 {"MenuItem", "MenuItemAlt", "MenuItemShift", "MenuItemControl"}) {
                const auto entry = item.value(QLatin1String(entryKey)).value<MenuEntryPointer>();
                if (entry)
                    menu->submenu.push_back(entry);
            }
        }
        addHiddenItemsCount(*menu, filter->hiddenCount());
        if (m_itemsSkipped)
            addSkippedItemsMessage(*menu);
    }
}

void ShadowDesktopMenuBuilder::addHiddenItemsCount(MenuEntry &entry, quint64 count)
{
    if (count == 0)
        return;
    if (!entry.submenu.empty())
        entry.addSeparator();
    entry.addMessage(QStringLiteral("%1 Older Files Hidden").arg(count));
}

void ShadowDesktopMenuBuilder::addSkippedItemsMessage(MenuEntry &entry)
{
    if (!entry.submenu.empty())
        entry.addSeparator();
    entry.addMessage(QStringLiteral("Some Files Were Not Scanned"));
}
