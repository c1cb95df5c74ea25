#include "SizeText.h"

#include <cstdio>

QString SizeText::format(quint64 bytes)
{
    char text[64];
    if (bytes == 0)
        return QStringLiteral("Unknown");
    if (bytes <= 1024)
        std::snprintf(text, sizeof text, "%llu bytes", static_cast<unsigned long long>(bytes));
    else if (bytes <= 1048576)
        std::snprintf(text, sizeof text, "%.1f KB", double(bytes) / 1024);
    else if (bytes <= 1073741824)
        std::snprintf(text, sizeof text, "%.1f MB", double(bytes) / 1048576);
    else
        std::snprintf(text, sizeof text, "%.1f GB", double(bytes) / 1073741824);
    return QString::fromLatin1(text);
}
