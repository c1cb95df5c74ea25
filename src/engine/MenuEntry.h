#pragma once

#include <QMetaType>
#include <QString>

#include <memory>
#include <vector>

struct MenuEntry;
using MenuEntryPointer = std::shared_ptr<MenuEntry>;

// One entry of a menu described as plain data, so that it can be built on a
// worker thread and turned into real menus on the main thread.
struct MenuEntry
{
    enum class Kind
    {
        Item,
        Header,
        Message,
        Separator
    };
    // An alternate stands in for the entry before it while its key is held.
    enum class Modifier
    {
        None,
        Option,
        Shift,
        Control
    };
    enum class IconKind
    {
        None,
        ForPath,
        ForExtension,
        Preview
    };

    Kind kind = Kind::Item;
    QString title;
    int tag = 0;
    QString path;    // the item the entry acts on (its tool tip)
    QString toolTip; // for messages
    bool enabled = true;
    Modifier modifier = Modifier::None;
    IconKind iconKind = IconKind::None;
    QString iconSource; // a path, or an extension for IconKind::ForExtension
    int iconSize = 22;
    bool hasSubmenu = false;
    std::vector<MenuEntryPointer> submenu;

    static MenuEntry of(Kind kind, const QString &title = QString(), int tag = 0,
                        const QString &path = QString())
    {
        MenuEntry entry;
        entry.kind = kind;
        entry.title = title;
        entry.tag = tag;
        entry.path = path;
        return entry;
    }
    MenuEntryPointer copy() const { return std::make_shared<MenuEntry>(*this); }
    // Appends an entry to the submenu and returns it.
    MenuEntryPointer add(MenuEntry entry);
    void addSeparator();
    void addHeader(const QString &title);
    void addMessage(const QString &title, const QString &toolTip = QString());
};

Q_DECLARE_METATYPE(MenuEntryPointer)
