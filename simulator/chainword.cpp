#include "simulator/chainword.h"

#include "image/registermap.h"

namespace VEK::Simulator {

ChainWord::ChainWord(QBitArray const& word) : rest(word.size() - Opcode::Bits - Opcode::AddressBits)
{
    if (rest < 0)
        return;
    opcode = fieldNumber(word, 0, Opcode::Bits);
    address = unsigned(fieldNumber(word, Opcode::Bits, Opcode::AddressBits));
}

} // namespace VEK::Simulator
