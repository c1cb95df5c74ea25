#include "SizeText.h"

#include <charconv>

// "%.1f" of value as the C locale writes it, with a "." whatever the user's
// locale (printf follows LC_NUMERIC, which QCoreApplication sets from the
// environment); halves round as printf rounds them.
static QString oneDecimal(double value, QLatin1StringView unit)
{
    char text[64];
    const auto written =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 1);
    return QString::fromLatin1(text, written.ptr - text) + u' ' + unit;
}

QString SizeText::format(quint64 bytes)
{
    if (bytes == 0)
        return QStringLiteral("Unknown");
    if (bytes <= 1024)
        return QString::number(bytes) + QStringLiteral(" bytes");
    if (bytes <= 1048576)
        return oneDecimal(double(bytes) / 1024, QLatin1StringView("KB"));
    if (bytes <= 1073741824)
        return oneDecimal(double(bytes) / 1048576, QLatin1StringView("MB"));
    return oneDecimal(double(bytes) / 1073741824, QLatin1StringView("GB"));
}
