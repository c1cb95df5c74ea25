#pragma once

#include "MenuEntry.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>

class QAction;
class QImage;
class QMenu;
class QWidget;

// Turns entry descriptions into real menus on the main thread. An alternate is
// shown in place of the entry before it while exactly its modifier key is held
// (Option = Alt), as the menu is open; choosing an entry calls back with its
// tag and path. A row that is to show a preview shows its type icon until the
// picture is handed in.
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

    // The files whose previews the menus ask for, each once. Touches no widget.
    static QStringList previewSources(const QList<MenuEntryPointer> &menus);
    // The size in device pixels at which menu draws its icons.
    static int previewPixels(const QWidget *menu);
    // Puts the picture on every row rendered since forgetPreviewRows() that
    // previews path.
    void setPreview(const QString &path, const QImage &image);
    void forgetPreviewRows() { m_previewRows.clear(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QAction *addEntry(QMenu *menu, const MenuEntry &entry);

    Chosen m_chosen;
    QHash<QString, QList<QPointer<QAction>>> m_previewRows;
};
