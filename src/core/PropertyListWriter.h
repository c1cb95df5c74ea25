#pragma once

#include "PropertyValue.h"

#include <QByteArray>

#include <optional>

// Writes the XML property-list format (version 1.0) so that PropertyListReader
// reads back the same tree. Text that XML 1.0 cannot carry (control characters
// other than tab, line feed and carriage return) is written as U+FFFD.
class PropertyListWriter
{
public:
    static constexpr int kMaxDepth = 512;

    // Nothing when the tree is deeper than kMaxDepth (which only a cycle makes).
    static std::optional<QByteArray> write(const PropertyValue &root);
};
