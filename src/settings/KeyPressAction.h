#pragma once

#include <QObject>

#include <functional>

// Runs an action when a key is pressed, without modifiers, in a widget that
// has the focus, before the widget itself sees the key.
class KeyPressAction : public QObject
{
public:
    KeyPressAction(QWidget *widget, int key, std::function<void()> action);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_key;
    std::function<void()> m_action;
};
