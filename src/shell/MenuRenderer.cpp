#include "MenuRenderer.h"

#include "AlternateItemWidget.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeDatabase>
#include <QWidgetAction>

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

QIcon typeIcon(const QString &extension)
{
    static QMimeDatabase database;
    const QMimeType type =
        database.mimeTypeForFile(QStringLiteral("x.") + extension, QMimeDatabase::MatchExtension);
    return QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
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
    case MenuEntry::IconKind::Preview: {
        QImageReader reader(entry.iconSource);
        if (reader.canRead()) {
            QSize size = reader.size();
            size.scale(entry.iconSize, entry.iconSize, Qt::KeepAspectRatio);
            reader.setScaledSize(size);
            const QImage image = reader.read();
            if (!image.isNull())
                return QIcon(QPixmap::fromImage(image));
        }
        return typeIcon(QFileInfo(entry.iconSource).suffix().toLower());
    }
    case MenuEntry::IconKind::None:
        break;
    }
    return QIcon();
}

void MenuRenderer::render(QMenu *menu, const MenuEntry &entry)
{
    menu->clear();
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
