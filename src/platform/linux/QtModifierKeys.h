#pragma once

#include "ModifierKeys.h"

// The modifiers the window system reports right now; Option is Alt. Without a
// GUI application (the command line) nothing is held.
class QtModifierKeys : public ModifierKeys
{
public:
    bool isOptionPressed() const override;
};
