#pragma once

#include "wavemonitor/waves/changecounts.h"
#include "wavemonitor/waves/waveitem.h"

#include <QBitArray>

#include <optional>

namespace WaveMonitor {

/// The wave of one signal.
class SignalWaveItem : public WaveItem
{
public:
    /// One bit a sample, the oldest first. Data that shares its storage with the present one
    /// changes nothing.
    void setWaveData(QBitArray const& data);
    QBitArray const& waveData() const { return m_data; }

    QRectF boundingRect() const override;
    ChangeCounts const* changeCounts() const override;
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

private:
    QBitArray m_data;
    mutable std::optional<ChangeCounts> m_changeCounts;
};

} // namespace WaveMonitor
