#include "FilterListObjectController.h"

#include "FilterWindowController.h"

FilterListObjectController::FilterListObjectController(QWidget *parent)
    : RulePartListObjectController(QStringLiteral("Filter"), DropType, parent)
{
}

void FilterListObjectController::pressedAdd()
{
    FilterWindowController::runModal(this);
}
