#include "KeyPressAction.h"

#include <QKeyEvent>
#include <QWidget>

KeyPressAction::KeyPressAction(QWidget *widget, int key, std::function<void()> action)
    : QObject(widget), m_key(key), m_action(std::move(action))
{
    widget->installEventFilter(this);
}

bool KeyPressAction::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *press = static_cast<QKeyEvent *>(event);
        if (press->key() == m_key && press->modifiers() == Qt::NoModifier) {
            m_action();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}
