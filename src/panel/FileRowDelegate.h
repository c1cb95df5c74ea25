#pragma once

#include <QColor>
#include <QStyledItemDelegate>

class QuickFilterItem;

// Draws a panel row: the type icon in a square at x + 5 (side: row height - 4),
// the name at x + row height + 4 in the 12-point system font, on the row's
// background (selected, odd, even). Every row has the same height.
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
    // The icon's square and the name's origin in a row's rectangle.
    static QRect iconRect(const QRect &row);
    static QPoint nameOrigin(const QRect &row);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    int m_rowHeight = 22;
};
