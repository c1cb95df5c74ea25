#include "AlternateItemWidget.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QStyle>

AlternateItemWidget::AlternateItemWidget(const QIcon &icon, const QString &title,
                                         const QColor &firstWordColor, QWidget *parent)
    : QWidget(parent), m_icon(new QLabel), m_text(new QLabel), m_firstWordColor(firstWordColor),
      m_title(title)
{
    auto *layout = new QHBoxLayout(this);
    const int margin = style()->pixelMetric(QStyle::PM_MenuHMargin, nullptr, this) + 4;
    layout->setContentsMargins(margin, 3, margin + 12, 3);
    layout->setSpacing(6);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_icon->setFixedSize(size, size);
    setIcon(icon);
    layout->addWidget(m_icon);
    m_text->setTextFormat(Qt::RichText);
    m_text->setText(styledTitle(title, firstWordColor));
    layout->addWidget(m_text, 1);
    setMouseTracking(true);
}

void AlternateItemWidget::setIcon(const QIcon &icon)
{
    if (icon.isNull())
        m_icon->clear();
    else
        m_icon->setPixmap(icon.pixmap(m_icon->size()));
}

QString AlternateItemWidget::styledTitle(const QString &title, const QColor &firstWordColor)
{
    const qsizetype space = title.indexOf(u' ');
    const QString first = title.left(space < 0 ? title.size() : space);
    const QString rest = space < 0 ? QString() : title.mid(space);
    return QStringLiteral("<span style=\"color:%1\">%2</span>%3")
        .arg(firstWordColor.name(), first.toHtmlEscaped(), rest.toHtmlEscaped());
}

// Only a highlighted entry paints its own background; otherwise the menu's shows.
void AlternateItemWidget::setHighlighted(bool highlighted)
{
    setAutoFillBackground(highlighted);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, highlighted
                                           ? colours.color(QPalette::Highlight)
                                           : parentWidget()->palette().color(QPalette::Window));
    colours.setColor(QPalette::WindowText,
                     highlighted ? colours.color(QPalette::HighlightedText)
                                 : parentWidget()->palette().color(QPalette::WindowText));
    setPalette(colours);
}

void AlternateItemWidget::enterEvent(QEnterEvent *event)
{
    setHighlighted(true);
    QWidget::enterEvent(event);
}

void AlternateItemWidget::leaveEvent(QEvent *event)
{
    setHighlighted(false);
    QWidget::leaveEvent(event);
}

void AlternateItemWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (rect().contains(event->position().toPoint()))
        emit activated();
    QWidget::mouseReleaseEvent(event);
}
