#pragma once

#include "simulator/bench.h"

#include <QIODevice>
#include <QStringList>

namespace VEK::Simulator {

/// The simulated command-line programmer: finds the cables of the bench, scans its chain, and
/// "downloads" a file by leaving the mark that lets the bench's device open. Prints what the real
/// one prints. Gives the exit status.
int runLoader(Bench const& bench, QStringList const& arguments, QIODevice& out);

} // namespace VEK::Simulator
