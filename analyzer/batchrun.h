#pragma once

#include "model/capturecore.h"
#include "results/signaldata.h"

#include <QList>
#include <QString>

namespace VEK {

class DataManager;

/// What the runs of both core kinds share: how they load and start, what they say and write.
class BatchRun
{
public:
    /// See `outputPrefix`.
    void setOutputBase(QString const& base) { m_outputBase = base; }

    /// Loads a file into a manager of either kind; says so when that fails.
    template <typename Manager>
    bool load(Manager& manager, QString const& path)
    {
        QString error;
        return noteLoaded(path, manager.readVekFile(path, error));
    }

    /// Announces and writes the CSV file of one window, one sample a microsecond whatever the clock
    /// was; its name is the prefix and `suffix`. A file that can't be written does not end the run.
    /// `layout` is the core's list of captured signals and buses, `decoded` the signals of its flat
    /// list.
    void exportWindow(QString const& suffix, int triggerPos, QList<SignalItem> const& layout,
                      QList<WaveMonitor::SignalData> const& decoded) const;

private:
    bool noteLoaded(QString const& path, bool ok);

    QString m_vekFile;
    QString m_outputBase;
};

/// The prefix of the result files: `outputBase`, or without one the file's name up to its first
/// dot, which has no directory.
QString outputPrefix(QString const& outputBase, QString const& vekFile);

/// Whether an idle manager takes the path: it ends in ".vek" or ".rsx", in lower case.
bool mayOpen(DataManager const& manager, QString const& path);

/// Announces the run, connects the session to that server and opens the chain of one device, on the
/// located cable if both texts are given. False, with a message, when there is no such server.
bool startRun(DataManager& manager, QString const& announcement, QString const& serverName,
              QString const& cable, QString const& location);

/// The closing line for a result of the manager.
void printResult(int status);

} // namespace VEK
