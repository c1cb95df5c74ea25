#pragma once

#include <QWidget>

class QLabel;

// A menu entry whose first word is coloured ("Reveal", "Delete", "Restore"),
// which a plain menu action cannot show. It highlights under the pointer like
// any entry and reports a click.
class AlternateItemWidget : public QWidget
{
    Q_OBJECT
public:
    AlternateItemWidget(const QIcon &icon, const QString &title, const QColor &firstWordColor,
                        QWidget *parent = nullptr);

    static QString styledTitle(const QString &title, const QColor &firstWordColor);
    void setIcon(const QIcon &icon);

signals:
    void activated();

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void setHighlighted(bool highlighted);

    QLabel *m_icon;
    QLabel *m_text;
    QColor m_firstWordColor;
    QString m_title;
};
