#pragma once

#include "RulePartListObjectController.h"

// A rule's actions, none in this version; Add opens the action chooser.
class ActionListObjectController : public RulePartListObjectController
{
    Q_OBJECT
public:
    static inline const QString DropType = QStringLiteral("KVAction");

    explicit ActionListObjectController(QWidget *parent = nullptr);

    void pressedAdd() override;
};
