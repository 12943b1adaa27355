#include "analyzer/liteanalyzer.h"

#include "acquire/litedatamanager.h"
#include "acquire/samples.h"
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
    return mayOpen(*m_manager, path) && m_run.load(*m_manager, path);
}

void VekCmdLiteAnalyzer::start(QString const& serverName, QString const& cable,
                               QString const& location)
{
    QString const announcement = QStringLiteral("Start running VEK Lite analyzer.");
    if (!startRun(*m_manager, announcement, serverName, cable, location))
        return;
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
    m_run.exportWindow(QString(), 0, m_manager->core()->dataSignalList, decoded);
}

QList<WaveMonitor::SignalData> VekCmdLiteAnalyzer::handleTdoData(QBitArray const& tdo) const
{
    SXCore_Lite const* core = m_manager->core();
    return core ? liteSamples(*core, m_deviceName, tdo) : QList<WaveMonitor::SignalData>();
}

} // namespace VEK
