#pragma once

#include <QDialog>

// Said when no panel shows tray icons: Brevano keeps tidying, and how to get one.
class NoTrayWindow : public QDialog
{
    Q_OBJECT
public:
    explicit NoTrayWindow(QWidget *parent = nullptr);
};
