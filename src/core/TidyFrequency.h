#pragma once

#include "Calendar.h"

#include <QString>

#include <optional>

// The "TidyFrequency" index: 0 to 8 stand for 1, 5, 10, 30 minutes, 1, 3, 8
// hours, 1 and 7 days; any other index has no period.
class TidyFrequency
{
public:
    struct Period
    {
        qint64 count;
        Calendar::Unit unit;
    };

    static QString intervalText(quint32 index);
    static std::optional<Period> period(quint32 index);
    // date plus the index's period, or date itself when it has none.
    static QDateTime addPeriod(const QDateTime &date, quint32 index);
};
