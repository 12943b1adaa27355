#pragma once

#include "dump/vcdreader.h"
#include "model/capturecore.h"
#include "trigger/syntax.h"

#include <QSet>
#include <QStringList>

#include <vector>

namespace VEK::Cli {

/// A configuration that is to be made from the nets of a dump.
struct NewDesign
{
    QString dump;
    QString scope;          ///< In front of the names; may be empty.
    QString clock;          ///< Of the dump.
    QStringList patterns;   ///< Of nets, see `NetPattern`.
    QSet<QByteArray> paths; ///< Of further nets, as `VcdVariable::path`.
    int depth = 1024;
    int windows = 1;
    QString position = QStringLiteral("25%"); ///< Samples, or per cent of a window.
    QString trigger;                          ///< A text; empty: the first sample.
    int units = 0;                            ///< Further match units, each on a net of its own.
    bool isLite = false;
    QString device = QStringLiteral("TK-501");
    QString prefix; ///< Of the two files.
};

/// What was made of it.
struct MadeDesign
{
    QString configuration; ///< Its path.
    QString bench;         ///< Its path.
    int signalCount = 0;
    int amount = 0;   ///< Samples of a window.
    int position = 0; ///< Of the trigger in it.
};

/// All that a dump declares. Throws a Failure.
std::vector<Dump::VcdVariable> designNets(QString const& dump);

/// The signals of a design out of the nets of its dump, buses whole. Throws a Failure for a pattern
/// that fits none, and for a name that a configuration can't hold.
QList<SignalItem> designSignals(NewDesign const& design,
                                std::vector<Dump::VcdVariable> const& nets);

/// What is wrong with the text of the trigger; empty when a core can be made for it.
QList<TriggerError> designTriggerErrors(NewDesign const& design, QList<SignalItem> const& items);

/// Writes the configuration and its bench file. It is for rehearsals: it describes no core that was
/// built, and says so in its file. Files of others are not replaced. Throws a Failure.
MadeDesign makeDesign(NewDesign const& design);

} // namespace VEK::Cli
