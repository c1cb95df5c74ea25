#pragma once

#include "ListObjectController.h"

// The actions of a rule. There are none in this version: the list stays
// empty; Add opens the action chooser.
class ActionListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    static inline const QString DropType = QStringLiteral("KVAction");

    explicit ActionListObjectController(QWidget *parent = nullptr);

    void pressedAdd() override;
};
