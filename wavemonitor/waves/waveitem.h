#pragma once

#include <QColor>
#include <QGraphicsItem>

namespace WaveMonitor {

class ChangeCounts;
class WavePainter;

/// What the graphics items of all rows share. In scene units one sample is 50 wide and a row 30
/// high; x 0 is the begin of sample 0 and y 0 the top of the row.
class WaveItem : public QGraphicsItem
{
public:
    /// Of the wave; `Qt::green` at the start.
    QColor const& color() const { return m_color; }
    void setColor(QColor const& color);

    /// Whether the row is highlighted. The tree's selection decides, not the scene's.
    bool waveSelected() const { return m_selected; }
    void setWaveSelected(bool selected);

    /// 30, but for a bus that is drawn as a chart. The row in the tree is as high.
    virtual int rowHeight() const;

    /// Where the row's samples change, built at the first call and dropped with the samples; null
    /// for a row without samples.
    virtual ChangeCounts const* changeCounts() const { return nullptr; }

protected:
    WaveItem();

    /// The line at the bottom of the row and, where the row is selected, the veil over it.
    void paintFrame(WavePainter& painter, QRectF const& exposed, double bottomLine) const;

private:
    QColor m_color = Qt::green;
    bool m_selected = false;
};

} // namespace WaveMonitor
