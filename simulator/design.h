#pragma once

#include "simulator/truthtable.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace VEK {
class SxCore;
}

namespace VEK::Simulator {

/// A trigger port as it is wired up.
struct BuiltPort
{
    std::vector<int> positions; ///< Places in `BuiltCore::signalNames`, first signal first.
};

/// A match unit as it is wired up.
struct BuiltUnit
{
    int port = -1; ///< Place in `BuiltCore::ports`; -1: there is no such unit.
    bool hasCounter = false;
};

/// One standard core as it was built into the design: nothing in here can be set over the wire,
/// and nothing that is set over the wire is in here.
struct BuiltCore
{
    static constexpr int Units = TruthTable::Units;

    int index = 0;
    int shiftWidth = 16;  ///< S: bits of a register field and of a record.
    int dataCount = 0;    ///< N: signals that are captured, the first in `signalNames`.
    int storageDepth = 1; ///< D: records.
    bool isDynamic = false;
    bool hasCaptureInit = false;
    QString sampleClock;
    QStringList signalNames; ///< What is sampled: the captured signals, then others of the ports.
    std::vector<BuiltPort> ports;
    BuiltUnit units[Units];
    std::vector<TruthTable> expressions; ///< Of a static core, by unit number.
    QStringList expressionTexts;         ///< What they were made of.
    unsigned expressionUnits = 0;        ///< A bit for each unit that they name.
};

/// Takes the built structure out of a core's description; false with an `error` for one that can't
/// have been built.
bool buildCore(SxCore const& core, BuiltCore& built, QString& error);

/// Reads the standard cores of a design from its `.vek` file, in file order; false with an `error`
/// for a file that holds none.
bool readStandardDesign(QString const& path, std::vector<BuiltCore>& cores, QString& error);

} // namespace VEK::Simulator
