#include "wavemonitor/timeslider.h"

#include "wavemonitor/constants.h"

#include <QCursor>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr double kFlagHeight = 15.0;
constexpr double kMinWidth = 10.0;
constexpr QRgb kCursorColor = 0xFFFFA500;
constexpr QRgb kCursorNumberColor = 0xFF552A00; ///< The cursor's orange can't be read on gray.
constexpr int kFontPoints = 9;
constexpr double kTextRoom = 15.0; ///< Pixels above a flag, up to the top of the ruler.
constexpr int kFittingPixels = 12;

/// Where points are large, smaller letters: the ruler would cut a number off at its top.
QFont fittingFont()
{
    QFont const font = monitorFontOfPointSize(kFontPoints);
    return QFontMetricsF(font).height() > kTextRoom ? monitorFontOfPixelSize(kFittingPixels) : font;
}

QSizeF timeTextSize(QFont const& font, int time)
{
    QFontMetricsF const metrics(font);
    return QSizeF(metrics.horizontalAdvance(QString::number(time)), metrics.height());
}

/// Has room for the number at its full size, also where it is painted smaller.
QRectF sliderRect(int time)
{
    QSizeF const text = timeTextSize(monitorFontOfPointSize(kFontPoints), time);
    double const height = text.height() + kFlagHeight;
    return QRectF(0.0, -height, std::max(text.width(), kMinWidth), height);
}

void paintNumber(QPainter* painter, int time, QColor const& color)
{
    QFont const font = fittingFont();
    painter->setPen(color);
    painter->setFont(font);
    QSizeF const text = timeTextSize(font, time);
    painter->drawText(QRectF(QPointF(0.0, -kFlagHeight - text.height()), text), Qt::AlignCenter,
                      QString::number(time));
}

/// The hit area, in device pixels: a flag whose tip (0, 0) stands at its time.
QPainterPath sliderShape()
{
    QPainterPath path;
    path.addPolygon(QPolygonF({{0.0, -15.0}, {8.0, -15.0}, {8.0, -5.0}, {0.0, 0.0}}));
    path.closeSubpath();
    return path;
}

} // namespace

int heldTime(int time, int length)
{
    return std::max(length > 0 ? std::min(time, length - 1) : time, 0);
}

SliderItem::SliderItem(QGraphicsItem* parent)
    : QGraphicsObject(parent), m_shape(sliderShape()), m_rect(sliderRect(0))
{
    setFlags(ItemIgnoresTransformations | ItemIsSelectable);
}

void SliderItem::holdTime(int time)
{
    prepareGeometryChange();
    m_time = heldTime(time, m_length);
    m_rect = sliderRect(m_time);
    update();
}

double SliderItem::numberWidth() const
{
    return timeTextSize(fittingFont(), m_time).width();
}

void SliderItem::paint(QPainter* painter, QStyleOptionGraphicsItem const*, QWidget*)
{
    Colors const shown = colors();
    painter->save();
    painter->setPen(shown.outline);
    painter->setBrush(shown.filling);
    painter->drawPath(m_shape);
    if (m_numberShown)
        paintNumber(painter, m_time, shown.number);
    painter->restore();
}

TimeSliderItem::TimeSliderItem(QGraphicsItem* parent) : SliderItem(parent)
{
    setCursor(Qt::SizeHorCursor);
}

void TimeSliderItem::setMain(bool main)
{
    m_main = main;
    update();
}

SliderItem::Colors TimeSliderItem::colors() const
{
    return {Qt::white, m_main ? Qt::white : Qt::red, Qt::white};
}

void CursorSliderItem::setTime(int time)
{
    holdTime(time);
    setX(this->time() * Constants::Graphics::kSampleWidth);
}

void CursorSliderItem::setLength(int length)
{
    m_length = length;
    setTime(time());
}

SliderItem::Colors CursorSliderItem::colors() const
{
    return {QColor(kCursorColor), QColor(kCursorColor), QColor(kCursorNumberColor)};
}

TimeSliderData::~TimeSliderData()
{
    delete m_item;
}

TimeSliderItem* TimeSliderData::sliderItem()
{
    if (m_item.isNull()) {
        m_item = new TimeSliderItem;
    }
    return m_item;
}

int TimeSliderData::time() const
{
    return m_item.isNull() ? 0 : m_item->time();
}

} // namespace WaveMonitor
