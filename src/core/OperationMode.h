#pragma once

#include <QString>

// How a tidy works ("OperationMode"): the basic mode tidies the Desktop; any
// other value stands for rule-based tidying, which this version does not have,
// so then no tidy moves anything. Every place that shows the mode says so in
// the same words.
class OperationMode
{
public:
    static constexpr quint32 Basic = 0;
    static constexpr quint32 Advanced = 1;

    static bool tidies(quint32 mode) { return mode == Basic; }
    static QString nothingMovesNote()
    {
        return QStringLiteral("Advanced mode is chosen: rule-based tidying is not available in "
                              "this version, so no tidy moves anything. Choose Basic mode in "
                              "Preferences to tidy the Desktop again.");
    }
};
