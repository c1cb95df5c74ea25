#include "EngineFixture.h"
#include "FileNames.h"
#include "ShadowDesktopMenuBuilder.h"

#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    void entriesAlternatesAndIcons();
    void perFolderLimitAndSkippedMessages();
    void depthLimit();
    void totalLimit();
    void dateFilterHiddenCounts();
    void organiseModes();
    void abortLeavesTheSubmenuEmpty();
    void buildReadsTheSnapshotOfItsOpening();
    void abortBeforeTheWorkerStartsStopsIt();
    void nameThatIsNotUtf8();

private:
    using Run = ShadowDesktopMenuBuilder::Run;
    // One opening's build, as the status menu makes it.
    std::shared_ptr<Run> build(EngineFixture &f)
    {
        auto run = f.engine.beginMenuPopulate();
        f.engine.buildShadowDesktopMenu(*run);
        return run;
    }
    QString shadow(EngineFixture &f, const QString &relative, const QByteArray &content = "x")
    {
        return f.sandbox.write(".local/share/Brevano/Shadow Desktop/" + relative, content);
    }
};

void tst_MenuBuilder::entriesAlternatesAndIcons()
{
    EngineFixture f;
    f.load();
    const auto empty = build(f); // empty: the one row that reveals the folder
    QCOMPARE(outline(empty->tree), QStringList{"Reveal in Finder"});
    QCOMPARE(empty->tree.submenu.front()->path, f.sandbox.shadowDesktop());
    shadow(f, "Report.PDF");
    shadow(f, ".dotfile");
    shadow(f, "Photos/beach.jpg");
    QDir().mkpath(f.sandbox.shadowDesktop() + "/Tool.app/Contents");
    const auto run = build(f);
    const MenuEntry &root = run->tree;
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
    const auto run = build(f);
    const MenuEntry &root = run->tree;
    const QList<MenuEntryPointer> &filterMenus = run->filterMenus;
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
    const auto run = build(f);
    const MenuEntry &root = run->tree;
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
    const auto run = build(f);
    const MenuEntry &root = run->tree;
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
    const auto run = build(f);
    const MenuEntry &root = run->tree;
    const QList<MenuEntryPointer> &filterMenus = run->filterMenus;
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
        QStringList lines = outline(*build(f)->filterMenus.at(1));
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
    const auto run = build(f);
    const MenuEntry &root = run->tree;
    const QList<MenuEntryPointer> &menus = run->filterMenus;
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
    const auto run = f.engine.beginMenuPopulate();
    builder.build(*run);
    const MenuEntry &root = run->tree;
    const QList<MenuEntryPointer> &menus = run->filterMenus;
    QVERIFY(root.submenu.empty());
    QCOMPARE(looked, 10);
    for (const MenuEntryPointer &menu : menus)
        QVERIFY(menu->submenu.empty());
}

void tst_MenuBuilder::buildReadsTheSnapshotOfItsOpening()
{
    EngineFixture f;
    f.load();
    f.setAge(shadow(f, "old.jpg"), 3 * 86400);
    shadow(f, "Sub/new.png");
    shadow(f, "later.txt");
    const auto run = f.engine.beginMenuPopulate();
    // The main thread changes the store after the opening began, before the worker runs.
    f.data.setDateFilter(1);
    f.data.setQuickFiltersMode(2);
    QuickFilterItem &images = *f.data.filterItems().at(1);
    images.setStyle(0);
    images.fileExtensions().append(QStringLiteral("txt"));
    f.data.removeQuickFilter(0);
    f.engine.buildShadowDesktopMenu(*run);
    QCOMPARE(countTag(run->tree, 2), 2); // the date filter as it was: old.jpg shows
    QCOMPARE(run->filterMenus.size(), 11);
    const MenuEntry &imagesMenu = *run->filterMenus.at(1);
    QCOMPARE(imagesMenu.title, QStringLiteral("Images"));
    QStringList lines = outline(imagesMenu);
    lines.removeIf([](const QString &line) { return line.startsWith('~'); });
    // By folder, with previews, without the text file.
    QCOMPARE(lines, (QStringList{"[/Shadow Desktop]", "old.jpg", "--", "[/Shadow Desktop/Sub]",
                                 "new.png"}));
    QCOMPARE(imagesMenu.submenu.at(1)->iconKind, MenuEntry::IconKind::Preview);
}

void tst_MenuBuilder::abortBeforeTheWorkerStartsStopsIt()
{
    EngineFixture f;
    f.load();
    shadow(f, "a.txt");
    // The menu closes after the opening began but before its worker started.
    const auto closed = f.engine.beginMenuPopulate();
    f.engine.setAbortMenuPopulate(true);
    f.engine.buildShadowDesktopMenu(*closed);
    QVERIFY(closed->tree.submenu.empty());
    QVERIFY(closed->filterMenus.at(2)->submenu.empty());
    // The next opening starts with the flag cleared; the last one's stays set.
    const auto next = build(f);
    QVERIFY(!f.engine.abortMenuPopulate());
    QVERIFY(*closed->abort);
    QCOMPARE(countTag(next->tree, 2), 1);
}

// Shown readable, and the entry still names the item: restoring it works.
void tst_MenuBuilder::nameThatIsNotUtf8()
{
    EngineFixture f;
    f.load();
    QDir().mkpath(f.sandbox.shadowDesktop());
    const QByteArray bytes = FileNames::encode(f.sandbox.shadowDesktop()) + "/caf\xe9.txt";
    const int fd = ::open(bytes.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    QVERIFY(fd >= 0);
    ::close(fd);
    const auto run = build(f);
    const auto entry = std::find_if(run->tree.submenu.begin(), run->tree.submenu.end(),
                                    [](const MenuEntryPointer &e) { return e->tag == 5; });
    QVERIFY(entry != run->tree.submenu.end());
    QCOMPARE((*entry)->title, QString::fromUtf8("Restore caf\xef\xbf\xbd.txt"));
    f.engine.menuItemPressed(5, (*entry)->path);
    struct stat info;
    QCOMPARE(::lstat((FileNames::encode(f.sandbox.desktop()) + "/caf\xe9.txt").constData(), &info),
             0);
}

QTEST_GUILESS_MAIN(tst_MenuBuilder)
#include "tst_MenuBuilder.moc"
