#pragma once

#include <QPointer>
#include <QWidget>

// One open window of a kind at a time: the window marks itself open when it is
// made, and openers bring that one forward instead of making another. The mark
// goes with the window, or earlier when the window clears it.
template <class Window> class SingleInstance
{
public:
    static bool isOpen() { return !s_open.isNull(); }
    static Window *openInstance() { return s_open; }
    static void bringToFront()
    {
        if (s_open)
            showInFront(s_open);
    }
    // Brings the open window forward, or shows the new one that make() returns.
    template <class Make> static void openOrBringToFront(Make make)
    {
        if (isOpen())
            bringToFront();
        else
            showInFront(make());
    }
    static void showInFront(QWidget *window)
    {
        window->show();
        window->raise();
        window->activateWindow();
    }
    // Runs a new window modally, made from args, unless one is open already,
    // which then comes forward instead.
    template <class... Args> static void runModal(Args &&...args)
    {
        if (isOpen()) {
            bringToFront();
            return;
        }
        Window window(std::forward<Args>(args)...);
        window.exec();
    }

protected:
    void markOpen(Window *window) { s_open = window; }
    void clearOpen() { s_open.clear(); }

private:
    static inline QPointer<Window> s_open;
};
