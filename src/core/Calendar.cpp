#include "Calendar.h"

#include <QTimeZone>

#include <array>

namespace {
// About a million years in each unit: far inside QDate's range, far beyond any
// date a file carries. Counts past it saturate instead of wrapping around.
constexpr std::array<qint64, 6> kLimits{
    qint64(1'000'000) * 366 * 24 * 60, // minutes
    qint64(1'000'000) * 366 * 24,      // hours
    qint64(1'000'000) * 366,           // days
    qint64(1'000'000) * 53,            // weeks
    qint64(1'000'000) * 12,            // months
    qint64(1'000'000),                 // years
};

QDateTime saturated(qint64 count)
{
    return count > 0 ? QDateTime(QDate(1'000'000, 12, 31), QTime(23, 59, 59), QTimeZone::utc())
                     : QDateTime(QDate(-1'000'000, 1, 1), QTime(0, 0), QTimeZone::utc());
}
} // namespace

QDateTime Calendar::add(const QDateTime &date, qint64 count, Unit unit)
{
    if (count > kLimits[size_t(unit)] || count < -kLimits[size_t(unit)])
        return saturated(count);
    const QDateTime local = date.toLocalTime();
    QDateTime result;
    switch (unit) {
    case Unit::Minute:
        result = local.addSecs(count * 60);
        break;
    case Unit::Hour:
        result = local.addSecs(count * 3600);
        break;
    case Unit::Day:
        result = local.addDays(count);
        break;
    case Unit::Week:
        result = local.addDays(count * 7);
        break;
    case Unit::Month:
        result = local.addMonths(int(count));
        break;
    case Unit::Year:
        result = local.addYears(int(count));
        break;
    }
    if (!result.isValid())
        return count == 0 ? date : saturated(count);
    return result.toUTC();
}
