#pragma once

#include "RulePartListObjectController.h"

// A rule's filters, none in this version; Add opens the filter editor.
class FilterListObjectController : public RulePartListObjectController
{
    Q_OBJECT
public:
    static inline const QString DropType = QStringLiteral("KVFilter");

    explicit FilterListObjectController(QWidget *parent = nullptr);

    void pressedAdd() override;
};
