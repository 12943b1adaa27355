#pragma once

#include "dump/sampletable.h"

#include <functional>

namespace VEK::Simulator {

/// A stimulus without a file.
struct Pattern
{
    enum Kind {
        Counter,    ///< Row k is the number k, the last signal its lowest bit.
        WalkingOne, ///< In row k the signal k modulo the signal count is 1, the others 0.
        Lfsr        ///< Noise: see `samplePattern`.
    };

    Kind kind = Counter;
    quint32 seed = 1; ///< Of the noise; not 0.
    qint64 samples = 65536;
};

/// Hands out the rows of a pattern for `signalCount` signals, none for none; `take` ends it with
/// false. The noise takes one
/// bit a signal, first signal first, from a 32-bit shift register that starts at the given
/// value: each bit is the sum of the 1st, 2nd, 22nd and 32nd before it.
void streamPattern(Pattern const& pattern, int signalCount,
                   std::function<bool(quint64 const* row)> const& take);

/// The same as a table.
Dump::SampleTable samplePattern(Pattern const& pattern, int signalCount);

} // namespace VEK::Simulator
