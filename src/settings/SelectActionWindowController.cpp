#include "SelectActionWindowController.h"

#include "ui_SelectAction.h"

SelectActionWindowController::SelectActionWindowController(QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::SelectAction>())
{
    m_ui->setupUi(this);
    connect(m_ui->actionList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] {
                m_ui->buttonSelect->setEnabled(m_ui->actionList->selectionModel()->hasSelection());
            });
    connect(m_ui->buttonSelect, &QPushButton::clicked, this,
            &SelectActionWindowController::pressedSelect);
    connect(m_ui->buttonDone, &QPushButton::clicked, this,
            &SelectActionWindowController::pressedDone);
    markOpen(this);
}

SelectActionWindowController::~SelectActionWindowController() = default;

void SelectActionWindowController::pressedSelect()
{
    accept();
}

void SelectActionWindowController::pressedDone()
{
    clearOpen();
    accept();
}
