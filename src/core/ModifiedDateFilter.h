#pragma once

#include "Calendar.h"

#include <QDateTime>

// The status menu's "ModifiedDateFilter": 0 no filter; 1, 7, 14 days; 1, 2, 3, 6
// months; 1 year. Larger values have an empty period.
class ModifiedDateFilter
{
public:
    // An item passes unless its modification date plus the period is strictly
    // earlier than now; with no date to read it passes.
    static bool passes(quint32 filter, const std::optional<QDateTime> &modified,
                       const QDateTime &now);
};
