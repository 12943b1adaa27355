#pragma once

namespace WaveMonitor {

class WavePainter;

/// Dots of one size, which are ellipses with a thin pen around them. What pixels the raster engine
/// gives them was seen for all places in a pixel.
class DotPixels
{
public:
    /// In the item's coordinates.
    DotPixels(WavePainter const& painter, double width, double height);

    /// Whether the engine gives nothing to the inside that the pen does not.
    bool isAllPen() const { return m_width <= Widest; }

private:
    friend class LinePixels;

    static constexpr double Widest = 0.3; // wider ones have more shapes
    static constexpr double Highest = 3;
    static constexpr double Doubt = 1 / 1024.0; // about where the next pixel begins

    static bool isDoubtful(double rest) { return rest < Doubt || rest > 1 - Doubt; }

    double m_width; ///< In pixels, from the middle on; the height as well.
    double m_height;
    double m_begin; ///< The parts of a column where dots have no pixels in others.
    double m_end;
    bool m_known; ///< Whether their pixels can be told.
};

} // namespace WaveMonitor
