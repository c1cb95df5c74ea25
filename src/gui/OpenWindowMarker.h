#pragma once

#include <QPointer>

// Remembers the one open window of a kind, so that its openers bring that one
// forward instead of opening another.
template <typename Window> class OpenWindowMarker
{
public:
    void set(Window *window) { m_window = window; }
    void clear() { m_window.clear(); }
    bool isOpen() const { return !m_window.isNull(); }
    Window *window() const { return m_window; }
    void bringToFront() const
    {
        if (m_window) {
            m_window->show();
            m_window->raise();
            m_window->activateWindow();
        }
    }

private:
    QPointer<Window> m_window;
};
