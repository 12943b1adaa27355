#include "wavemonitor/constants.h"
#include "wavemonitor/ruler/numberrow.h"
#include "wavemonitor/ruler/rulerticks.h"
#include "wavemonitor/waveview.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace WaveMonitor {

namespace {

constexpr int kDistanceFontPoints = 9;
constexpr int kDistanceHeight = 12; // no higher than its place, so that no font is cut off below
constexpr double kWidestDistance = 1000.0; // no distance's text is so wide
constexpr QRgb kCursorColor = 0xFFFFA500;

} // namespace

void WaveView::paintEvent(QPaintEvent* event)
{
    QGraphicsView::paintEvent(event);
    QPainter painter(viewport());
    painter.setFont(monitorFontOfPointSize(kDistanceFontPoints));
    paintTriggers(painter);
    paintMarkers(painter);
    paintShades(painter);
}

/// The viewport x of the line at a time, not rounded. A little before the sample's begin, so that
/// the line stands on the edge and not behind it.
double WaveView::deviceX(qint64 time) const
{
    return viewportTransform().map(QPointF(time * kSampleWidth - 0.02, 0.0)).x();
}

void WaveView::paintTimeLine(QPainter& painter, qint64 time, QColor const& color) const
{
    double const x = deviceX(time);
    if (x > -1.0 && x < viewport()->width()) {
        painter.fillRect(qRound(x), 0, 1, viewport()->height(), color);
    }
}

/// The distance in samples from time `from`, beside the line at `time`, where there is room in the
/// row.
void WaveView::paintDistance(QPainter& painter, NumberRow& row, int time, int from,
                             QColor const& color) const
{
    double const x = deviceX(time);
    if (x < -kWidestDistance || x > viewport()->width()) {
        return;
    }
    QString const text = QString::number(qint64(time) - from);
    double const width = QFontMetricsF(painter.font(), viewport()).horizontalAdvance(text);
    QRectF const box(qRound(x) + 3, viewport()->height() - kDistanceHeight, width, kDistanceHeight);
    if (!row.take(box.left(), box.right())) {
        return;
    }
    painter.setPen(color);
    painter.drawText(box, Qt::AlignCenter | Qt::TextDontClip, text);
}

void WaveView::paintTriggers(QPainter& painter) const
{
    if (m_dataSource == nullptr || m_dataSource->WindowsNum() <= 0) {
        return;
    }
    int const windows = m_dataSource->WindowsNum();
    qint64 const first = m_dataSource->triggerPosition();
    // Divided first, unlike the marks: deliberate.
    qint64 const step = std::max(m_dataSource->oneWindowSize(), 0) / windows;
    if (step == 0) {
        paintTimeLine(painter, first, Qt::yellow);
        return;
    }
    qint64 const stride = windowStride(step, m_zoomRate);
    auto const leftTime = static_cast<qint64>(mapToScene(0, 0).x() / kSampleWidth);
    qint64 const hidden = std::max<qint64>((leftTime - first) / step - 1, 0);
    for (qint64 k = hidden / stride * stride; k < windows; k += stride) {
        qint64 const time = first + step * k;
        if (deviceX(time) >= viewport()->width()) {
            break;
        }
        paintTimeLine(painter, time, Qt::yellow);
    }
}

void WaveView::paintMarkers(QPainter& painter) const
{
    auto const isActive = [](QPointer<TimeSliderItem> const& marker) {
        return marker && marker->isMain();
    };
    auto const active = std::find_if(m_timeMarkers.begin(), m_timeMarkers.end(), isActive);
    int const activeTime = active == m_timeMarkers.end() ? -1 : (*active)->time();
    for (auto marker = m_timeMarkers.begin(); marker != m_timeMarkers.end(); ++marker) {
        if (marker == active || marker->isNull()) {
            continue;
        }
        paintTimeLine(painter, (*marker)->time(), Qt::red);
    }
    if (activeTime >= 0) {
        paintTimeLine(painter, activeTime, Qt::white);
    }
    if (m_cursor) {
        paintTimeLine(painter, m_cursor->time(), QColor(kCursorColor));
    }
    if (activeTime >= 0) {
        paintDistances(painter, activeTime);
    }
}

/// Of lines that stand close only the first's distance is written; the cursor's goes before all.
void WaveView::paintDistances(QPainter& painter, int activeTime) const
{
    NumberRow row;
    if (m_cursor) {
        paintDistance(painter, row, m_cursor->time(), activeTime, QColor(kCursorColor));
    }
    for (QPointer<TimeSliderItem> const& marker : m_timeMarkers) {
        if (marker && !marker->isMain()) {
            paintDistance(painter, row, marker->time(), activeTime, Qt::red);
        }
    }
}

void WaveView::paintShades(QPainter& painter) const
{
    QColor shade(Qt::cyan);
    shade.setAlpha(30);
    if (m_shadeLeft.isValid()) {
        painter.fillRect(m_shadeLeft.right(), m_shadeLeft.top(), 1, m_shadeLeft.height(), Qt::cyan);
        painter.fillRect(m_shadeLeft, shade);
    }
    if (m_shadeRight.isValid()) {
        painter.fillRect(m_shadeRight.left(), m_shadeRight.top(), 1, m_shadeRight.height(),
                         Qt::cyan);
        painter.fillRect(m_shadeRight, shade);
    }
}

} // namespace WaveMonitor
