#pragma once

#include "results/sampleclock.h"

#include <QString>

#include <optional>

/// What a core's samples mean in time: windows of equal length that lie one after the other, each
/// with a trigger of its own. How long the gaps between windows took nobody knows: no distance
/// counts them as time.
class SampleTimes
{
public:
    SampleTimes() = default;
    /// `trigger` is its sample within a window.
    SampleTimes(int length, int windows, int trigger, VEK::SampleClock const& clock);

    int length() const { return m_length; }
    VEK::SampleClock const& clock() const { return m_clock; }

    int windowOf(int sample) const;
    /// Samples from the trigger of its own window, negative before it.
    int fromTrigger(int sample) const;
    /// The first trigger behind a sample, or the first of all when there is none.
    int nextTrigger(int sample) const;

    /// "12 samples", with a known clock "12 samples (120 ns)"; between two windows only the count.
    QString distance(int from, int to) const;
    /// "sample 300, 172 behind the trigger (1.72 us)", with several windows also which one.
    QString place(int sample) const;

    /// A sample ("1200"), one from the trigger of the window that `near` lies in ("+20", "-5"), or
    /// a time from that trigger ("1.5us", "-200 ns"). Nothing for any other text, or outside of the
    /// samples.
    std::optional<int> parse(QString const& text, int near) const;

private:
    QString withTime(QString const& text, int samples) const;

    int m_length = 0;
    int m_windowLength = 1;
    int m_trigger = 0;
    VEK::SampleClock m_clock;
};

/// "1.72 us": four digits that matter, in the unit that leaves 1 to 999 in front of the point.
QString durationText(double seconds);
