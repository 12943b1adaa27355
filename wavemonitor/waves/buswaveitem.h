#pragma once

#include "wavemonitor/waves/bussamples.h"
#include "wavemonitor/waves/changecounts.h"
#include "wavemonitor/waves/waveitem.h"

#include <QBitArray>
#include <QList>

#include <optional>

namespace WaveMonitor {

class DataFormatter;

/// The wave of a bus: values in an outline, or a chart of them, as the formatter says.
class BusWaveItem : public WaveItem
{
public:
    /// The formatter is not owned and must outlive the item.
    explicit BusWaveItem(DataFormatter const* formatter);

    /// One array a sample, of one bit a member of the bus each. All are as wide as the first one:
    /// bits that others lack are 0, further ones are ignored.
    void setWaveData(QList<QBitArray> const& samples);

    /// The same samples as one array a member, without a copy; see `BusSamples::setMembers`.
    void setMemberData(QList<QBitArray> const& members);

    BusSamples const& samples() const { return m_samples; }

    /// Takes the row height over from the formatter: to be called after a change of either the
    /// format or the height. Both functions above do it as well.
    void updateRowHeight();

    /// A bus without members is 30 high in every format.
    void setMemberless(bool memberless);

    int rowHeight() const override { return m_rowHeight; }
    QRectF boundingRect() const override;
    ChangeCounts const* changeCounts() const override;
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

private:
    BusSamples m_samples;
    mutable std::optional<ChangeCounts> m_changeCounts;
    DataFormatter const* m_formatter;
    bool m_memberless = false;
    int m_rowHeight;
};

} // namespace WaveMonitor
