#pragma once

#include <QDialog>

// Shown in the running Brevano when it is started again: what it does and where
// to find it, with a button to reveal the Shadow Desktop. Links open in the web
// browser, not in the window.
class AlreadyRunningWindow : public QDialog
{
    Q_OBJECT
public:
    explicit AlreadyRunningWindow(QWidget *parent = nullptr);

signals:
    void revealShadowDesktop();
};
