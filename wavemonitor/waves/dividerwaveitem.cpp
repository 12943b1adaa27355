#include "wavemonitor/waves/dividerwaveitem.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/waves/wavepainter.h"

#include <QStyleOptionGraphicsItem>

#include <cmath>

namespace WaveMonitor {

using Constants::Graphics::kSampleWidth;

void DividerWaveItem::setWaveData(QBitArray const& data)
{
    if (data.size() == m_length)
        return;
    prepareGeometryChange();
    m_length = data.size();
    update();
}

QRectF DividerWaveItem::boundingRect() const
{
    return QRectF(0, 0, m_length * kSampleWidth, rowHeight());
}

void DividerWaveItem::paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget*)
{
    QRectF const exposed = option->exposedRect;
    if (exposed.isEmpty())
        return;
    WavePainter wave(painter, exposed);
    paintFrame(wave, exposed, rowHeight());
    // The width is deliberately the right edge and not the distance of both edges: the bar goes on
    // beyond what is exposed, where it is clipped away.
    QRectF const bar(std::floor(exposed.left() / kSampleWidth) * kSampleWidth, 0,
                     std::ceil(exposed.right() / kSampleWidth) * kSampleWidth, rowHeight());
    wave.drawRect(bar, QPen(color(), 0, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin), color());
}

} // namespace WaveMonitor
