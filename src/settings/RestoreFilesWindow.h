#pragma once

#include "RestoreFilesModel.h"
#include "SingleInstance.h"

#include <QDialog>
#include <QPointer>

class QCheckBox;
class QListWidget;

// Lists the items directly in the Shadow Desktop with a tick each, and puts the
// ticked ones back on the Desktop, optionally on the ignore list too. One at a
// time: closed with the title bar's control it stays as it was, to come back.
class RestoreFilesWindow : public QDialog, public SingleInstance<RestoreFilesWindow>
{
    Q_OBJECT
public:
    RestoreFilesWindow(Brevano &engine, QWidget *parent = nullptr);

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

    RestoreFilesModel m_model;
    QListWidget *m_list;
    QCheckBox *m_ignoreButton;
};
