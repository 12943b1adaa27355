#include "wavemonitor/waves/buswaveitem.h"

#include "results/dataformatter.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/tree/layoutnode.h"
#include "wavemonitor/waves/buspicture.h"
#include "wavemonitor/waves/wavepainter.h"

#include <QStyleOptionGraphicsItem>

#include <cmath>

namespace WaveMonitor {

using Constants::Graphics::kSampleWidth;

namespace {

/// Samples that are drawn on each side of what is exposed: a run's shape depends on its neighbours.
constexpr int MoreSamples = 3;

int heightFor(DataFormatter const& formatter)
{
    return isChart(formatter.formatType()) ? formatter.rowHeight()
                                           : Constants::Graphics::kRowHeight;
}

} // namespace

BusWaveItem::BusWaveItem(DataFormatter const* formatter)
    : m_formatter(formatter), m_rowHeight(heightFor(*formatter))
{}

void BusWaveItem::setWaveData(QList<QBitArray> const& samples)
{
    QList<QBitArray> members;
    int const width = samples.isEmpty() ? 0 : samples.first().size();
    for (int i = 0; i < width; ++i) {
        QBitArray member(samples.size());
        int time = 0;
        for (QBitArray const& sample : samples)
            member.setBit(time++, i < sample.size() && sample.testBit(i));
        members.append(member);
    }
    setMemberData(members);
}

void BusWaveItem::setMemberData(QList<QBitArray> const& members)
{
    updateRowHeight();
    prepareGeometryChange();
    if (!m_samples.setMembers(members))
        return;
    m_changeCounts.reset();
    update();
}

ChangeCounts const* BusWaveItem::changeCounts() const
{
    if (!m_changeCounts)
        m_changeCounts.emplace(m_samples.members());
    return &*m_changeCounts;
}

void BusWaveItem::updateRowHeight()
{
    int const height = m_memberless ? Constants::Graphics::kRowHeight : heightFor(*m_formatter);
    if (height == m_rowHeight)
        return;
    prepareGeometryChange();
    m_rowHeight = height;
    update();
}

void BusWaveItem::setMemberless(bool memberless)
{
    m_memberless = memberless;
    updateRowHeight();
}

QRectF BusWaveItem::boundingRect() const
{
    return QRectF(0, 0, m_samples.length() * kSampleWidth, m_rowHeight);
}

void BusWaveItem::paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget*)
{
    QRectF const exposed = option->exposedRect;
    if (exposed.isEmpty())
        return;
    double const scale = painter->worldTransform().m11();
    WavePainter wave(painter, exposed);
    paintFrame(wave, exposed, m_rowHeight - 1);
    double const length = m_samples.length();
    double const first = std::max(0.0, std::floor(exposed.left() / kSampleWidth - MoreSamples));
    double const last = std::min(length, std::ceil(exposed.right() / kSampleWidth + MoreSamples));
    if (first >= last)
        return;
    QPen const pen(color(), 0, Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin);
    BusPicture picture{m_samples, *m_formatter, exposed, scale, int(first), int(last), {}, pen};
    if (isChart(m_formatter->formatType())) {
        paintBusChart(wave, picture);
    } else {
        findEdges(picture);
        paintBusOutline(wave, picture);
        paintBusTexts(wave, picture);
    }
}

} // namespace WaveMonitor
