#pragma once

#include <QIcon>
#include <QString>

// The status item's artwork by resource name ("statusIcon.png", ...), drawn
// from its SVG source at every size a panel may ask for.
class StatusIcons
{
public:
    static QIcon icon(const QString &name);
};
