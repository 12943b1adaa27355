#pragma once

#include "analyzer/batchrun.h"
#include "results/signaldata.h"

#include <QBitArray>
#include <QObject>

#include <memory>

namespace VEK {

class SxCore;
class VekStandardDataManager;

/// One batch capture of a standard configuration file: every core of it, one CSV file a window.
/// Says on standard output what happens and ends with `finish`.
class VekCmdStandardAnalyzer : public QObject
{
    Q_OBJECT

public:
    VekCmdStandardAnalyzer();
    ~VekCmdStandardAnalyzer() override;

    /// Loads a file that ends in ".vek" or ".rsx". False, without a word, for another ending or
    /// while a run is on; false with a message when it has no cores.
    bool open(QString const& path);
    bool loadVekFile(QString const& path);

    /// Prefix of the result files, used as it stands; when empty it is made of the file's name.
    void setOutputBase(QString const& base) { m_run.setOutputBase(base); }

    /// Connects to the server of that name, opens the chain and arms every core. Without that
    /// server the run says so and never finishes.
    void start(QString const& serverName, QString const& cable, QString const& location);

    /// Decodes the read-back of one window: the record that was stored last stands first, each of
    /// `dataOutShiftWidth()` bits with the trigger mark and the signals at its end. The ring is
    /// unrolled so that the trigger lands at the core's `triggerPos`. Empty without a core, bits
    /// or samples to expect.
    QList<WaveMonitor::SignalData> handleTdoData(SxCore const* core, QBitArray const& tdo) const;

Q_SIGNALS:
    /// The run is over. Emitted once for each result of the manager.
    void finish();

public Q_SLOTS:
    void onComplete(int status);
    void onReadRamComplete(int core, int window);

private:
    BatchRun m_run;
    std::unique_ptr<VekStandardDataManager> m_manager;
};

} // namespace VEK
