#include "ModifiedDateFilter.h"

#include <array>

bool ModifiedDateFilter::passes(quint32 filter, const std::optional<QDateTime> &modified,
                                const QDateTime &now)
{
    if (!modified || filter == 0)
        return true;
    struct Period
    {
        qint64 count;
        Calendar::Unit unit;
    };
    static constexpr std::array<Period, 8> periods{{{1, Calendar::Unit::Day},
                                                    {7, Calendar::Unit::Day},
                                                    {14, Calendar::Unit::Day},
                                                    {1, Calendar::Unit::Month},
                                                    {2, Calendar::Unit::Month},
                                                    {3, Calendar::Unit::Month},
                                                    {6, Calendar::Unit::Month},
                                                    {1, Calendar::Unit::Year}}};
    const QDateTime limit =
        filter <= periods.size()
            ? Calendar::add(*modified, periods[filter - 1].count, periods[filter - 1].unit)
            : *modified;
    return !(limit < now);
}
