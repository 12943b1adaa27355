#include "wavemonitor/waves/wavepainter.h"

#include "wavemonitor/waves/valuetexts.h"

#include "wavemonitor/constants.h"
#include <QPaintDevice>

#include <QPaintEngine>

namespace WaveMonitor {

namespace {

/// Pixels that a wave may reach beyond its samples.
constexpr int Overhang = 8;

} // namespace

WavePainter::WavePainter(QPainter* painter, QRectF const& exposed)
    : m_painter(painter), m_itemTransform(painter->worldTransform()),
      m_map(painter->deviceTransform())
{
    painter->save();
    m_exact = setUpExact(exposed);
}

WavePainter::~WavePainter()
{
    m_painter->restore();
}

/// A picture of lines has them where they can be told apart; else it would grow with the capture.
bool WavePainter::isMeantInPixels() const
{
    QPaintEngine::Type const type = m_painter->paintEngine()->type();
    bool const isOfLines = type == QPaintEngine::SVG || type == QPaintEngine::Pdf;
    return type == QPaintEngine::Raster ||
           (isOfLines && m_map.m11() * Constants::Graphics::kSampleWidth < 1);
}

bool WavePainter::setUpExact(QRectF const& exposed)
{
    if (!isMeantInPixels() || m_painter->testRenderHint(QPainter::Antialiasing) ||
        m_map.type() > QTransform::TxScale || !(m_map.m11() > 0) || !(m_map.m22() > 0))
        return false;
    QRectF const area = m_map.mapRect(exposed);
    if (!(area.left() >= -MostPixels && area.top() >= -MostPixels && area.right() <= MostPixels &&
          area.bottom() <= MostPixels))
        return false;
    m_exposed = QRect(QPoint(int(std::floor(area.left())), int(std::floor(area.top()))),
                      QPoint(int(std::floor(area.right())), int(std::floor(area.bottom()))));
    m_window = m_exposed.adjusted(-Overhang, -1, Overhang, 1);
    m_painter->resetTransform();
    m_painter->setWorldTransform(m_painter->deviceTransform().inverted());
    m_aligned = m_painter->deviceTransform().isIdentity() && m_painter->device()->depth() >= 24 &&
                m_painter->opacity() == 1 &&
                m_painter->compositionMode() == QPainter::CompositionMode_SourceOver;
    m_plainTexts = m_painter->device()->devicePixelRatioF() == 1;
    return true;
}

void WavePainter::fillPixels(QColor const& color)
{
    m_painter->setPen(Qt::NoPen);
    m_painter->setBrush(color);
    m_painter->drawRects(m_pixels);
    m_pixels.clear();
}

void WavePainter::drawPicture(QPoint const& pixel, QImage const& image)
{
    m_painter->drawImage(pixel, image);
}

void WavePainter::fillRect(QRectF const& rect, QColor const& color)
{
    m_painter->fillRect(mapped(rect), color);
}

void WavePainter::drawLines(QVector<QLineF> const& lines, QPen const& pen)
{
    if (lines.isEmpty())
        return;
    m_painter->setPen(pen);
    if (!m_exact) {
        m_painter->drawLines(lines);
        return;
    }
    QVector<QLineF> mapped;
    mapped.reserve(lines.size());
    for (QLineF const& line : lines)
        mapped.append(m_map.map(line));
    m_painter->drawLines(mapped);
}

void WavePainter::drawHorizontalLine(double left, double right, double y, QColor const& color)
{
    if (m_exact) {
        addPixels(column(left), column(right), row(y), row(y));
        fillPixels(color);
    } else {
        drawLines({QLineF(left, y, right, y)}, QPen(color, 0));
    }
}

void WavePainter::drawRect(QRectF const& rect, QPen const& pen, QColor const& brush)
{
    if (m_exact) {
        addPixels(column(rect.left()), column(rect.right()), row(rect.top()), row(rect.bottom()));
        fillPixels(brush);
        return;
    }
    m_painter->setPen(pen);
    m_painter->setBrush(brush);
    m_painter->drawRect(rect);
}

QPainter* WavePainter::itemPainter(QPen const& pen, QBrush const& brush)
{
    m_painter->setWorldTransform(m_itemTransform);
    m_painter->setPen(pen);
    m_painter->setBrush(brush);
    return m_painter;
}

void WavePainter::drawText(QRectF const& box, QString const& text, QPen const& pen,
                           QFont const& font)
{
    ValueText const* const kept = m_plainTexts ? keptValueText(text, font) : nullptr;
    QSizeF const extent = kept ? kept->extent : valueTextExtent(text, font);
    if (box.width() < extent.width() || box.height() < extent.height())
        return;
    // Texts are laid out in numbers of 26 bits before the point. So the box goes to the origin, or
    // nothing would be seen far behind in a capture.
    QTransform const& t = m_itemTransform;
    QTransform const unscaled(1, t.m12(), t.m21(), 1, t.dx(), t.dy());
    m_painter->setWorldTransform(QTransform::fromTranslate(box.x(), box.y()) * unscaled);
    m_painter->setPen(pen);
    m_painter->setFont(font);
    QSizeF const room = kept ? box.size() - kept->text.size() : QSizeF();
    if (kept && room.width() >= 0 && room.height() >= 0) // nothing is clipped
        m_painter->drawStaticText(QPointF(0, room.height() / 2), kept->text);
    else
        m_painter->drawText(QRectF(QPointF(), box.size()), Qt::AlignLeft | Qt::AlignVCenter, text);
}

} // namespace WaveMonitor
