#pragma once

#include <QString>

// Escapes text for XML 1.0 so that a conforming reader gives back the same
// characters: markup characters and carriage returns (and in attributes, tabs
// and line feeds) become references; characters XML cannot carry become U+FFFD.
class XmlEscape
{
public:
    static void appendText(QString &out, QStringView text);
    static void appendAttribute(QString &out, QStringView value);
};
