#pragma once

#include <QColor>
#include <QStyledItemDelegate>

class QuickFilterItem;
class ThumbnailLoader;

// Draws a panel row: the type icon in a square at x + 5 (side: row height - 4),
// the name at x + row height + 4 in the 12-point system font, on the row's
// background (selected, odd, even). Every row has the same height. With
// thumbnails, a row shows its file's picture (made for the row height in
// device pixels, drawn in the square with its proportions kept) once it is
// there, the type icon until then; only the rows painted ask for one.
class FileRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    static const QColor kSelectedBackground; // 0.2, 0.2, 0.957
    static const QColor kOddBackground;      // 0.93 gray
    static const QColor kEvenBackground;     // 0.957, 0.953, 0.957
    static const QColor kNameColour;         // 0.333 gray

    explicit FileRowDelegate(QObject *parent = nullptr);

    // 22, 44, 66 or 128 by the view's icon size; 22 without a view or for any
    // other index.
    static int rowHeight(const QuickFilterItem *view);
    void setRowHeight(int height) { m_rowHeight = height; }
    int rowHeight() const { return m_rowHeight; }
    // Where the pictures come from; none shows type icons only.
    void setThumbnails(ThumbnailLoader *thumbnails) { m_thumbnails = thumbnails; }
    // The icon's square and the name's origin in a row's rectangle.
    static QRect iconRect(const QRect &row);
    static QPoint nameOrigin(const QRect &row);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    // Draws the row's picture when it has one; false otherwise.
    bool paintThumbnail(QPainter *painter, const QRect &square, const QModelIndex &index) const;

    int m_rowHeight = 22;
    ThumbnailLoader *m_thumbnails = nullptr;
};
