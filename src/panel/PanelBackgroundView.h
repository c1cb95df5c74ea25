#pragma once

#include <QWidget>

// The panel's body: a rounded, translucent dark-edged sheet with an arrow on
// one edge pointing at the status item. Where no compositor runs it draws an
// opaque sheet (a translucent window would show black corners there).
class PanelBackgroundView : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kArrowHeight = 12;
    static constexpr int kArrowWidth = 24;
    static constexpr int kCornerRadius = 8;

    explicit PanelBackgroundView(QWidget *parent = nullptr);

    // setArrowX: the arrow's tip along edge, in this widget's coordinates. The
    // contents margins keep the layout clear of the arrow on that edge.
    void setArrow(Qt::Edge edge, int position);
    Qt::Edge arrowEdge() const { return m_edge; }
    int arrowPosition() const { return m_position; }
    // True when a compositing manager runs on the display (X11); windows may
    // then be translucent.
    static bool compositorRunning();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Qt::Edge m_edge = Qt::TopEdge;
    int m_position = 0;
};
