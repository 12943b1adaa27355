#pragma once

#include <QBitArray>
#include <QString>

namespace VEK::Simulator {

/// The simulated chip as the scan chain sees it: bits in, bits out. One subclass for each kind of
/// capture core, `StandardChip` and `LiteChip`.
class Chip
{
public:
    virtual ~Chip();

    /// Memory, registers and tables become 0 and the stimulus goes to its first sample. Comes
    /// before anything else.
    virtual void powerUp() = 0;
    /// Takes one word off the chain. What makes no sense is dropped.
    virtual void write(QBitArray const& word) = 0;
    /// `size` bits (0 or more) of what was selected last, right-justified.
    virtual QBitArray read(int size) = 0;
    /// Why what was selected last will not be done by itself, in words; empty while it may be.
    virtual QString reason() const { return QString(); }
};

} // namespace VEK::Simulator
