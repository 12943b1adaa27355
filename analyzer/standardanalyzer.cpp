#include "analyzer/standardanalyzer.h"

#include "acquire/samples.h"
#include "acquire/standarddatamanager.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"

namespace VEK {

VekCmdStandardAnalyzer::VekCmdStandardAnalyzer() : m_manager(new VekStandardDataManager)
{
    connect(m_manager.get(), &VekStandardDataManager::triggerComplete, this,
            &VekCmdStandardAnalyzer::onComplete);
    connect(m_manager.get(), &VekStandardDataManager::readRamComplete, this,
            &VekCmdStandardAnalyzer::onReadRamComplete);
}

VekCmdStandardAnalyzer::~VekCmdStandardAnalyzer()
{
    JtagSession::shared()->disconnectServer();
}

bool VekCmdStandardAnalyzer::open(QString const& path)
{
    return mayOpen(*m_manager, path) && loadVekFile(path);
}

bool VekCmdStandardAnalyzer::loadVekFile(QString const& path)
{
    return m_run.load(*m_manager, path);
}

void VekCmdStandardAnalyzer::start(QString const& serverName, QString const& cable,
                                   QString const& location)
{
    QString const announcement = QStringLiteral("Start running VEK analyzer.");
    if (!startRun(*m_manager, announcement, serverName, cable, location))
        return;
    QList<int> indexes;
    for (SxCore const* core : m_manager->cores())
        indexes.append(core->index);
    m_manager->startDataTrigger(indexes);
}

void VekCmdStandardAnalyzer::onComplete(int status)
{
    printResult(status);
    emit finish();
}

void VekCmdStandardAnalyzer::onReadRamComplete(int core, int window)
{
    // first of all: this also moves the manager on
    QBitArray const tdo = combine(m_manager->getCurrentData(window));
    SxCore const* captured = m_manager->getCore(core);
    if (!captured)
        return;
    QString const suffix = QStringLiteral("_core%1_window%2").arg(core).arg(window);
    m_run.exportWindow(suffix, captured->triggerPos, captured->dataSignalList,
                       handleTdoData(captured, tdo));
}

QList<WaveMonitor::SignalData> VekCmdStandardAnalyzer::handleTdoData(SxCore const* core,
                                                                     QBitArray const& tdo) const
{
    return core ? standardSamples(*core, tdo) : QList<WaveMonitor::SignalData>();
}

} // namespace VEK
