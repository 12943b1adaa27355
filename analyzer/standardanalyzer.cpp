#include "analyzer/standardanalyzer.h"

#include "acquire/standarddatamanager.h"
#include "analyzer/batchrun.h"
#include "analyzer/console.h"
#include "analyzer/sampledecoder.h"
#include "analyzer/windowbuilder.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"

#include <algorithm>

namespace VEK {
namespace {

/// Rows of a stream whose last row begins `S` bits and more before the end. The last one may begin
/// before the stream.
int rowCount(qint64 streamSize, int shiftWidth, int captureAmount)
{
    qint64 const first = streamSize - 1 - shiftWidth;
    qint64 const whole = first < 0 ? 1 : first / shiftWidth + 2;
    return int(std::clamp<qint64>(captureAmount, 0, whole));
}

/// The row that holds the first sample in time.
int firstRow(QBitArray const& tdo, qint64 markOfRow0, int shiftWidth, int rows, SxCore const& core)
{
    int trigger = 0;
    while (trigger < rows && !packedBits(tdo, markOfRow0 - qint64(trigger) * shiftWidth, 1))
        ++trigger;
    if (core.expressionType == ExpressionDynamic)
        trigger = trigger == 0 ? rows - 1 : trigger - 1;
    qint64 const row = (qint64(trigger) - core.triggerPos + rows) % rows;
    return int(row < 0 ? row + rows : row);
}

} // namespace

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
    if (!core || tdo.isEmpty())
        return {};
    QList<SignalItem> const flat = core->dataSignals();
    int const width = core->dataOutShiftWidth();
    int const rows = rowCount(tdo.size(), width, core->captureAmount);
    if (rows < 1)
        return {};
    // a row is the mark and then the signals, at the end of its record
    qint64 const mark = qint64(tdo.size()) - 1 - flat.size();
    RecordLayout const layout{mark + 1, width, flat.size(), rows};
    return namedSignals(flat, signalArrays(tdo, layout, firstRow(tdo, mark, width, rows, *core)));
}

} // namespace VEK
