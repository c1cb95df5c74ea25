#include "EditRuleWindowController.h"

#include "NotificationCenter.h"

#include "ui_Rule.h"

EditRuleWindowController::EditRuleWindowController(NotificationCenter &notifications,
                                                   QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::Rule>()), m_notifications(notifications)
{
    m_ui->setupUi(this);
    connect(m_ui->buttonSave, &QPushButton::clicked, this, &EditRuleWindowController::pressedSave);
    connect(m_ui->buttonCancel, &QPushButton::clicked, this,
            &EditRuleWindowController::pressedCancel);
    markOpen(this);
}

EditRuleWindowController::~EditRuleWindowController() = default;

void EditRuleWindowController::pressedSave()
{
    clearOpen();
    accept();
    m_notifications.post(NotificationCenter::LayoutItemChanged);
}

void EditRuleWindowController::pressedCancel()
{
    clearOpen();
    reject();
}
