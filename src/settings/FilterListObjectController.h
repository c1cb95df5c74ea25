#pragma once

#include "ListObjectController.h"

// The filters of a rule. There are none in this version: the list stays empty;
// Add opens the filter editor.
class FilterListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    static inline const QString DropType = QStringLiteral("KVFilter");

    explicit FilterListObjectController(QWidget *parent = nullptr);

    void pressedAdd() override;
};
