#include "SystemInfo.h"

#include <QOperatingSystemVersion>
#include <QRegularExpression>
#include <QSysInfo>

QString SystemInfo::osVersion()
{
    const QOperatingSystemVersion os = QOperatingSystemVersion::current();
    if (os.type() != QOperatingSystemVersion::Unknown && os.majorVersion() >= 0 &&
        os.minorVersion() >= 0 && os.microVersion() >= 0)
        return QStringLiteral("%1.%2.%3")
            .arg(os.majorVersion())
            .arg(os.minorVersion())
            .arg(os.microVersion());
    static const QRegularExpression threeNumbers(QStringLiteral("^(\\d+)\\.(\\d+)\\.(\\d+)"));
    const auto match = threeNumbers.match(QSysInfo::kernelVersion());
    if (!match.hasMatch())
        return QString();
    return QStringLiteral("%1.%2.%3")
        .arg(match.captured(1).toInt())
        .arg(match.captured(2).toInt())
        .arg(match.captured(3).toInt());
}
