#include "Calendar.h"

#include <algorithm>
#include <limits>

#include <QTimeZone>

QDateTime Calendar::add(const QDateTime &date, qint64 count, Unit unit)
{
    const QDateTime local = date.toLocalTime();
    // QDate spans about ±2^31 years; past that nothing is representable anyway.
    static constexpr qint64 kLimit = qint64(std::numeric_limits<int>::max());
    const auto clamped = [](qint64 value) { return int(std::clamp(value, -kLimit, kLimit)); };
    QDateTime result;
    switch (unit) {
    case Unit::Minute:
        result = local.addSecs(std::clamp(count, -kLimit, kLimit) * 60);
        break;
    case Unit::Hour:
        result = local.addSecs(std::clamp(count, -kLimit, kLimit) * 3600);
        break;
    case Unit::Day:
        result = local.addDays(std::clamp(count, -kLimit, kLimit));
        break;
    case Unit::Week:
        result = local.addDays(std::clamp(count, -kLimit / 7, kLimit / 7) * 7);
        break;
    case Unit::Month:
        result = local.addMonths(clamped(count));
        break;
    case Unit::Year:
        result = local.addYears(clamped(count));
        break;
    }
    if (!result.isValid() && count != 0) {
        return count > 0 ? QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59), QTimeZone::utc())
                         : QDateTime(QDate(-9999, 1, 1), QTime(0, 0), QTimeZone::utc());
    }
    return result.isValid() ? result.toUTC() : date;
}
