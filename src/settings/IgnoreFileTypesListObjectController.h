#pragma once

#include "ListObjectController.h"

// The place of a list of file types to ignore. Brevano does not ignore items by
// type: the list stays empty, says so, and its buttons do nothing.
class IgnoreFileTypesListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    explicit IgnoreFileTypesListObjectController(QWidget *parent = nullptr);
};
