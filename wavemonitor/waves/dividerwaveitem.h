#pragma once

#include "wavemonitor/waves/waveitem.h"

#include <QBitArray>

namespace WaveMonitor {

/// A bar across the whole capture.
class DividerWaveItem : public WaveItem
{
public:
    /// Only the length of the array counts.
    void setWaveData(QBitArray const& data);
    int length() const { return m_length; }

    QRectF boundingRect() const override;
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

private:
    int m_length = 0;
};

} // namespace WaveMonitor
