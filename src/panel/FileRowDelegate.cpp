#include "FileRowDelegate.h"

#include "FileListModel.h"
#include "QuickFilterItem.h"
#include "ThumbnailLoader.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QIcon>
#include <QPainter>

const QColor FileRowDelegate::kSelectedBackground = QColor::fromRgbF(0.2f, 0.2f, 0.957f);
const QColor FileRowDelegate::kOddBackground = QColor::fromRgbF(0.93f, 0.93f, 0.93f);
const QColor FileRowDelegate::kEvenBackground = QColor::fromRgbF(0.957f, 0.953f, 0.957f);
const QColor FileRowDelegate::kNameColour = QColor::fromRgbF(0.333f, 0.333f, 0.333f);

namespace {

QFont nameFont()
{
    QFont font = QGuiApplication::font();
    font.setPointSizeF(12);
    return font;
}

} // namespace

FileRowDelegate::FileRowDelegate(QObject *parent) : QStyledItemDelegate(parent) {}

int FileRowDelegate::rowHeight(const QuickFilterItem *view)
{
    static constexpr int kHeights[] = {22, 44, 66, 128};
    if (!view || view->getIconSize() >= std::size(kHeights))
        return kHeights[0];
    return kHeights[view->getIconSize()];
}

QRect FileRowDelegate::iconRect(const QRect &row)
{
    return QRect(row.x() + 5, row.y() + 2, row.height() - 4, row.height() - 4);
}

QPoint FileRowDelegate::nameOrigin(const QRect &row)
{
    return QPoint(row.x() + row.height() + 4, row.y() + 2);
}

void FileRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    const QRect row = option.rect;
    const bool selected = option.state & QStyle::State_Selected;
    painter->save();
    painter->fillRect(row, selected               ? kSelectedBackground
                           : index.row() % 2 == 1 ? kOddBackground
                                                  : kEvenBackground);

    // One line of the name, elided rather than cut off in a glyph.
    const QFont font = nameFont();
    const QFontMetrics metrics(font);
    const QPoint origin = nameOrigin(row);
    const QRect nameRect(origin, QPoint(row.right(), origin.y() + metrics.height() - 1));
    painter->setFont(font);
    painter->setPen(selected ? QColor(Qt::white) : kNameColour);
    painter->drawText(nameRect, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine,
                      metrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight,
                                         nameRect.width()));

    // QIcon picks the pixmap for the square at the painter's pixel ratio.
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    if (!paintThumbnail(painter, iconRect(row), index))
        index.data(Qt::DecorationRole).value<QIcon>().paint(painter, iconRect(row));

    // Where the keyboard is, for those who move through the rows with it.
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(selected ? QColor(Qt::white) : kSelectedBackground, 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(row.adjusted(0, 0, -1, -1));
    }
    painter->restore();
}

bool FileRowDelegate::paintThumbnail(QPainter *painter, const QRect &square,
                                     const QModelIndex &index) const
{
    if (!m_thumbnails)
        return false;
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    const QImage picture = m_thumbnails->thumbnail(index.data(FileListModel::PathRole).toString(),
                                                   qRound(m_rowHeight * ratio));
    if (picture.isNull())
        return false;
    QSizeF size = picture.size();
    size.scale(square.size(), Qt::KeepAspectRatio);
    QRectF target(QPointF(), size);
    target.moveCenter(QRectF(square).center());
    painter->drawImage(target, picture);
    return true;
}

QSize FileRowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    Q_UNUSED(option);
    const QFontMetrics metrics(nameFont());
    const int nameWidth = metrics.horizontalAdvance(index.data(Qt::DisplayRole).toString());
    return QSize(m_rowHeight + 4 + nameWidth + 4, m_rowHeight);
}
