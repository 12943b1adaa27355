#pragma once

#include "jtag/protocol.h"

#include <QString>
#include <QStringList>

namespace VEK {

/// What the command line of the batch tool asks for.
struct CommandLine
{
    QString vekFile;
    QString outputBase;
    QString device;
    QString location;
    QString cableName; ///< Set by the FT2CH words only.
    CABLE cable = CableTR7QZ;
    CHANNEL channel = Channel0;
};

/// Walks the arguments, of which the first is the program's name. A word that is no option is
/// passed over, a later option overrides an earlier one, and the value of an option is the next
/// word whatever it is, or an empty text when there is none.
CommandLine parseCommandLine(QStringList const& arguments);

} // namespace VEK
