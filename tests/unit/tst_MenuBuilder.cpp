#include "EngineFixture.h"
#include "ShadowDesktopMenuBuilder.h"

#include <QtTest>

namespace {
using Kind = MenuEntry::Kind;

// "title" for items, "[header]", "<message>", "--" for separators; alternates as "~title".
QStringList outline(const MenuEntry &menu)
{
    QStringList lines;
    for (const MenuEntryPointer &entry : menu.submenu) {
        switch (entry->kind) {
        case Kind::Separator:
            lines.append("--");
            break;
        case Kind::Header:
            lines.append('[' + entry->title + ']');
            break;
        case Kind::Message:
            lines.append('<' + entry->title + '>');
            break;
        case Kind::Item:
            lines.append(
                (entry->modifier == MenuEntry::Modifier::None ? QString() : QStringLiteral("~")) +
                entry->title);
        }
    }
    return lines;
}

// The folder entries themselves (not their alternates).
std::vector<const MenuEntry *> folders(const MenuEntry &menu)
{
    std::vector<const MenuEntry *> found;
    for (const MenuEntryPointer &entry : menu.submenu) {
        if (entry->hasSubmenu && entry->modifier == MenuEntry::Modifier::None)
            found.push_back(entry.get());
    }
    return found;
}

qsizetype countTag(const MenuEntry &menu, int tag)
{
    return std::count_if(menu.submenu.begin(), menu.submenu.end(),
                         [tag](const MenuEntryPointer &entry) { return entry->tag == tag; });
}
} // namespace

class tst_MenuBuilder : public QObject
{
    Q_OBJECT
private slots:
    void emptyShadowDesktop();
    void entriesAlternatesAndIcons();
    void perFolderLimitAndSkippedMessages();
    void depthLimit();
    void totalLimit();
    void dateFilterHiddenCounts();
    void organiseModes();
    void abortLeavesTheSubmenuEmpty();

private:
    // Registers the store's filters with fresh menu entries, as the status menu does.
    QList<MenuEntryPointer> prepare(EngineFixture &f, ShadowDesktopMenuBuilder::Registry &registry)
    {
        QList<MenuEntryPointer> menus;
        for (const auto &filter : f.data.filterItems()) {
            auto menu =
                std::make_shared<MenuEntry>(MenuEntry::of(Kind::Item, filter->getName(), 77));
            menu->hasSubmenu = true;
            filter->registerFileTypes(registry, QVariant::fromValue(menu));
            menus.append(menu);
        }
        return menus;
    }
    QString shadow(EngineFixture &f, const QString &relative, const QByteArray &content = "x")
    {
        return f.sandbox.write(".local/share/Brevano/Shadow Desktop/" + relative, content);
    }
};

void tst_MenuBuilder::emptyShadowDesktop()
{
    EngineFixture f;
    f.load();
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    QCOMPARE(outline(root), QStringList{"Reveal in Finder"});
    QCOMPARE(root.submenu.front()->tag, 1);
    QCOMPARE(root.submenu.front()->path, f.sandbox.shadowDesktop());
}

void tst_MenuBuilder::entriesAlternatesAndIcons()
{
    EngineFixture f;
    f.load();
    shadow(f, "Report.PDF");
    shadow(f, ".dotfile");
    shadow(f, "Photos/beach.jpg");
    QDir().mkpath(f.sandbox.shadowDesktop() + "/Tool.app/Contents");
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    QStringList top = outline(root);
    // Folders first, then files; no dot files; a package is a file.
    QCOMPARE(top.mid(0, 7), (QStringList{"Reveal in Finder", "--", "[Folders]", "Photos",
                                         "~Reveal Photos", "~Delete Photos", "~Restore Photos"}));
    QCOMPARE(top.mid(7, 2), (QStringList{"--", "[Files]"}));
    QVERIFY(top.contains("Report.PDF") && top.contains("Tool.app") &&
            top.contains("~Restore Tool.app"));
    QVERIFY(!top.join(' ').contains("dotfile"));
    const auto report =
        *std::find_if(root.submenu.begin(), root.submenu.end(),
                      [](const MenuEntryPointer &e) { return e->title == "Report.PDF"; });
    QCOMPARE(report->tag, 2);
    QCOMPARE(report->iconKind, MenuEntry::IconKind::ForExtension);
    QCOMPARE(report->iconSource, QStringLiteral("pdf")); // the lower-case extension
    // Deeper down: no restore alternate.
    const MenuEntry &photos = *root.submenu.at(3);
    QCOMPARE(outline(photos), (QStringList{"Reveal in Finder", "--", "[Files]", "beach.jpg",
                                           "~Reveal beach.jpg", "~Delete beach.jpg"}));
    QCOMPARE(photos.submenu.at(4)->modifier, MenuEntry::Modifier::Option);
    QCOMPARE(photos.submenu.at(5)->tag, 4);
    QCOMPARE(photos.submenu.at(5)->path, f.sandbox.shadowDesktop() + "/Photos/beach.jpg");
}

void tst_MenuBuilder::perFolderLimitAndSkippedMessages()
{
    EngineFixture f;
    f.load();
    for (int i = 0; i < 200; ++i)
        shadow(f, QStringLiteral("file%1.txt").arg(i));
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    const QList<MenuEntryPointer> filterMenus = prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    QCOMPARE(countTag(root, 2), 128);
    QCOMPARE(countTag(root, 5), 128); // every top-level file can be restored
    QCOMPARE(outline(root).mid(outline(root).size() - 2),
             (QStringList{"--", "<Maximum Items Reached>"}));
    QVERIFY(root.submenu.back()->toolTip.startsWith("Brevano limits the number of items"));
    // The "Documents" filter lists the 128 files, then says the scan was cut short.
    for (const MenuEntryPointer &menu : filterMenus)
        QCOMPARE(menu->submenu.back()->title, QStringLiteral("Some Files Were Not Scanned"));
    QCOMPARE(countTag(*filterMenus.at(2), 2), 128);
}

void tst_MenuBuilder::depthLimit()
{
    EngineFixture f;
    f.load();
    shadow(f, "d1/d2/d3/d4/d5/d6/deep.txt");
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    const MenuEntry *level = &root;
    for (int depth = 0; depth < 5; ++depth) { // d1 lies at depth 0, d5 is filled at depth 5
        QCOMPARE(folders(*level).size(), size_t(1));
        level = folders(*level).front();
    }
    QCOMPARE(level->title, QStringLiteral("d5"));
    QCOMPARE(outline(*level), (QStringList{"Reveal in Finder", "--", "<Maximum Depth Reached>"}));
    QVERIFY(level->submenu.back()->toolTip.startsWith("Brevano limits the depth"));
}

void tst_MenuBuilder::totalLimit()
{
    EngineFixture f;
    f.load();
    for (int folder = 0; folder < 20; ++folder)
        for (int file = 0; file < 120; ++file)
            shadow(f, QStringLiteral("f%1/x%2").arg(folder, 2, 10, QChar('0')).arg(file));
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    qsizetype items = qsizetype(folders(root).size());
    int limited = 0;
    for (const MenuEntry *folder : folders(root)) {
        items += countTag(*folder, 2);
        limited += folder->submenu.back()->title == "Maximum Items Reached" ? 1 : 0;
    }
    QCOMPARE(items, 2048); // 20 folders and 2028 files
    // 20 + 16 x 120 = 1940: the 17th folder fills up to 2048, the last three only say so.
    QCOMPARE(limited, 4);
}

void tst_MenuBuilder::dateFilterHiddenCounts()
{
    EngineFixture f;
    f.load();
    f.data.setDateFilter(1); // one day
    f.setAge(shadow(f, "old.jpg"), 3 * 86400);
    f.setAge(shadow(f, "new.jpg"), 60);
    f.setAge(shadow(f, "old.txt"), 3 * 86400);
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    const QList<MenuEntryPointer> filterMenus = prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    QCOMPARE(outline(root).mid(outline(root).size() - 2),
             (QStringList{"--", "<2 Older Files Hidden>"}));
    QCOMPARE(countTag(root, 2), 1);
    QCOMPARE(outline(*filterMenus.at(1)).mid(outline(*filterMenus.at(1)).size() - 2), // Images
             (QStringList{"--", "<1 Older Files Hidden>"}));
    QCOMPARE(outline(*filterMenus.at(2)), QStringList{"<1 Older Files Hidden>"}); // Documents
}

void tst_MenuBuilder::organiseModes()
{
    EngineFixture f;
    f.load();
    shadow(f, "b.png");
    shadow(f, "Zed/a.jpg");
    shadow(f, "Alpha/c.png");
    const auto images = [&](quint32 mode) {
        f.data.setQuickFiltersMode(mode);
        MenuEntry root;
        ShadowDesktopMenuBuilder::Registry registry;
        const QList<MenuEntryPointer> menus = prepare(f, registry);
        f.engine.buildShadowDesktopMenu(root, registry);
        QStringList lines = outline(*menus.at(1));
        lines.removeIf([](const QString &line) { return line.startsWith('~'); });
        return lines;
    };
    QCOMPARE(images(1), (QStringList{"[/Shadow Desktop]", "b.png", "--", "[/Shadow Desktop/Alpha]",
                                     "c.png", "--", "[/Shadow Desktop/Zed]", "a.jpg"}));
    QCOMPARE(images(2), (QStringList{"[JPG]", "a.jpg", "--", "[PNG]", "b.png", "c.png"}));
    QCOMPARE(images(3),
             (QStringList{"b.png", "c.png", "a.jpg"})); // by containing folder, no headers
    QCOMPARE(images(4), QStringList{});                 // not organised
    // Images (style 2) gets 48-point previews on its own copies.
    f.data.setQuickFiltersMode(1);
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    const QList<MenuEntryPointer> menus = prepare(f, registry);
    f.engine.buildShadowDesktopMenu(root, registry);
    QCOMPARE(menus.at(1)->submenu.at(1)->iconKind, MenuEntry::IconKind::Preview);
    QCOMPARE(menus.at(1)->submenu.at(1)->iconSize, 48);
    QVERIFY(menus.at(1)->submenu.at(1).get() != root.submenu.back().get());
}

void tst_MenuBuilder::abortLeavesTheSubmenuEmpty()
{
    EngineFixture f;
    f.load();
    for (int i = 0; i < 20; ++i)
        shadow(f, QStringLiteral("file%1.txt").arg(i));
    std::atomic<bool> abort{false};
    int looked = 0;
    // The menu closes while the tenth file is looked at.
    ShadowDesktopMenuBuilder builder(
        f.itemInfo,
        [&](const QString &) {
            abort = ++looked == 10;
            return true;
        },
        abort);
    MenuEntry root;
    ShadowDesktopMenuBuilder::Registry registry;
    QList<QuickFilterItem *> filters;
    for (const auto &item : f.data.filterItems())
        filters.append(item.get());
    const QList<MenuEntryPointer> menus = prepare(f, registry);
    builder.buildShadowDesktopMenu(root, f.sandbox.shadowDesktop(), registry, filters, 1);
    QVERIFY(root.submenu.empty());
    QCOMPARE(looked, 10);
    for (const MenuEntryPointer &menu : menus)
        QVERIFY(menu->submenu.empty());
}

QTEST_GUILESS_MAIN(tst_MenuBuilder)
#include "tst_MenuBuilder.moc"
