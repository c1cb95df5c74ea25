#include "PanelTableView.h"

#include "FileNames.h"

#include <QDrag>
#include <QDragMoveEvent>
#include <QIcon>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

#include <algorithm>

PanelTableView::PanelTableView(QWidget *parent) : QListView(parent)
{
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    // The view's own indicator knows nothing of which rows take drops.
    setDropIndicatorShown(false);
}

void PanelTableView::setDropHandlers(DropCheck validate, DropHandler accept)
{
    m_validate = std::move(validate);
    m_accept = std::move(accept);
}

QStringList PanelTableView::localPaths(const QMimeData *mime)
{
    QStringList paths;
    if (!mime || !mime->hasUrls())
        return paths;
    for (const QUrl &url : mime->urls())
        if (const QString path = FileNames::fromUrl(url); !path.isEmpty())
            paths.append(path);
    return paths;
}

PanelTableView::DropPlace PanelTableView::dropPlaceAt(const QPoint &pos) const
{
    const QModelIndex index = indexAt(pos);
    if (!index.isValid())
        return {};
    const QRect rect = visualRect(index);
    const int edge = qBound(2, rect.height() / 5, 12);
    const bool between = pos.y() < rect.top() + edge || pos.y() > rect.bottom() - edge;
    return {index.row(), !between};
}

void PanelTableView::startDrag(Qt::DropActions supportedActions)
{
    QModelIndexList rows = selectionModel()->selectedIndexes();
    if (rows.isEmpty() || !model())
        return;
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    QMimeData *mime = model()->mimeData(rows);
    const QStringList paths = localPaths(mime);
    if (paths.isEmpty()) {
        delete mime;
        return;
    }
    emit dragWillBegin(paths);
    auto *drag = new QDrag(this);
    drag->setMimeData(mime);
    const int side = iconSize().isValid() ? qMax(16, iconSize().height()) : 32;
    drag->setPixmap(rows.first().data(Qt::DecorationRole).value<QIcon>().pixmap(side, side));
    // A drag back to the Desktop is to move the item there, unless the user
    // asks for a copy or a link.
    const Qt::DropAction done = drag->exec(supportedActions, Qt::MoveAction);
    emit dragEnded(paths, done);
}

// Only a move is taken: dropped items always move. A source that allows
// only a copy or a link (a file manager with Ctrl held) keeps its items.
bool PanelTableView::mayMove(const QDropEvent *event)
{
    return (event->possibleActions() & Qt::MoveAction) && !localPaths(event->mimeData()).isEmpty();
}

bool PanelTableView::allows(QDropEvent *event)
{
    const QPoint pos = event->position().toPoint();
    const DropPlace place = dropPlaceAt(pos);
    const QStringList paths = localPaths(event->mimeData());
    const bool allowed = mayMove(event) && m_validate && m_validate(paths, place);
    QRect shown;
    if (allowed && place.row >= 0) {
        const QRect rect = visualRect(model()->index(place.row, 0, rootIndex()));
        const bool above = pos.y() < rect.center().y();
        shown = place.onRow
                    ? rect
                    : QRect(rect.left(), above ? rect.top() : rect.bottom(), rect.width(), 1);
    }
    setDropIndicator(shown, place.onRow);
    return allowed;
}

void PanelTableView::dragEnterEvent(QDragEnterEvent *event)
{
    // Whether a place takes them is told as the pointer moves.
    if (!mayMove(event))
        return event->ignore();
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void PanelTableView::dragMoveEvent(QDragMoveEvent *event)
{
    if (allows(event)) {
        // The pointer shows what will happen, whatever the source proposed.
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        event->ignore();
    }
    const QRect inner = viewport()->rect().adjusted(0, autoScrollMargin(), 0, -autoScrollMargin());
    if (hasAutoScroll() && !inner.contains(event->position().toPoint()))
        startAutoScroll();
}

void PanelTableView::dragLeaveEvent(QDragLeaveEvent *)
{
    stopAutoScroll();
    setDropIndicator(QRect(), false);
}

void PanelTableView::dropEvent(QDropEvent *event)
{
    stopAutoScroll();
    if (allows(event) && m_accept)
        m_accept(localPaths(event->mimeData()), dropPlaceAt(event->position().toPoint()));
    setDropIndicator(QRect(), false);
    // Moved or not, the source is told that nothing was taken: it is never to
    // delete its side after a move of ours.
    event->setDropAction(Qt::IgnoreAction);
    event->ignore();
}

void PanelTableView::setDropIndicator(const QRect &rect, bool onRow)
{
    if (rect == m_dropIndicator && onRow == m_dropOnRow)
        return;
    m_dropIndicator = rect;
    m_dropOnRow = onRow;
    viewport()->update();
}

void PanelTableView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (m_dropIndicator.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    if (m_dropOnRow)
        painter.drawRoundedRect(m_dropIndicator.adjusted(1, 1, -1, -1), 4, 4);
    else
        painter.drawLine(m_dropIndicator.topLeft(), m_dropIndicator.topRight());
}
