#include "wavemonitor/waves/waveviewgestures.h"

#include "wavemonitor/constants.h"

#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <utility>

namespace WaveMonitor {

namespace {
constexpr int kSlack = 9; // a drag of up to so many pixels is a click
} // namespace

WaveView::MoveWithMouseDelegate::MoveWithMouseDelegate(WaveView* view, QPoint const& start)
    : ActionDelegate(view), m_last(start)
{}

void WaveView::MoveWithMouseDelegate::process(QEvent* event)
{
    QPoint const position = static_cast<QMouseEvent*>(event)->pos();
    QPoint const motion = position - m_last;
    m_last = position;
    QScrollBar* horizontal = m_view->horizontalScrollBar();
    horizontal->setValue(horizontal->value() - motion.x());
    QScrollBar* vertical = m_view->verticalScrollBar();
    vertical->setValue(vertical->value() - motion.y());
    event->accept();
}

void WaveView::MoveWithMouseDelegate::complete(QEvent*)
{}

WaveView::ZoomFromRegionDelegate::ZoomFromRegionDelegate(WaveView* view, QPoint const& start)
    : ActionDelegate(view), m_start(start)
{}

void WaveView::ZoomFromRegionDelegate::process(QEvent* event)
{
    int const x = static_cast<QMouseEvent*>(event)->pos().x();
    QRect const visible = m_view->viewport()->rect();
    if (std::abs(m_start.x() - x) <= kSlack) {
        m_rect = {};
        m_view->setShades({}, {});
        return;
    }
    // a drag may leave the viewport, but there is nothing to zoom to outside of it
    int const left = std::clamp(std::min(m_start.x(), x), visible.left(), visible.right());
    int const right = std::clamp(std::max(m_start.x(), x), visible.left(), visible.right());
    m_rect = QRect(QPoint(left, visible.top()), QPoint(right, visible.bottom()));
    m_view->setShades(QRect(visible.topLeft(), QPoint(left - 1, visible.bottom())),
                      QRect(QPoint(right, visible.top()), visible.bottomRight()));
}

void WaveView::ZoomFromRegionDelegate::complete(QEvent*)
{
    m_view->setShades({}, {});
    if (m_rect.isValid()) {
        QMetaObject::invokeMethod(m_view, "zoomForRect", Qt::QueuedConnection,
                                  Q_ARG(QRect, m_rect));
    }
}

void WaveView::setShades(QRect const& left, QRect const& right)
{
    m_shadeLeft = left;
    m_shadeRight = right;
    viewport()->update();
}

/// A gesture that is still in progress is given up, without completing it.
void WaveView::beginGesture(std::unique_ptr<ActionDelegate> gesture)
{
    setShades({}, {});
    m_delegate = std::move(gesture);
}

void WaveView::placeCursor(QPoint const& position)
{
    double const time = std::floor(mapToScene(position).x() / Constants::Graphics::kSampleWidth);
    if (m_cursor) {
        m_cursor->setTime(std::min(static_cast<int>(time), m_cursor->length() - 1));
    }
    Q_EMIT updateMarkerAct();
    Q_EMIT updateCursorTime();
}

void WaveView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        if (m_dataSource != nullptr) {
            m_dataSource->highlightItem(itemAt(event->pos()));
        }
        placeCursor(event->pos());
        beginGesture(std::make_unique<ZoomFromRegionDelegate>(this, event->pos()));
        QGraphicsView::mousePressEvent(event);
    } else if (event->button() == Qt::MiddleButton) {
        beginGesture(std::make_unique<MoveWithMouseDelegate>(this, event->pos()));
        setCursor(Qt::OpenHandCursor);
        event->accept();
    } else {
        QGraphicsView::mousePressEvent(event);
    }
}

void WaveView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_delegate) {
        m_delegate->process(event);
    }
    QGraphicsView::mouseMoveEvent(event);
}

void WaveView::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_delegate) {
        m_delegate->complete(event);
        m_delegate.reset();
    }
    if (event->button() == Qt::MiddleButton) {
        setCursor(Qt::ArrowCursor);
    }
    QGraphicsView::mouseReleaseEvent(event);
}

void WaveView::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QGraphicsView::wheelEvent(event);
        return;
    }
    if (int const delta = event->angleDelta().y(); delta != 0) {
        zoomAround(clampedZoomRate(m_zoomRate * (delta > 0 ? 2.0 : 0.5)), event->position().x());
    }
    event->accept();
}

/// Installed on the ruler's viewport, whose wheel is the wave view's; the base class watches the
/// view's own scroll bars, to which it hands the wheel on.
bool WaveView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Wheel && !isAncestorOf(qobject_cast<QWidget*>(watched))) {
        wheelEvent(static_cast<QWheelEvent*>(event));
        return true;
    }
    return QGraphicsView::eventFilter(watched, event);
}

} // namespace WaveMonitor
