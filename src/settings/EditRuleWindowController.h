#pragma once

#include "SingleInstance.h"

#include <QDialog>

#include <memory>

class NotificationCenter;
namespace Ui {
class Rule;
}

// The rule editor: a name and a grid. Rules are not kept in this version:
// Save only tells the layout views that an item changed, and closes.
class EditRuleWindowController : public QDialog, public SingleInstance<EditRuleWindowController>
{
    Q_OBJECT
public:
    explicit EditRuleWindowController(NotificationCenter &notifications, QWidget *parent = nullptr);
    ~EditRuleWindowController() override;

    void pressedSave();
    void pressedCancel();

private:
    std::unique_ptr<Ui::Rule> m_ui;
    NotificationCenter &m_notifications;
};
