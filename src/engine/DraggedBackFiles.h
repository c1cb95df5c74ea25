#pragma once

#include "AlertPresenter.h"

#include <QStringList>

// Items dragged out of the Shadow Desktop that came to lie on the Desktop: the
// next tidy would take them straight back, so the user is offered to have
// them ignored.
class DraggedBackFiles
{
public:
    // The Desktop entries named like any dragged item, when the Desktop now
    // holds more entries than the count taken as the drag began; none when it
    // does not. By name only: an item of that name that was there before counts.
    static QStringList find(const QStringList &draggedPaths, qsizetype desktopCountBefore,
                            const QStringList &desktopEntries);
    // "Yes" (0) ignores them; "No" or no answer leaves the ignore list alone.
    static Alert question(qsizetype count);
};
