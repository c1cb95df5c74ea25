#pragma once

#include <QDateTime>

// Date arithmetic in the user's calendar and time zone: a day is a calendar day
// (23 or 25 hours across a daylight-saving change) and a month added to
// 31 January ends on the last day of February.
class Calendar
{
public:
    enum class Unit
    {
        Minute,
        Hour,
        Day,
        Week,
        Month,
        Year
    };

    // Counts beyond about a million years saturate far in the past or future.
    static QDateTime add(const QDateTime &date, qint64 count, Unit unit);
};
