#pragma once

// The keyboard modifiers held right now (not those of an event).
class ModifierKeys
{
public:
    virtual ~ModifierKeys() = default;
    virtual bool isOptionPressed() const = 0; // Alt on a PC keyboard
};

// Where no keyboard can be asked (the command line), nothing is held.
class NoModifierKeys : public ModifierKeys
{
public:
    bool isOptionPressed() const override { return false; }
};
