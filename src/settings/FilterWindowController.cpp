#include "FilterWindowController.h"

#include "ui_Filter.h"

FilterWindowController::FilterWindowController(QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::Filter>())
{
    m_ui->setupUi(this);
    connect(m_ui->buttonCancel, &QPushButton::clicked, this,
            &FilterWindowController::pressedCancel);
    markOpen(this);
}

FilterWindowController::~FilterWindowController() = default;

void FilterWindowController::pressedCancel()
{
    clearOpen();
    reject();
}
