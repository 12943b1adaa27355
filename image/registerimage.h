#pragma once

#include <QBitArray>
#include <QList>
#include <QString>

namespace VEK {

class SxCore;

/// Where the cores of a data manager came from.
enum FileKind : int { FileKindVek = 0, FileKindRsx = 1 };

/// The 5-bit word that turns the scan path to a core: 1, then the low 4 bits of `index`.
QBitArray coreSelectWord(int index);

/// A write to the start register of a core whose fields have `width` bits.
QBitArray startRegisterWord(unsigned int value, int width);

/// The words that program a core, in the order in which they must be shifted in: core select, the
/// four capture registers, then the vectors of each usable match unit. Every data field has
/// `dataOutShiftWidth()` bits, the number at its end. `deviceName` matters for one number only,
/// and only for a core from a `.vek` file.
QList<QBitArray> generateRegisterBit(SxCore const* core, QString const& deviceName, int fileKind);

} // namespace VEK
