#pragma once

#include "RestoreFilesModel.h"

#include <QDialog>
#include <QPointer>

class QCheckBox;
class QListWidget;

// Lists the items directly in the Shadow Desktop with a tick each, and puts the
// ticked ones back on the Desktop, optionally on the ignore list too. One at a
// time: closed with the title bar's control it stays as it was, to come back.
class RestoreFilesWindow : public QDialog
{
    Q_OBJECT
public:
    RestoreFilesWindow(Brevano &engine, QWidget *parent = nullptr);

    static bool isOpen() { return !s_open.isNull(); }
    static void bringToFront();
    static RestoreFilesWindow *openInstance() { return s_open; }

    void pressedCheckAll();
    void pressedUncheckAll();
    void pressedRestore();
    void pressedCancel();
    QCheckBox *ignoreButton() const { return m_ignoreButton; }
    QListWidget *list() const { return m_list; }

private:
    void reload();
    // The list's selection is the ticks; this hands them to the model.
    void takeTicks();

    static QPointer<RestoreFilesWindow> s_open;
    RestoreFilesModel m_model;
    QListWidget *m_list;
    QCheckBox *m_ignoreButton;
};
