#include "MenuEntry.h"

MenuEntryPointer MenuEntry::add(MenuEntry entry)
{
    submenu.push_back(std::make_shared<MenuEntry>(std::move(entry)));
    return submenu.back();
}

void MenuEntry::addSeparator()
{
    add(of(Kind::Separator));
}

void MenuEntry::addHeader(const QString &text)
{
    MenuEntry header = of(Kind::Header, text);
    header.enabled = false;
    add(std::move(header));
}

void MenuEntry::addMessage(const QString &text, const QString &tip)
{
    MenuEntry message = of(Kind::Message, text);
    message.enabled = false;
    message.toolTip = tip;
    add(std::move(message));
}
