#pragma once

#include "SingleInstance.h"

#include <QDialog>

#include <memory>

namespace Ui {
class SelectAction;
}

// The action chooser. There are no actions in this version: the list is
// empty, Cancel is off and says why, Select and Done close.
class SelectActionWindowController : public QDialog,
                                     public SingleInstance<SelectActionWindowController>
{
    Q_OBJECT
public:
    explicit SelectActionWindowController(QWidget *parent = nullptr);
    ~SelectActionWindowController() override;

    void pressedSelect();
    void pressedDone();

private:
    std::unique_ptr<Ui::SelectAction> m_ui;
};
