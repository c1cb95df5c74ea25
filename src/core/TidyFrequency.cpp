#include "TidyFrequency.h"

#include <array>

namespace {
struct Entry
{
    const char16_t *text;
    TidyFrequency::Period period;
};

using Unit = Calendar::Unit;
// The texts stay as written, "1 days" included.
constexpr std::array<Entry, 9> kFrequencies{{
    {u"1 min", {1, Unit::Minute}},
    {u"5 mins", {5, Unit::Minute}},
    {u"10 mins", {10, Unit::Minute}},
    {u"30 mins", {30, Unit::Minute}},
    {u"1 hour", {1, Unit::Hour}},
    {u"3 hours", {3, Unit::Hour}},
    {u"8 hours", {8, Unit::Hour}},
    {u"1 days", {1, Unit::Day}},
    {u"7 days", {7, Unit::Day}},
}};
} // namespace

QString TidyFrequency::intervalText(quint32 index)
{
    return index < kFrequencies.size() ? QString::fromUtf16(kFrequencies[index].text)
                                       : QStringLiteral("Never");
}

std::optional<TidyFrequency::Period> TidyFrequency::period(quint32 index)
{
    if (index >= kFrequencies.size())
        return std::nullopt;
    return kFrequencies[index].period;
}

QDateTime TidyFrequency::addPeriod(const QDateTime &date, quint32 index)
{
    const auto found = period(index);
    return found ? Calendar::add(date, found->count, found->unit) : date;
}
