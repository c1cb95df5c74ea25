#include "StatusIcons.h"

#include <QPainter>
#include <QSvgRenderer>

QIcon StatusIcons::icon(const QString &name)
{
    QSvgRenderer renderer(QStringLiteral(":/") + name);
    QIcon icon;
    if (!renderer.isValid())
        return icon;
    for (int size : {16, 22, 24, 32, 48, 64, 128}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}
