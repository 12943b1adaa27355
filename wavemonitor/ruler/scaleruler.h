#pragma once

#include <QGraphicsItem>

namespace WaveMonitor {

/// The time scale: labelled ticks by sample number, and red ticks with the window's number, which
/// stand above the scale, where each window begins. Paints only what is exposed; its scene repaints
/// in full.
class ScaleRuler : public QGraphicsItem
{
public:
    explicit ScaleRuler(QGraphicsItem* parent = nullptr);

    /// Samples; negative counts as 0.
    int length() const { return m_length; }
    void setLength(int length);

    /// Windows. With 0, or more than there are samples, there are no red ticks.
    int num() const { return m_num; }
    void setNum(int num);

    QRectF boundingRect() const override;
    void paint(QPainter* painter, QStyleOptionGraphicsItem const* option, QWidget* widget) override;

private:
    int m_length = 0;
    int m_num = 1;
};

} // namespace WaveMonitor
