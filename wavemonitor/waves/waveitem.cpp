#include "wavemonitor/waves/waveitem.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/waves/wavepainter.h"

namespace WaveMonitor {

namespace {

constexpr QRgb BottomLineColor = 0xff555555;
constexpr QRgb VeilColor = 0x70888888;

} // namespace

WaveItem::WaveItem()
{
    setFlags(ItemIsSelectable | ItemUsesExtendedStyleOption);
}

void WaveItem::setColor(QColor const& color)
{
    m_color = color;
    update();
}

void WaveItem::setWaveSelected(bool selected)
{
    m_selected = selected;
    update();
}

int WaveItem::rowHeight() const
{
    return Constants::Graphics::kRowHeight;
}

void WaveItem::paintFrame(WavePainter& painter, QRectF const& exposed, double bottomLine) const
{
    painter.drawHorizontalLine(exposed.left(), exposed.right(), bottomLine,
                               QColor::fromRgb(BottomLineColor));
    if (m_selected)
        painter.fillRect(exposed.adjusted(0, 1, 0, 0), QColor::fromRgba(VeilColor));
}

} // namespace WaveMonitor
