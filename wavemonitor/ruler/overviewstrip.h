#pragma once

#include <QPixmap>
#include <QVector>
#include <QWidget>

class QPainter;

namespace WaveMonitor {

class RulerView;
class WaveView;

/// The whole capture on a strip: where its rows change and how densely, the begins of its windows
/// (red, half as high), triggers (yellow), markers and cursor in the colours that they have in the
/// waves, and a frame around the part that the waves show. A click centres the waves, a drag
/// scrolls them.
class OverviewStrip : public QWidget
{
    Q_OBJECT

public:
    /// Neither view is owned; both must live as long as the strip.
    OverviewStrip(WaveView* waves, RulerView* ruler, QWidget* parent);

    /// Of every strip, in pixels.
    static constexpr int Height = 24;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    struct Part
    {
        double left;    ///< A time in samples.
        double visible; ///< Samples.
    };

    Part visiblePart() const;
    double timeAt(int x) const;
    void updateDensities();
    void paintLine(QPainter& painter, double time, QColor const& color, int top = 0) const;
    void paintWindows(QPainter& painter) const;
    void paintMarkers(QPainter& painter) const;
    void paintVisiblePart(QPainter& painter) const;

    WaveView* m_waves;
    RulerView* m_ruler;
    QVector<quint64> m_shown; ///< What the picture was made of.
    QPixmap m_densities;
    double m_grip = 0; ///< From the left edge of the waves to the mouse, in samples.
    bool m_dragging = false;
};

} // namespace WaveMonitor
