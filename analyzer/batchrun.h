#pragma once

#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QList>
#include <QString>

/// What the runs of both core kinds share: what they say, how they start and what they write.
namespace VEK {

class DataManager;

/// True for a path that a run takes: it ends in ".vek" or ".rsx", in lower case.
bool hasRunEnding(QString const& path);

/// "Error: Invalid VEK file ..."
void printInvalidFile(QString const& path);

/// The closing line for a result of the manager.
void printResult(int status);

/// Connects the session to that server; says so when there is none.
bool connectToServer(QString const& serverName);

/// The prefix of the result files: `outputBase`, or without one the file's name up to its first
/// dot, which has no directory.
QString outputPrefix(QString const& outputBase, QString const& vekFile);

/// Opens the chain of one device, on the located cable if both texts are given.
void openChain(DataManager& manager, QString const& cable, QString const& location);

/// Announces and writes the CSV file of one window, one sample a microsecond whatever the clock
/// was. A file that can't be written does not end the run. `layout` is the core's list of captured
/// signals and buses, `decoded` the signals of its flat list.
void exportWindow(QString const& prefix, int triggerPos, QList<SignalItem> const& layout,
                  QList<WaveMonitor::SignalData> const& decoded);

} // namespace VEK
