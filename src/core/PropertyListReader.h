#pragma once

#include "PropertyValue.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Reads the XML property-list format (version 1.0). Elements it does not know
// are kept as UnknownElement so that a round trip loses nothing. Input size and
// nesting depth are bounded so that no file can exhaust memory or the stack.
class PropertyListReader
{
public:
    static constexpr qsizetype kDefaultMaxBytes = 32 * 1024 * 1024;
    static constexpr int kDefaultMaxDepth = 128;

    PropertyListReader(qsizetype maxBytes = kDefaultMaxBytes, int maxDepth = kDefaultMaxDepth)
        : m_maxBytes(maxBytes), m_maxDepth(maxDepth)
    {
    }

    // The root value, or nothing with errorString() telling why.
    std::optional<PropertyValue> read(const QByteArray &xml);
    QString errorString() const { return m_error; }

private:
    qsizetype m_maxBytes;
    int m_maxDepth;
    QString m_error;
};
