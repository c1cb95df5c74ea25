#include "PanelBackgroundView.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#if defined(BREVANO_HAVE_XCB) && __has_include(<xcb/xcb.h>)
#include <QtGui/qguiapplication_platform.h>
#if QT_CONFIG(xcb)
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#define BREVANO_ASK_X11_COMPOSITOR 1
#endif
#endif

namespace {

const QColor kFrameColour(0, 0, 0, 191); // black at 0.75
const QColor kOpaqueFrameColour(38, 38, 38);
const QColor kOpaqueArrowColour(96, 96, 96);
const QColor kContentColour = QColor::fromRgbF(0.96f, 0.96f, 0.96f);

#ifdef BREVANO_ASK_X11_COMPOSITOR
// The screen number the display name asks for (":0.1" is screen 1).
int defaultScreenNumber()
{
    const QByteArray display = qgetenv("DISPLAY");
    const qsizetype colon = display.lastIndexOf(':');
    const qsizetype dot = display.indexOf('.', colon + 1);
    return colon >= 0 && dot > colon ? std::atoi(display.constData() + dot + 1) : 0;
}

// A compositing manager owns the _NET_WM_CM_Sn selection of the screen it composites.
bool x11CompositorRunning()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return false;
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(defaultScreenNumber());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 1, quint16(name.size()), name.constData()),
            nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return false;
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom),
                                      nullptr),
        &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}
#endif

} // namespace

PanelBackgroundView::PanelBackgroundView(QWidget *parent) : QWidget(parent)
{
    setArrow(m_edge, m_position);
}

void PanelBackgroundView::setArrow(Qt::Edge edge, int position)
{
    m_edge = edge;
    m_position = position;
    QMargins margins(kFrameWidth, kFrameWidth, kFrameWidth, kFrameWidth);
    switch (edge) {
    case Qt::TopEdge:
        margins.setTop(kArrowHeight + kFrameWidth);
        break;
    case Qt::BottomEdge:
        margins.setBottom(kArrowHeight + kFrameWidth);
        break;
    case Qt::LeftEdge:
        margins.setLeft(kArrowHeight + kFrameWidth);
        break;
    case Qt::RightEdge:
        margins.setRight(kArrowHeight + kFrameWidth);
        break;
    }
    setContentsMargins(margins);
    update();
}

void PanelBackgroundView::setBandHeight(int height)
{
    m_bandHeight = height;
    update();
}

bool PanelBackgroundView::compositorRunning()
{
#ifdef BREVANO_ASK_X11_COMPOSITOR
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        return x11CompositorRunning();
#endif
    return true;
}

QRect PanelBackgroundView::sheetRect() const
{
    return rect().marginsRemoved(contentsMargins() -
                                 QMargins(kFrameWidth, kFrameWidth, kFrameWidth, kFrameWidth));
}

QPolygonF PanelBackgroundView::arrowPolygon() const
{
    const QRectF sheet(sheetRect());
    const qreal half = kArrowWidth / 2.0;
    const qreal at = m_position;
    switch (m_edge) {
    case Qt::TopEdge:
        return {{at - half, sheet.top()}, {at, 0}, {at + half, sheet.top()}};
    case Qt::BottomEdge:
        return {{at - half, sheet.bottom()}, {at, qreal(height())}, {at + half, sheet.bottom()}};
    case Qt::LeftEdge:
        return {{sheet.left(), at - half}, {0, at}, {sheet.left(), at + half}};
    case Qt::RightEdge:
        return {{sheet.right(), at - half}, {qreal(width()), at}, {sheet.right(), at + half}};
    }
    return {};
}

void PanelBackgroundView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF content = QRectF(contentsRect()).adjusted(0, m_bandHeight, 0, 0);
    // Without a compositor the window's corners cannot be see-through: fill it
    // all, so that no black corners show.
    if (!window()->testAttribute(Qt::WA_TranslucentBackground)) {
        painter.fillRect(rect(), kOpaqueFrameColour);
        QPainterPath arrow;
        arrow.addPolygon(arrowPolygon());
        painter.fillPath(arrow, kOpaqueArrowColour);
        painter.fillRect(content, kContentColour);
        return;
    }
    QPainterPath sheet;
    sheet.addRoundedRect(QRectF(sheetRect()), kCornerRadius, kCornerRadius);
    QPainterPath arrow;
    arrow.addPolygon(arrowPolygon());
    arrow.closeSubpath();
    painter.fillPath(sheet.united(arrow), kFrameColour);
    QPainterPath inner;
    const qreal innerRadius = kCornerRadius - kFrameWidth;
    inner.addRoundedRect(content, innerRadius, innerRadius);
    painter.fillPath(inner, kContentColour);
}

void PanelBackgroundView::reactivate()
{
#ifdef BREVANO_ASK_X11_COMPOSITOR
    if (QGuiApplication::platformName() == u"xcb") {
        const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        if (xcb_connection_t *connection = x11 ? x11->connection() : nullptr) {
            xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT,
                                XCB_INPUT_FOCUS_POINTER_ROOT, XCB_CURRENT_TIME);
            xcb_flush(connection);
        }
    }
#endif
    activateWindow();
}
