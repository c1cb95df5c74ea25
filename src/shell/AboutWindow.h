#pragma once

#include <QDialog>

// Name, version and credits.
class AboutWindow : public QDialog
{
    Q_OBJECT
public:
    explicit AboutWindow(QWidget *parent = nullptr);
};
