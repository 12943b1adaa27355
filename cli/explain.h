#pragma once

#include "cli/explanation.h"
#include "cli/overrides.h"

#include <QList>

namespace VEK::Cli {

/// What is to be explained, and by which samples: those of a dump, of a bench, or of a capture.
struct ExplainSettings
{
    QString configuration;
    QString vcd;     ///< A dump...
    QString clock;   ///< ...and its sample clock; empty: each core's own.
    QString bench;   ///< A bench file.
    QString capture; ///< A capture, such as a forced one.
    QString device;
    QList<int> cores; ///< Indexes; empty: all.
    Overrides overrides;
};

/// What is told of all cores.
struct Explanations
{
    QList<Explanation> cores;
    QStringList warnings;
};

/// Programs a simulated chip with the words of a run and shows it the samples, whose number the
/// memory does not depend on. Throws a Failure for what can't be used.
Explanations explain(ExplainSettings const& settings);

/// The sentences of all cores, each with its name if there are several; a line each.
QString sentenceOf(Explanations const& told);

/// All of it in lines, for people; the sentences come last.
QString textOf(Explanations const& told);

} // namespace VEK::Cli
