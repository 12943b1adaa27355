#pragma once

#include <QtGlobal>

namespace bench {

template <int Half>
void swapHalves(quint64* block, quint64 mask)
{
    for (int base = 0; base < 64; base += 2 * Half) {
        for (int k = base; k < base + Half; ++k) {
            quint64 const swap = ((block[k] >> Half) ^ block[k + Half]) & mask;
            block[k + Half] ^= swap;
            block[k] ^= swap << Half;
        }
    }
}

/// Bit c of word r of 64 words becomes bit r of word c.
inline void transpose(quint64* block)
{
    swapHalves<32>(block, 0x00000000FFFFFFFFu);
    swapHalves<16>(block, 0x0000FFFF0000FFFFu);
    swapHalves<8>(block, 0x00FF00FF00FF00FFu);
    swapHalves<4>(block, 0x0F0F0F0F0F0F0F0Fu);
    swapHalves<2>(block, 0x3333333333333333u);
    swapHalves<1>(block, 0x5555555555555555u);
}

} // namespace bench
