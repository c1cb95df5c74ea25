#pragma once

#include <QString>

// A byte count as people read it: "Unknown" for 0, then bytes up to 1024, then
// KB, MB and GB in binary units with one decimal.
class SizeText
{
public:
    static QString format(quint64 bytes);
};
