#include "MenuRenderer.h"

#include "AlternateItemWidget.h"
#include "FileTypeIcons.h"

#include <QActionEvent>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIconEngine>
#include <QImage>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSet>
#include <QStyle>
#include <QWidgetAction>
#include <QtMath>

namespace {

// A submenu's entry, kept on the menu until it is first shown.
const char *const kPendingEntry = "pendingEntry";

// The alternates of one entry; each made into an action the first time it is asked for.
struct Alternates
{
    std::vector<MenuEntryPointer> entries;
    std::vector<QPointer<QAction>> actions;
};

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
    return FileTypeIcons::shared().forExtension(extension);
}

QString extensionOf(const QString &path)
{
    return QFileInfo(path).suffix().toLower();
}

// A file's preview on its rows: the type icon until the picture is in, then the
// picture. The rows share one, so the picture needs no change to the actions
// (each would make an open menu lay itself out anew), only a repaint.
class PreviewIconEngine : public QIconEngine
{
public:
    PreviewIconEngine(QIcon typeIcon, std::shared_ptr<const QPixmap> picture)
        : m_typeIcon(std::move(typeIcon)), m_picture(std::move(picture))
    {
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        if (m_picture->isNull())
            return m_typeIcon.pixmap(size, mode, state);
        if (m_picture->width() <= size.width() && m_picture->height() <= size.height())
            return *m_picture;
        return m_picture->scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const QPixmap shown = pixmap(rect.size(), mode, state);
        QRect target(QPoint(), shown.size().boundedTo(rect.size()));
        target.moveCenter(rect.center());
        painter->drawPixmap(target, shown);
    }
    QIconEngine *clone() const override { return new PreviewIconEngine(m_typeIcon, m_picture); }

private:
    QIcon m_typeIcon;
    std::shared_ptr<const QPixmap> m_picture;
};

// Holds back the ActionChanged events of an open menu while many of its actions
// change, and passes on one at the end: an open menu lays itself out anew on each.
class ActionChangeBatch : public QObject
{
public:
    explicit ActionChangeBatch(QMenu *menu) : m_menu(menu)
    {
        if (menu->isVisible())
            menu->installEventFilter(this);
    }
    ~ActionChangeBatch() override
    {
        m_menu->removeEventFilter(this);
        if (m_held) {
            QActionEvent event(QEvent::ActionChanged, m_held);
            QCoreApplication::sendEvent(m_menu, &event);
        }
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::ActionChanged)
            return false;
        m_held = static_cast<QActionEvent *>(event)->action();
        return true;
    }

private:
    QMenu *m_menu;
    QPointer<QAction> m_held;
};

// An alternate entry: its first word coloured, which only a widget can show.
// Alternates are made the first time their key is held (widgets make menus of
// thousands of entries slow to build and to tear down).
class AlternateAction : public QWidgetAction
{
public:
    AlternateAction(const QColor &firstWordColor, QMenu *menu)
        : QWidgetAction(menu), m_firstWordColor(firstWordColor)
    {
        // A menu leaves the widget of an action it hides where it was, over other entries.
        connect(this, &QAction::changed, this, [this] {
            for (QWidget *widget : createdWidgets())
                widget->setVisible(isVisible());
        });
    }
    void updateIcon()
    {
        for (QWidget *widget : createdWidgets())
            static_cast<AlternateItemWidget *>(widget)->setIcon(icon());
    }

protected:
    QWidget *createWidget(QWidget *parent) override
    {
        auto *item = new AlternateItemWidget(icon(), text(), m_firstWordColor, parent);
        item->setToolTip(toolTip());
        item->setVisible(isVisible());
        connect(item, &AlternateItemWidget::activated, this, [this, parent] {
            // Close the whole menu, as choosing any entry does, then act.
            QWidget *top = parent;
            while (qobject_cast<QMenu *>(top->parentWidget()))
                top = top->parentWidget();
            top->hide();
            trigger();
        });
        return item;
    }

private:
    QColor m_firstWordColor;
};
} // namespace

Q_DECLARE_METATYPE(std::shared_ptr<Alternates>)

MenuRenderer::MenuRenderer(Chosen chosen, QObject *parent)
    : QObject(parent), m_chosen(std::move(chosen))
{
}

QIcon MenuRenderer::iconFor(const MenuEntry &entry)
{
    switch (entry.iconKind) {
    case MenuEntry::IconKind::ForPath: {
        static const QFileIconProvider provider;
        return provider.icon(QFileInfo(entry.iconSource));
    }
    case MenuEntry::IconKind::ForExtension:
        return typeIcon(entry.iconSource);
    case MenuEntry::IconKind::Preview: // the renderer's own, which the picture replaces
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

QIcon MenuRenderer::previewIcon(const QString &path)
{
    Preview &preview = m_previews[path];
    if (preview.icon.isNull()) {
        preview.picture = std::make_shared<QPixmap>();
        preview.icon = QIcon(new PreviewIconEngine(typeIcon(extensionOf(path)), preview.picture));
    }
    return preview.icon;
}

void MenuRenderer::setPreview(const QString &path, const QImage &image)
{
    previewIcon(path);
    Preview &preview = m_previews[path];
    *preview.picture = QPixmap::fromImage(image);
    for (const QPointer<QAction> &row : std::as_const(preview.rows)) {
        if (!row)
            continue;
        for (QObject *shownIn : row->associatedObjects()) {
            if (auto *menu = qobject_cast<QMenu *>(shownIn); menu && menu->isVisible())
                menu->update();
        }
        if (auto *alternate = dynamic_cast<AlternateAction *>(row.data()))
            alternate->updateIcon();
    }
}

void MenuRenderer::render(QMenu *menu, const MenuEntry &entry)
{
    clear(menu);
    fill(menu, entry);
}

void MenuRenderer::renderWhenShown(QMenu *menu, const MenuEntryPointer &entry)
{
    clear(menu);
    menu->setProperty(kPendingEntry, QVariant::fromValue(entry));
    watch(menu);
}

void MenuRenderer::clear(QMenu *menu)
{
    // clear() leaves the submenus of the last rendering alive: they are the menu's children.
    for (QAction *action : menu->actions()) {
        if (QMenu *submenu = action->menu(); submenu && submenu->parent() == menu)
            delete submenu;
    }
    menu->clear();
    menu->setProperty(kPendingEntry, QVariant());
    menu->setToolTipsVisible(true);
}

void MenuRenderer::fill(QMenu *menu, const MenuEntry &entry)
{
    // Each action is complete before the menu sees it: every change after that is
    // an event to the menu, and menus here hold thousands of actions. Alternates
    // wait, with the entry they stand in for, until their key is held.
    QList<QAction *> actions;
    actions.reserve(qsizetype(entry.submenu.size()));
    std::shared_ptr<Alternates> alternates;
    for (const MenuEntryPointer &child : entry.submenu) {
        if (child->modifier != MenuEntry::Modifier::None && alternates) {
            alternates->entries.push_back(child);
            alternates->actions.emplace_back();
            continue;
        }
        QAction *action = makeAction(menu, child);
        alternates.reset();
        if (child->kind == MenuEntry::Kind::Item) {
            alternates = std::make_shared<Alternates>();
            action->setData(QVariant::fromValue(alternates));
        }
        actions.append(action);
    }
    menu->addActions(actions);
    watch(menu);
    applyModifiers(menu, QGuiApplication::queryKeyboardModifiers());
}

void MenuRenderer::watch(QMenu *menu)
{
    menu->installEventFilter(this);
    connect(menu, &QMenu::aboutToShow, this, &MenuRenderer::menuAboutToShow, Qt::UniqueConnection);
}

void MenuRenderer::menuAboutToShow()
{
    auto *menu = qobject_cast<QMenu *>(sender());
    if (!menu)
        return;
    if (const auto pending = menu->property(kPendingEntry).value<MenuEntryPointer>()) {
        menu->setProperty(kPendingEntry, QVariant());
        fill(menu, *pending);
    } else {
        applyModifiers(menu, QGuiApplication::queryKeyboardModifiers());
    }
}

QAction *MenuRenderer::makeAction(QMenu *menu, const MenuEntryPointer &pointer)
{
    const MenuEntry &entry = *pointer;
    QAction *action = nullptr;
    switch (entry.kind) {
    case MenuEntry::Kind::Separator:
        action = new QAction(menu);
        action->setSeparator(true);
        return action;
    case MenuEntry::Kind::Header:
    case MenuEntry::Kind::Message:
        action = new QAction(entry.title, menu);
        action->setEnabled(false);
        action->setToolTip(entry.toolTip);
        return action;
    case MenuEntry::Kind::Item:
        break;
    }
    if (entry.hasSubmenu && entry.modifier == MenuEntry::Modifier::None) {
        auto *submenu = new QMenu(entry.title, menu);
        submenu->setIcon(iconFor(entry));
        renderWhenShown(submenu, pointer);
        action = submenu->menuAction();
    } else if (entry.modifier != MenuEntry::Modifier::None) {
        // The first word coloured: Reveal grey, Delete light red, Restore grey-green.
        static const QHash<MenuEntry::Modifier, QColor> colours{
            {MenuEntry::Modifier::Option, QColor::fromRgbF(0.5f, 0.5f, 0.5f)},
            {MenuEntry::Modifier::Shift, QColor::fromRgbF(1.0f, 0.5f, 0.5f)},
            {MenuEntry::Modifier::Control, QColor::fromRgbF(0.5f, 0.6f, 0.5f)}};
        action = new AlternateAction(colours.value(entry.modifier), menu);
        action->setIcon(iconFor(entry));
        action->setText(entry.title);
    } else {
        action = new QAction(iconFor(entry), entry.title, menu);
    }
    if (!action->menu()) {
        const int tag = entry.tag;
        const QString path = entry.path;
        connect(action, &QAction::triggered, this, [this, tag, path] { m_chosen(tag, path); });
    }
    if (entry.iconKind == MenuEntry::IconKind::Preview) {
        action->setIcon(previewIcon(entry.iconSource));
        m_previews[entry.iconSource].rows.append(action);
    }
    action->setToolTip(entry.path);
    action->setEnabled(entry.enabled);
    return action;
}

void MenuRenderer::applyModifiers(QMenu *menu, Qt::KeyboardModifiers modifiers)
{
    modifiers &= Qt::AltModifier | Qt::ShiftModifier | Qt::ControlModifier;
    const ActionChangeBatch batch(menu);
    const QList<QAction *> actions = menu->actions();
    for (qsizetype i = 0; i < actions.size(); ++i) {
        QAction *entry = actions[i];
        const auto alternates = entry->data().value<std::shared_ptr<Alternates>>();
        if (!alternates)
            continue;
        QAction *shown = entry;
        for (size_t j = 0; j < alternates->entries.size(); ++j) {
            if (modifierKeys(alternates->entries[j]->modifier) != modifiers)
                continue;
            if (!alternates->actions[j]) {
                alternates->actions[j] = makeAction(menu, alternates->entries[j]);
                menu->insertAction(actions.value(i + 1), alternates->actions[j]);
            }
            shown = alternates->actions[j];
        }
        entry->setVisible(shown == entry);
        for (const QPointer<QAction> &alternate : alternates->actions) {
            if (alternate)
                alternate->setVisible(alternate == shown);
        }
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
            // Every open level of the menu follows the keys; the others do when they open.
            for (QMenu *menu = qobject_cast<QMenu *>(watched); menu;
                 menu = qobject_cast<QMenu *>(menu->parent()))
                applyModifiers(menu, held);
        }
    }
    return QObject::eventFilter(watched, event);
}
