#include "analyzer/liteanalyzer.h"

#include "acquire/litedatamanager.h"
#include "acquire/samples.h"
#include "analyzer/batchrun.h"
#include "analyzer/console.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"

namespace VEK {

VekCmdLiteAnalyzer::VekCmdLiteAnalyzer() : m_manager(new VekLiteDataManager)
{
    connect(m_manager.get(), &VekLiteDataManager::triggerComplete, this,
            &VekCmdLiteAnalyzer::onComplete);
    connect(m_manager.get(), &VekLiteDataManager::readRamComplete, this,
            &VekCmdLiteAnalyzer::onReadRamComplete);
}

VekCmdLiteAnalyzer::~VekCmdLiteAnalyzer()
{
    JtagSession::shared()->disconnectServer();
}

bool VekCmdLiteAnalyzer::open(QString const& path)
{
    if (m_manager->status() != AnalyzerIdle || !hasRunEnding(path))
        return false;
    QString error;
    bool const ok = m_manager->readVekFile(path, error);
    if (ok)
        m_vekFile = path;
    else
        printInvalidFile(path);
    return ok;
}

void VekCmdLiteAnalyzer::start(QString const& serverName, QString const& cable,
                               QString const& location)
{
    printLine(QStringLiteral("Start running VEK Lite analyzer."));
    if (!connectToServer(serverName))
        return;
    openChain(*m_manager, cable, location);
    m_manager->startDataTrigger(0);
}

void VekCmdLiteAnalyzer::onComplete(int status)
{
    printResult(status);
    emit finish();
}

void VekCmdLiteAnalyzer::onReadRamComplete()
{
    // first of all: this also moves the manager on
    QBitArray const tdo = combine(m_manager->getCurrentData());
    QList<WaveMonitor::SignalData> const decoded = handleTdoData(tdo);
    if (decoded.isEmpty())
        return;
    exportWindow(outputPrefix(m_outputBase, m_vekFile), 0, m_manager->core()->dataSignalList,
                 decoded);
}

QList<WaveMonitor::SignalData> VekCmdLiteAnalyzer::handleTdoData(QBitArray const& tdo) const
{
    SXCore_Lite const* core = m_manager->core();
    return core ? liteSamples(*core, m_deviceName, tdo) : QList<WaveMonitor::SignalData>();
}

} // namespace VEK
