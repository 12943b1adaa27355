#pragma once

#include "dump/sampletable.h"

#include <QString>

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

/// The rows of a pattern for `signalCount` signals; an empty table for none. The noise takes one
/// bit a signal, first signal first, from a 32-bit shift register that starts at the given
/// value: each bit is the sum of the 1st, 2nd, 22nd and 32nd before it.
Dump::SampleTable samplePattern(Pattern const& pattern, int signalCount);

} // namespace VEK::Simulator
