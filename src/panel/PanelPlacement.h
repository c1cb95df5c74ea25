#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

// Where the panel opens: under, above or beside the status item, away from the
// screen edge that holds the panel bar, with its arrow pointing at the item,
// and always wholly inside the screen's available area.
class PanelPlacement
{
public:
    static constexpr int kScreenMargin = 12;

    struct Result
    {
        QRect frame; // the window's frame, global coordinates
        Qt::Edge
            arrowEdge;     // the window edge the arrow sits on (Top: the panel hangs below the bar)
        int arrowPosition; // the arrow's tip along that edge, in window coordinates
    };

    // statusRect: the status item in global coordinates (an XEmbed tray's icon
    // geometry), or a 1x1 rectangle at the pointer where the host gives none.
    // screen / available: the screen's geometry and its available geometry
    // (which leaves out the panel bars).
    static Result place(const QRect &statusRect, const QSize &panelSize, const QRect &screen,
                        const QRect &available);
    // The arrow's tip along an edge of the given length, clear of the rounded corners.
    static int arrowInside(int position, int edgeLength);
    // The screen edge the panel bar sits on for an item at statusRect.
    static Qt::Edge barEdge(const QRect &statusRect, const QRect &screen, const QRect &available);
};
