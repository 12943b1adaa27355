#pragma once

#include "analyzer/batchrun.h"
#include "results/signaldata.h"

#include <QBitArray>
#include <QObject>

#include <memory>

namespace VEK {

class VekLiteDataManager;

/// One batch capture of a lite configuration file: one core, one CSV file. Says on standard output
/// what happens and ends with `finish`.
class VekCmdLiteAnalyzer : public QObject
{
    Q_OBJECT

public:
    VekCmdLiteAnalyzer();
    ~VekCmdLiteAnalyzer() override;

    /// Loads a file that ends in ".vek" or ".rsx". False, without a word, for another ending or
    /// while a run is on; false with a message when it does not hold exactly one core.
    bool open(QString const& path);

    /// Name of the result file without its ending, used as it stands; when empty it is made of
    /// the configuration file's name.
    void setOutputBase(QString const& base) { m_run.setOutputBase(base); }
    /// Model name of the target device: on some the first row is one sample ahead.
    void setDeviceName(QString const& name) { m_deviceName = name; }

    /// Connects to the server of that name, opens the chain and starts the core. Without that
    /// server the run says so and never finishes.
    void start(QString const& serverName, QString const& cable, QString const& location);

    /// Decodes the read-back: rows of one bit a signal, packed, the first sample at the end. Empty
    /// without bits, core or signals.
    QList<WaveMonitor::SignalData> handleTdoData(QBitArray const& tdo) const;

Q_SIGNALS:
    /// The run is over. Emitted once for each result of the manager.
    void finish();

public Q_SLOTS:
    void onComplete(int status);
    void onReadRamComplete();

private:
    BatchRun m_run;
    QString m_deviceName;
    std::unique_ptr<VekLiteDataManager> m_manager;
};

} // namespace VEK
