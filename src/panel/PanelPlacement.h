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
    // A popover about a row: how far in from the row's edge, and from the panel's.
    static constexpr int kPopoverInset = 25;
    static constexpr int kPopoverMargin = 4;

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
    // A popover of the given size beside a row, in screen coordinates: its left
    // edge kPopoverInset past the row's right edge, level with the row's middle.
    // The row runs the panel's width, so that is beside the panel. Where the
    // screen has no room on that side it goes as far left of the row, and where
    // neither side has room, on the roomier one; it is moved only as far as it
    // must to lie wholly on `available` (the screen less its panel bars).
    static QRect popoverBesideRow(const QRect &row, const QSize &size, const QRect &available);
};
