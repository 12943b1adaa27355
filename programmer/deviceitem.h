#pragma once

#include "programmer/devicecatalogue.h"

#include <QString>

namespace VEK {

/// Status of a run of the programmer, and of a device.
enum ProgrammerStatus : int {
    ProgrammerFailed = 0,
    ProgrammerNothingFound = 1,
    ProgrammerRunning = 2,
    ProgrammerIdle = 3, ///< The file has not been downloaded yet.
    ProgrammerDownloaded = 4
};

/// One device of the scan chain, a row of the programmer's table.
struct DeviceItem
{
    /// The first series and device of the catalogue.
    DeviceItem();

    /// A device by name; nothing else is known of it.
    explicit DeviceItem(QString const& device);

    /// Takes a device of the catalogue with all that the catalogue says of it; an unknown name
    /// takes the catalogue's first device and series.
    void setDevice(QString const& name);

    /// Whether the device belongs to the series, and the catalogue knows both.
    bool isValid() const;

    int enable = 0; ///< 1 for the target device.
    int known = 0;  ///< 1 when the catalogue has the device; else the user edits its IR code.
    QString series;
    QString device;
    QString deviceN;  ///< Package group.
    QString deviceNV; ///< Version.
    QString fsFile;   ///< Path.
    QString idCode = QStringLiteral("00000000");
    QString userCode; ///< From the Fs file, as the checksum.
    QString checksum;
    int irCode = 8; ///< Length of the instruction register, bits.
    ProgrammerStatus status = ProgrammerIdle;
    Operation* operation = nullptr; ///< Not owned; null means bypass.
};

} // namespace VEK
