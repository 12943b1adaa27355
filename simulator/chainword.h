#pragma once

#include "simulator/bitfield.h"

namespace VEK::Simulator {

/// A word off the chain, taken apart as every core does: an opcode, an address and what the opcode
/// needs.
struct ChainWord
{
    explicit ChainWord(QBitArray const& word);

    /// Whether it has this opcode, one of `Opcode`, and so many bits behind the address.
    bool is(char const* name, int size) const
    {
        return rest == size && opcode == opcodeNumber(name);
    }

    int rest;             ///< Bits behind the address; negative: the word ends before.
    quint64 opcode = 0;   ///< 0, which no opcode is, for such a word.
    unsigned address = 0; ///< The same.
};

} // namespace VEK::Simulator
