#pragma once

#include <QString>

// The web and mail addresses the menu opens, in one place.
struct ProductLinks
{
    static inline const QString UserGuide = QStringLiteral("https://brevano.org/guide");
    static inline const QString Support = QStringLiteral("https://brevano.org/support");
    static inline const QString Review = QStringLiteral("https://brevano.org/review");
    static inline const QString Releases = QStringLiteral("https://brevano.org/releases");
    static inline const QString SupportMail = QStringLiteral("support@brevano.org");
};
