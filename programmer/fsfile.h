#pragma once

#include "programmer/deviceitem.h"

#include <QString>

/// The header of an Fs file, the bitstream text that the programmer downloads: the lines at its
/// start that begin with "//" say what the file was made for.
namespace VEK {

/// Reads the header of `file` into `row`, which gets the path, the checksum, the user code and the
/// ID code; the rest of the file is not looked at. A file made for another device or, if `crc` is
/// not empty, for another configuration is refused: the row's path and codes are cleared, and
/// `warning` says why. What is no readable file leaves the row alone. Gives false when the file is
/// refused; one for another configuration gives true all the same, deliberately.
bool readFsHeader(QString const& file, QString const& crc, DeviceItem& row, QString& warning);

/// A hexadecimal digit for each four characters of 0 and 1 from the start; other groups, and up to
/// three characters left over, give none.
QString strBit2Hex(QString const& bits);

} // namespace VEK
