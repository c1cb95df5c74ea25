#pragma once

#include "MenuEntry.h"

#include <QObject>

#include <functional>

class QAction;
class QMenu;

// Turns entry descriptions into real menus on the main thread. An alternate is
// shown in place of the entry before it while exactly its modifier key is held
// (Option = Alt), as the menu is open; choosing an entry calls back with its
// tag and path.
class MenuRenderer : public QObject
{
    Q_OBJECT
public:
    using Chosen = std::function<void(int tag, const QString &path)>;

    explicit MenuRenderer(Chosen chosen, QObject *parent = nullptr);

    // Replaces menu's entries with those of entry's submenu (recursively).
    void render(QMenu *menu, const MenuEntry &entry);
    // Shows, for every entry with alternates, the one the modifiers ask for.
    static void applyModifiers(QMenu *menu, Qt::KeyboardModifiers modifiers);

    static QIcon iconFor(const MenuEntry &entry);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QAction *addEntry(QMenu *menu, const MenuEntry &entry);

    Chosen m_chosen;
};
