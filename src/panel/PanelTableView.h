#pragma once

#include <QListView>
#include <QStringList>

#include <functional>

class QMimeData;

// The panel's rows as a drag source and a drop target. Dragged rows go out as
// file URLs, offered for copying, moving and linking. Local files dropped in
// are moved, so only a drag that allows a move is let in; where they may go
// is for the panel to say. Every drop is reported to its source as not
// accepted, so that no source removes anything afterwards.
class PanelTableView : public QListView
{
    Q_OBJECT
public:
    // Where a drop lands: onto a row, or between rows (row -1 below the last
    // one), which is the folder shown.
    struct DropPlace
    {
        int row = -1;
        bool onRow = false;
    };
    using DropCheck = std::function<bool(const QStringList &paths, const DropPlace &place)>;
    using DropHandler = std::function<void(const QStringList &paths, const DropPlace &place)>;

    explicit PanelTableView(QWidget *parent = nullptr);

    // validate answers whether dropping paths there is allowed (the pointer
    // shows it); accept then does it.
    void setDropHandlers(DropCheck validate, DropHandler accept);
    // The place of a drop at pos, in the viewport: the middle of a row is onto
    // it, its top and bottom edges between rows.
    DropPlace dropPlaceAt(const QPoint &pos) const;
    // The local files among the dragged URLs, byte for byte; other URLs are left out.
    static QStringList localPaths(const QMimeData *mime);

signals:
    // Before the drag of the selected rows starts, with their paths in row order.
    void dragWillBegin(const QStringList &paths);
    // When it has ended, with what the target did (IgnoreAction: nothing).
    void dragEnded(const QStringList &paths, Qt::DropAction action);

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // Whether the drop allows the event's files at its place; shows where it lands.
    bool allows(QDropEvent *event);
    static bool mayMove(const QDropEvent *event);
    void setDropIndicator(const QRect &rect, bool onRow);

    DropCheck m_validate;
    DropHandler m_accept;
    QRect m_dropIndicator;
    bool m_dropOnRow = false;
};
