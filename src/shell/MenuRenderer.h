#pragma once

#include "MenuEntry.h"

#include <QHash>
#include <QIcon>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QAction;
class QImage;
class QMenu;
class QWidget;

// Turns entry descriptions into real menus on the main thread. An alternate is
// shown in place of the entry before it while exactly its modifier key is held
// (Option = Alt), as the menu is open; it is made the first time its key is
// held. Choosing an entry calls back with its tag and path. A row that is to
// show a preview shows its type icon until the picture is handed in.
class MenuRenderer : public QObject
{
    Q_OBJECT
public:
    using Chosen = std::function<void(int tag, const QString &path)>;

    explicit MenuRenderer(Chosen chosen, QObject *parent = nullptr);

    // Replaces menu's entries with those of entry's submenu. Submenus are filled
    // when they are first shown: menus here may hold thousands of entries.
    void render(QMenu *menu, const MenuEntry &entry);
    // Empties menu now and fills it from entry when it is first shown.
    void renderWhenShown(QMenu *menu, const MenuEntryPointer &entry);
    // Shows, for every entry with alternates, the one the modifiers ask for.
    void applyModifiers(QMenu *menu, Qt::KeyboardModifiers modifiers);

    static QIcon iconFor(const MenuEntry &entry);

    // The files whose previews the menus ask for, each once. Touches no widget.
    static QStringList previewSources(const QList<MenuEntryPointer> &menus);
    // The size in device pixels at which menu draws its icons.
    static int previewPixels(const QWidget *menu);
    // Puts the picture on every row that previews path, rendered now or later,
    // until forgetPreviews().
    void setPreview(const QString &path, const QImage &image);
    void forgetPreviews() { m_previews.clear(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void clear(QMenu *menu);
    void fill(QMenu *menu, const MenuEntry &entry);
    void watch(QMenu *menu);
    // A new action of menu for entry, not yet added to it.
    QAction *makeAction(QMenu *menu, const MenuEntryPointer &entry);
    void menuAboutToShow();
    // The one icon of all rows that preview path.
    QIcon previewIcon(const QString &path);

    struct Preview
    {
        QIcon icon; // shows the picture once it is in
        std::shared_ptr<QPixmap> picture;
        QList<QPointer<QAction>> rows;
    };

    Chosen m_chosen;
    QHash<QString, Preview> m_previews; // by file
};
