#include "MenuRenderer.h"

#include "AlternateItemWidget.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeDatabase>
#include <QPixmap>
#include <QSet>
#include <QStyle>
#include <QWidgetAction>
#include <QtMath>

namespace {

Qt::KeyboardModifiers modifierKeys(MenuEntry::Modifier modifier)
{
    switch (modifier) {
    case MenuEntry::Modifier::Option:
        return Qt::AltModifier;
    case MenuEntry::Modifier::Shift:
        return Qt::ShiftModifier;
    case MenuEntry::Modifier::Control:
        return Qt::ControlModifier;
    case MenuEntry::Modifier::None:
        break;
    }
    return Qt::NoModifier;
}

// Looked up once per extension: the theme lookup is slow, and a menu holds
// thousands of rows. Main thread only.
QIcon typeIcon(const QString &extension)
{
    static QHash<QString, QIcon> icons;
    if (const auto found = icons.constFind(extension); found != icons.constEnd())
        return *found;
    static QMimeDatabase database;
    const QMimeType type =
        database.mimeTypeForFile(QStringLiteral("x.") + extension, QMimeDatabase::MatchExtension);
    return icons[extension] =
               QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
}

QString extensionOf(const QString &path)
{
    return QFileInfo(path).suffix().toLower();
}
} // namespace

MenuRenderer::MenuRenderer(Chosen chosen, QObject *parent)
    : QObject(parent), m_chosen(std::move(chosen))
{
}

QIcon MenuRenderer::iconFor(const MenuEntry &entry)
{
    switch (entry.iconKind) {
    case MenuEntry::IconKind::ForPath:
        return QFileIconProvider().icon(QFileInfo(entry.iconSource));
    case MenuEntry::IconKind::ForExtension:
        return typeIcon(entry.iconSource);
    case MenuEntry::IconKind::Preview: // until the picture arrives
        return typeIcon(extensionOf(entry.iconSource));
    case MenuEntry::IconKind::None:
        break;
    }
    return QIcon();
}

QStringList MenuRenderer::previewSources(const QList<MenuEntryPointer> &menus)
{
    QStringList sources;
    QSet<QString> seen;
    for (const MenuEntryPointer &menu : menus) {
        for (const MenuEntryPointer &entry : menu->submenu) {
            if (entry->iconKind == MenuEntry::IconKind::Preview &&
                !seen.contains(entry->iconSource)) {
                seen.insert(entry->iconSource);
                sources.append(entry->iconSource);
            }
        }
    }
    return sources;
}

int MenuRenderer::previewPixels(const QWidget *menu)
{
    return qCeil(menu->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, menu) *
                 menu->devicePixelRatioF());
}

void MenuRenderer::setPreview(const QString &path, const QImage &image)
{
    const QList<QPointer<QAction>> rows = m_previewRows.value(path);
    if (rows.isEmpty())
        return;
    QPixmap pixmap = QPixmap::fromImage(image);
    const QIcon icon(pixmap);
    for (const QPointer<QAction> &row : rows) {
        if (!row)
            continue;
        if (auto *widgetAction = qobject_cast<QWidgetAction *>(row.data()))
            static_cast<AlternateItemWidget *>(widgetAction->defaultWidget())->setIcon(icon);
        else
            row->setIcon(icon);
    }
}

void MenuRenderer::render(QMenu *menu, const MenuEntry &entry)
{
    // clear() leaves the submenus of the last rendering alive: they are the menu's children.
    for (QAction *action : menu->actions()) {
        if (QMenu *submenu = action->menu(); submenu && submenu->parent() == menu)
            delete submenu;
    }
    menu->clear();
    menu->setToolTipsVisible(true);
    for (const MenuEntryPointer &child : entry.submenu)
        addEntry(menu, *child);
    menu->installEventFilter(this);
    applyModifiers(menu, QGuiApplication::queryKeyboardModifiers());
}

QAction *MenuRenderer::addEntry(QMenu *menu, const MenuEntry &entry)
{
    switch (entry.kind) {
    case MenuEntry::Kind::Separator:
        return menu->addSeparator();
    case MenuEntry::Kind::Header:
    case MenuEntry::Kind::Message: {
        QAction *action = menu->addAction(entry.title);
        action->setEnabled(false);
        action->setToolTip(entry.toolTip);
        return action;
    }
    case MenuEntry::Kind::Item:
        break;
    }
    QAction *action = nullptr;
    if (entry.hasSubmenu && entry.modifier == MenuEntry::Modifier::None) {
        QMenu *submenu = menu->addMenu(iconFor(entry), entry.title);
        render(submenu, entry);
        action = submenu->menuAction();
    } else if (entry.modifier != MenuEntry::Modifier::None) {
        // The first word coloured: Reveal grey, Delete light red, Restore grey-green.
        static const QHash<MenuEntry::Modifier, QColor> colours{
            {MenuEntry::Modifier::Option, QColor::fromRgbF(0.5f, 0.5f, 0.5f)},
            {MenuEntry::Modifier::Shift, QColor::fromRgbF(1.0f, 0.5f, 0.5f)},
            {MenuEntry::Modifier::Control, QColor::fromRgbF(0.5f, 0.6f, 0.5f)}};
        auto *widgetAction = new QWidgetAction(menu);
        auto *item =
            new AlternateItemWidget(iconFor(entry), entry.title, colours.value(entry.modifier));
        item->setToolTip(entry.path);
        widgetAction->setDefaultWidget(item);
        widgetAction->setText(entry.title);
        menu->addAction(widgetAction);
        action = widgetAction;
        const int tag = entry.tag;
        const QString path = entry.path;
        connect(item, &AlternateItemWidget::activated, this, [menu, widgetAction] {
            // Close the whole menu, as choosing any entry does, then act.
            QWidget *top = menu;
            while (qobject_cast<QMenu *>(top->parentWidget()))
                top = top->parentWidget();
            top->hide();
            widgetAction->trigger();
        });
        connect(widgetAction, &QAction::triggered, this,
                [this, tag, path] { m_chosen(tag, path); });
    } else {
        action = menu->addAction(iconFor(entry), entry.title);
        const int tag = entry.tag;
        const QString path = entry.path;
        connect(action, &QAction::triggered, this, [this, tag, path] { m_chosen(tag, path); });
    }
    if (entry.iconKind == MenuEntry::IconKind::Preview)
        m_previewRows[entry.iconSource].append(action);
    action->setToolTip(entry.path);
    action->setEnabled(entry.enabled);
    action->setData(QVariant::fromValue(int(modifierKeys(entry.modifier))));
    action->setVisible(entry.modifier == MenuEntry::Modifier::None);
    return action;
}

void MenuRenderer::applyModifiers(QMenu *menu, Qt::KeyboardModifiers modifiers)
{
    modifiers &= Qt::AltModifier | Qt::ShiftModifier | Qt::ControlModifier;
    const QList<QAction *> actions = menu->actions();
    for (qsizetype i = 0; i < actions.size(); ++i) {
        if (!actions[i]->data().isValid() || actions[i]->data().toInt() != 0)
            continue;
        // The entry and the alternates that follow it: show the one asked for.
        qsizetype end = i + 1;
        while (end < actions.size() && actions[end]->data().isValid() &&
               actions[end]->data().toInt() != 0)
            ++end;
        QAction *shown = actions[i];
        for (qsizetype j = i + 1; j < end; ++j) {
            if (Qt::KeyboardModifiers(actions[j]->data().toInt()) == modifiers)
                shown = actions[j];
        }
        for (qsizetype j = i; j < end; ++j)
            actions[j]->setVisible(actions[j] == shown);
        i = end - 1;
    }
}

bool MenuRenderer::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        const auto *key = static_cast<QKeyEvent *>(event);
        static const QHash<int, Qt::KeyboardModifier> keys{{Qt::Key_Alt, Qt::AltModifier},
                                                           {Qt::Key_Shift, Qt::ShiftModifier},
                                                           {Qt::Key_Control, Qt::ControlModifier}};
        if (keys.contains(key->key())) {
            // A release still reports its own key as held; take it off.
            Qt::KeyboardModifiers held = key->modifiers();
            if (event->type() == QEvent::KeyRelease)
                held &= ~keys.value(key->key());
            else
                held |= keys.value(key->key());
            // Every open level of the menu follows the keys.
            for (QMenu *menu = qobject_cast<QMenu *>(watched); menu;
                 menu = qobject_cast<QMenu *>(menu->parent()))
                applyModifiers(menu, held);
            for (QMenu *child : watched->findChildren<QMenu *>())
                applyModifiers(child, held);
        }
    }
    return QObject::eventFilter(watched, event);
}
