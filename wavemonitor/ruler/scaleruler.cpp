#include "wavemonitor/ruler/scaleruler.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/ruler/rulerticks.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <algorithm>

using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace WaveMonitor {

namespace {

constexpr double kHeight = 20.0;
constexpr int kFontPixels = 13;

/// Draws lines in scene units and texts in device pixels, by one painter.
class RulerPainter
{
public:
    RulerPainter(QPainter* painter)
        : m_painter(painter), m_scaled(painter->worldTransform()), m_scale(m_scaled.m11()),
          m_plain(1.0, m_scaled.m12(), m_scaled.m21(), 1.0, m_scaled.dx(), m_scaled.dy())
    {
        painter->setFont(monitorFontOfPixelSize(kFontPixels));
        m_ascent = QFontMetricsF(painter->font(), painter->device()).ascent();
    }

    double scale() const { return m_scale; }

    void setPen(QColor const& color)
    {
        m_painter->setPen(QPen(color, 0.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    }

    void line(double x1, double y1, double x2, double y2)
    {
        m_painter->drawLine(QLineF(x1, y1, x2, y2));
    }

    void tick(qint64 sample, double top, double bottom)
    {
        double const x = static_cast<double>(sample) * kSampleWidth;
        line(x, top, x, bottom);
    }

    void label(qint64 sample, double top, qint64 number)
    {
        m_painter->setWorldTransform(m_plain);
        m_painter->drawText(QPointF(labelX(sample, m_scale), top + m_ascent),
                            QString::number(number));
        m_painter->setWorldTransform(m_scaled);
    }

private:
    QPainter* m_painter;
    QTransform m_scaled;
    double m_scale;
    QTransform m_plain;
    double m_ascent = 0.0;
};

void paintTimeTicks(RulerPainter& painter, TickRange const& range, TickSteps const& steps)
{
    for (qint64 i = firstTick(range.from, steps.major); i < range.to; i += steps.major) {
        painter.tick(i, 2.0, kHeight);
        painter.label(i, 0.0, i);
    }
    if (steps.minor == 1) {
        return;
    }
    // one sample behind the tenths: deliberate
    for (qint64 i = firstTick(range.from, steps.minor, 1); i < range.to; i += steps.minor) {
        painter.tick(i, 15.0, kHeight);
    }
}

void paintWindowTicks(RulerPainter& painter, TickRange const& range, qint64 step)
{
    qint64 const stride = windowStride(step, painter.scale()) * step;
    for (qint64 i = firstTick(range.from, stride); i < range.to; i += stride) {
        painter.tick(i, -18.0, 0.0);
        painter.label(i, -16.0, i / step);
    }
}

} // namespace

ScaleRuler::ScaleRuler(QGraphicsItem* parent) : QGraphicsItem(parent)
{
    setFlag(ItemUsesExtendedStyleOption);
    setZValue(1.0);
}

void ScaleRuler::setLength(int length)
{
    prepareGeometryChange();
    m_length = std::max(length, 0);
    update();
}

void ScaleRuler::setNum(int num)
{
    m_num = num;
    update();
}

QRectF ScaleRuler::boundingRect() const
{
    return QRectF(0.0, 0.0, m_length * kSampleWidth, kHeight);
}

void ScaleRuler::paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget*)
{
    painter->save();
    RulerPainter ruler(painter);
    TickSteps const steps = tickSteps(ruler.scale());
    QRectF const exposed = option->exposedRect;
    TickRange const range = tickRange(exposed.left(), exposed.right(), m_length, steps);
    if (range.from < range.to) {
        double const left = static_cast<double>(range.from) * kSampleWidth;
        double const right = static_cast<double>(range.to) * kSampleWidth;
        painter->fillRect(QRectF(left, 0.0, right - left, kHeight), QColor(0x555555));
        ruler.setPen(Qt::white);
        ruler.line(left, kHeight, right, kHeight);
        paintTimeTicks(ruler, range, steps);
        if (qint64 const step = windowStep(m_length, m_num); step > 0) {
            ruler.setPen(Qt::red);
            paintWindowTicks(ruler, range, step);
        }
    }
    painter->restore();
}

} // namespace WaveMonitor
