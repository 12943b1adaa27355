#pragma once

#include "model/capturecore.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace VEK::Cli {

/// Neighbouring signals of a trigger port that read as one number: a bus, a vector, one signal.
/// Values come in words whose first signal is the highest bit of word 0.
struct PortGroup
{
    QString label;
    int from = 0;  ///< Place of the first signal in the port.
    int width = 1; ///< Signals; they never straddle a word.

    std::size_t word() const { return std::size_t(from / 64); }
    int shift() const { return 64 - width - from % 64; }
    quint64 mask() const { return (~quint64(0) >> (64 - width)) << shift(); }
    quint64 value(quint64 const* words) const { return (words[word()] & mask()) >> shift(); }
};

/// The groups of a port whose signals have these names, first signal first. Buses and display
/// names come from `port`, null for none, if it has the same signals.
std::vector<PortGroup> groupsOf(QStringList const& names, TriggerPort const* port);

/// A number of so many bits: "0x5A", of one bit "1".
QString numberText(quint64 value, int width);

/// All signals of a port as one number, in hexadecimal.
QString numberText(quint64 const* words, int width);

} // namespace VEK::Cli
