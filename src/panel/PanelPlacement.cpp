#include "PanelPlacement.h"

#include "PanelBackgroundView.h"

#include <QtMath>

#include <algorithm>

namespace {

// One axis of the available area: [start, end).
struct Span
{
    int start;
    int end;
};

// Moves a length-long stretch starting at position into span, margin pixels in
// from both ends where there is room for that; the length must fit the span.
int keepInside(int position, int length, Span span, int margin)
{
    const int room = span.end - span.start - length;
    margin = std::clamp(room / 2, 0, margin);
    position = std::min(position, span.end - margin - length);
    return std::max(position, span.start + margin);
}

} // namespace

int PanelPlacement::arrowInside(int position, int edgeLength)
{
    const int inset = PanelBackgroundView::kCornerRadius + PanelBackgroundView::kArrowWidth / 2;
    if (edgeLength < 2 * inset)
        return edgeLength / 2;
    return std::clamp(position, inset, edgeLength - inset);
}

Qt::Edge PanelPlacement::barEdge(const QRect &statusRect, const QRect &screen,
                                 const QRect &available)
{
    const QPointF centre = QRectF(statusRect).center();
    // The strips the bars take: where the available area is inset from the screen.
    const struct
    {
        Qt::Edge edge;
        int inset;
        bool holdsItem;
    } strips[] = {
        {Qt::TopEdge, available.top() - screen.top(), centre.y() < available.top()},
        {Qt::BottomEdge, screen.bottom() - available.bottom(),
         centre.y() > available.y() + available.height()},
        {Qt::LeftEdge, available.left() - screen.left(), centre.x() < available.left()},
        {Qt::RightEdge, screen.right() - available.right(),
         centre.x() > available.x() + available.width()},
    };
    for (const auto &strip : strips)
        if (strip.inset > 0 && strip.holdsItem)
            return strip.edge;
    // A bar elsewhere on the screen (the pointer may sit just off it).
    const auto inset = [](const auto &strip) {
        return strip.inset > 0;
    };
    if (std::count_if(std::begin(strips), std::end(strips), inset) == 1)
        return std::find_if(std::begin(strips), std::end(strips), inset)->edge;

    // No bar reserves space (it hides itself, or nothing sets struts). Bars
    // nearly always run along the top or the bottom, also where a tray sits in
    // a corner nearer a side: the panel opens on the side with more room.
    const QRectF area(screen);
    return centre.y() - area.top() <= area.bottom() - centre.y() ? Qt::TopEdge : Qt::BottomEdge;
}

PanelPlacement::Result PanelPlacement::place(const QRect &statusRect, const QSize &panelSize,
                                             const QRect &screen, const QRect &available)
{
    const Qt::Edge edge = barEdge(statusRect, screen, available);
    const QSize size = panelSize.boundedTo(available.size());
    const QPointF centre = QRectF(statusRect).center();
    const Span across{available.left(), available.left() + available.width()};
    const Span down{available.top(), available.top() + available.height()};

    QPoint origin;
    if (edge == Qt::TopEdge || edge == Qt::BottomEdge) {
        // Centred on the item, right edge at least the margin inside the area.
        origin.setX(keepInside(qRound(centre.x() - size.width() / 2.0), size.width(), across,
                               kScreenMargin));
        // The panel's top meets the item's bottom, or its bottom the item's top.
        const int y = edge == Qt::TopEdge
                          ? std::max(statusRect.y() + statusRect.height(), down.start)
                          : std::min(statusRect.y(), down.end) - size.height();
        origin.setY(keepInside(y, size.height(), down, 0));
    } else {
        const int x = edge == Qt::LeftEdge
                          ? std::max(statusRect.x() + statusRect.width(), across.start)
                          : std::min(statusRect.x(), across.end) - size.width();
        origin.setX(keepInside(x, size.width(), across, 0));
        origin.setY(keepInside(qRound(centre.y() - size.height() / 2.0), size.height(), down,
                               kScreenMargin));
    }

    const bool horizontal = edge == Qt::TopEdge || edge == Qt::BottomEdge;
    const int tip = horizontal ? qRound(centre.x()) - origin.x() : qRound(centre.y()) - origin.y();
    return {QRect(origin, size), edge, arrowInside(tip, horizontal ? size.width() : size.height())};
}

QRect PanelPlacement::popoverBesideRow(const QRect &row, const QSize &size, const QRect &available)
{
    const Span across{available.left(), available.left() + available.width()};
    const Span down{available.top(), available.top() + available.height()};
    const int rightEdge = row.left() + row.width() + kPopoverInset; // where one on the right starts
    const int leftEdge = row.left() - kPopoverInset;                // where one on the left ends
    const int roomRight = across.end - kPopoverMargin - rightEdge;
    const int roomLeft = leftEdge - across.start - kPopoverMargin;
    const bool right =
        roomRight >= size.width() || (roomLeft < size.width() && roomRight >= roomLeft);
    const int x = right ? rightEdge : leftEdge - size.width();
    const int y = row.top() + (row.height() - size.height()) / 2;
    return QRect(QPoint(keepInside(x, size.width(), across, kPopoverMargin),
                        keepInside(y, size.height(), down, kPopoverMargin)),
                 size);
}
