#pragma once

#include <QString>

namespace VEK {

/// The frequency of a sample clock, for the times of samples. Exact for frequencies of up to 1 THz
/// with at most 6 decimals of a hertz.
class SampleClock
{
public:
    /// Reads a text such as "50MHz", "33.333333 MHz", "1.5GHz" or "100000" (Hz). False for any
    /// other; the clock stays as it was.
    bool parse(QString const& text);

    /// Takes the frequency from the distance of two samples in a unit as `unit` gives it. False,
    /// and the clock stays as it was, unless `Times` would give just these times.
    bool setPeriod(quint64 step, QString const& unit);

    /// Whether a frequency is known. Without one a sample is a unit of time.
    bool isKnown() const { return m_microhertz > 0; }

    /// From a sample to the next, in seconds; 0 without a frequency.
    double period() const { return isKnown() ? 1e6 / double(m_microhertz) : 0; }

    /// The largest of s, ms, us, ns and ps in which every sample's time is a whole number; ps when
    /// there is none, with times rounded. Empty without a frequency.
    QString unit() const;

    /// The times of samples 0, 1 and so on, one after the other, in `unit`.
    class Times
    {
    public:
        explicit Times(SampleClock const& clock);
        quint64 now() const { return m_time; }
        void next();

    private:
        quint64 m_step = 1; ///< Whole units of a sample.
        quint64 m_rest = 0; ///< What a sample has above them, in parts of a unit.
        quint64 m_parts = 1;
        quint64 m_time = 0;
        quint64 m_carry = 0; ///< Parts, half a unit ahead so that the times are rounded.
    };

private:
    quint64 m_microhertz = 0;
};

} // namespace VEK
