#pragma once

#include <QDialog>

class NotificationCenter;

// Shown in the running Brevano when it is started again: what it does and where
// to find it, with buttons to reveal the Shadow Desktop and open Preferences. Links open in the web
// browser, not in the window.
class AlreadyRunningWindow : public QDialog
{
    Q_OBJECT
public:
    explicit AlreadyRunningWindow(NotificationCenter &notifications, QWidget *parent = nullptr);

signals:
    void revealShadowDesktop();
};
