#pragma once

#include <QProcessEnvironment>
#include <QString>

/// A capture of 65,536 samples of 64 signals, from the simulated chip.
namespace bench {

constexpr int WideSignals = 64;
constexpr int WideSamples = 65536;

/// Writes "core.vek", with so many cores that fire at their first sample, and "bench.json" with
/// these further members, such as R"(, "faults": {}})". The environment for the server that is to
/// serve it.
QProcessEnvironment layWideCapture(QString const& folder, int cores, QByteArray const& more = {});

/// The limit of reading one such core: the frames of the read alone, 8 of them on their way,
/// between two threads that do not look at them.
void moveFrames();

} // namespace bench
