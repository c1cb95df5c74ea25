#pragma once

#include <QWidget>

class QPolygonF;

// The panel's body: a rounded, translucent dark-edged sheet with an arrow on
// one edge pointing at the status item. It follows its window: on a window
// without Qt::WA_TranslucentBackground (no compositor runs, and a translucent
// window would show black corners) it draws an opaque, square sheet.
class PanelBackgroundView : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kArrowHeight = 12;
    static constexpr int kArrowWidth = 24;
    static constexpr int kCornerRadius = 8;
    // The dark edge around the light content area.
    static constexpr int kFrameWidth = 4;

    explicit PanelBackgroundView(QWidget *parent = nullptr);

    // setArrowX: the arrow's tip along edge, in this widget's coordinates. The
    // contents margins keep the layout clear of the arrow on that edge.
    void setArrow(Qt::Edge edge, int position);
    Qt::Edge arrowEdge() const { return m_edge; }
    int arrowPosition() const { return m_position; }
    // True when a compositing manager runs on the display (X11); windows may
    // then be translucent.
    static bool compositorRunning();
    // Activates the window even where Qt believes another of our windows has
    // the keyboard while the X server already gives it to this one (an XEmbed
    // tray icon's focus message arriving late): without a change of X focus no
    // FocusIn comes, so the focus goes to the root first and then back here.
    void reactivate();
    // The dark band across the top of the contents (where the toolbar sits);
    // the light content area starts below it.
    void setBandHeight(int height);
    int bandHeight() const { return m_bandHeight; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // The sheet without the arrow.
    QRect sheetRect() const;
    QPolygonF arrowPolygon() const;

    Qt::Edge m_edge = Qt::TopEdge;
    int m_position = 0;
    int m_bandHeight = 0;
};
