#include "analyzer/liteanalyzer.h"

#include "acquire/litedatamanager.h"
#include "analyzer/batchrun.h"
#include "analyzer/console.h"
#include "analyzer/sampledecoder.h"
#include "analyzer/windowbuilder.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"

#include <algorithm>
#include <iterator>

namespace VEK {
namespace {

/// Devices whose first row is one sample ahead. TK-102 is among them, unlike in the set that
/// shortens a standard capture.
char const* const RotatedDevices[] = {"TK-202", "TK-203", "TK-201", "TK-113", "TK-107",
                                      "TK-106", "TK-114", "TK-112", "TK-111", "TK-105",
                                      "TK-104", "TK-123", "TK-125", "TK-124", "TK-122",
                                      "TK-121", "TK-103", "TK-102", "TK-101"};

bool isRotated(SXCore_Lite const& core, QString const& deviceName)
{
    return core.implemention == 0 &&
           std::any_of(std::begin(RotatedDevices), std::end(RotatedDevices),
                       [&](char const* name) { return deviceName == QLatin1String(name); });
}

/// Rows of `width` bits in a stream; the last one may begin before the stream.
int rowCount(int streamSize, int width, int captureAmount)
{
    return std::clamp(captureAmount, 0, int((qint64(streamSize) + width - 1) / width));
}

} // namespace

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
    QList<SignalItem> const flat = core ? flatSignals(core->dataSignalList) : QList<SignalItem>();
    if (tdo.isNull() || flat.isEmpty())
        return {};
    int const width = flat.size();
    int const rows = rowCount(tdo.size(), width, core->captureAmount);
    RecordLayout const layout{qint64(tdo.size()) - width, width, width, rows};
    int const first = rows > 1 && isRotated(*core, m_deviceName) ? 1 : 0;
    return namedSignals(flat, signalArrays(tdo, layout, first));
}

} // namespace VEK
