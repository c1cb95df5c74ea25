#include "ActionListObjectController.h"

#include "SelectActionWindowController.h"

ActionListObjectController::ActionListObjectController(QWidget *parent)
    : RulePartListObjectController(QStringLiteral("Action"), DropType, parent)
{
}

void ActionListObjectController::pressedAdd()
{
    SelectActionWindowController::runModal(this);
}
