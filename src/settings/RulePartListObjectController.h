#pragma once

#include "ListObjectController.h"

// The list of a rule's filters or of its actions. Rules keep neither in this
// version: the list stays empty, welcomes drops of its own type without taking
// anything, and Remove does nothing; Add opens the subclass's editor.
class RulePartListObjectController : public ListObjectController
{
    Q_OBJECT
protected:
    // noun names a row ("Filter"); dropType is the type of its drags.
    RulePartListObjectController(const QString &noun, const QString &dropType,
                                 QWidget *parent = nullptr);
};
