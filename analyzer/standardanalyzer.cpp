#include "analyzer/standardanalyzer.h"

#include "acquire/samples.h"
#include "acquire/standarddatamanager.h"
#include "analyzer/batchrun.h"
#include "analyzer/console.h"
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
    if (m_manager->status() != AnalyzerIdle || !hasRunEnding(path))
        return false;
    return loadVekFile(path);
}

bool VekCmdStandardAnalyzer::loadVekFile(QString const& path)
{
    QString error;
    bool const ok = m_manager->readVekFile(path, error);
    if (ok)
        m_vekFile = path;
    else
        printInvalidFile(path);
    return ok;
}

void VekCmdStandardAnalyzer::start(QString const& serverName, QString const& cable,
                                   QString const& location)
{
    printLine(QStringLiteral("Start running VEK analyzer."));
    if (!connectToServer(serverName))
        return;
    openChain(*m_manager, cable, location);
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
    // appended, not filled in: a prefix may hold a place marker of its own
    QString const suffix = QStringLiteral("_core%1_window%2").arg(core).arg(window);
    exportWindow(outputPrefix(m_outputBase, m_vekFile) + suffix, captured->triggerPos,
                 captured->dataSignalList, handleTdoData(captured, tdo));
}

QList<WaveMonitor::SignalData> VekCmdStandardAnalyzer::handleTdoData(SxCore const* core,
                                                                     QBitArray const& tdo) const
{
    return core ? standardSamples(*core, tdo) : QList<WaveMonitor::SignalData>();
}

} // namespace VEK
