#include "acquire/standarddatamanager.h"

#include "image/expressionimage.h"
#include "image/matchencoding.h"
#include "image/registermap.h"
#include "jtag/alert.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"
#include "model/standardfile.h"
#include "results/csvimport.h"

#include <QFile>

#include <algorithm>

namespace VEK {
namespace {

constexpr int PollInterval = 500; ///< ms

/// Whole sections of a window of `depth` samples. A negative depth makes one, of that size.
int sectionCount(int depth, int burst)
{
    return burst == 0 ? 0 : depth / burst;
}

} // namespace

VekStandardDataManager::VekStandardDataManager()
{
    m_pollTimer->setInterval(PollInterval);
}

VekStandardDataManager::~VekStandardDataManager()
{
    clearCores();
}

bool VekStandardDataManager::readVekFile(QString const& file, QString& error)
{
    if (!QFile::exists(file))
        return false;
    if (file.endsWith(QStringLiteral(".vek"), Qt::CaseInsensitive))
        m_fileKind = FileKindVek;
    else if (file.endsWith(QStringLiteral(".rsx"), Qt::CaseInsensitive))
        m_fileKind = FileKindRsx;
    QString id;
    clearCores();
    m_cores = readVEKConfigFromXml(file, id, nullptr, &error);
    return !m_cores.isEmpty();
}

QList<SxCore*> VekStandardDataManager::getSelectedCores() const
{
    QList<SxCore*> selected;
    std::copy_if(m_cores.begin(), m_cores.end(), std::back_inserter(selected),
                 [](SxCore const* core) { return core->status != CoreUnused; });
    return selected;
}

void VekStandardDataManager::clearCores()
{
    m_currentCore = nullptr;
    qDeleteAll(m_cores);
    m_cores.clear();
}

void VekStandardDataManager::sendTestMsg()
{
    for (SxCore const* core : qAsConst(m_cores)) {
        send({{Protocol::Key::Cmd, Protocol::Cmd::WriteInfor},
              {Protocol::Key::Mode, Protocol::Mode::Standard},
              {Protocol::Key::SxCore, core->index},
              {Protocol::Key::MemDataWidth, core->dataSignals().size() + 1},
              {Protocol::Key::ShiftWidth, core->dataOutShiftWidth()}});
    }
}

void VekStandardDataManager::startDataTrigger(QList<int> const& coreIndexes)
{
    if (status() != AnalyzerIdle)
        return;
    setStatus(AnalyzerRunning);
    for (SxCore* core : qAsConst(m_cores)) { // what an earlier run has left
        core->status = CoreUnused;
        core->forced = false;
    }
    for (int index : coreIndexes) {
        SxCore* core = getCore(index);
        if (!core)
            continue;
        if (core->captureInitDataEnabled)
            core->status = CoreArmed;
        else
            startTrigger(core);
    }
    m_pollTimer->start();
}

void VekStandardDataManager::startTrigger(SxCore* core)
{
    core->status = CoreArmed;
    writeRegisters(generateRegisterBit(core, m_deviceName, m_fileKind));
    forEachExpressionTable(core, [this](QList<QBitArray> const& words) { writeRegisters(words); });
    writeStartRegister(*core, StartValue::Arm);
}

void VekStandardDataManager::restartDataTrigger()
{
    if (status() != AnalyzerReadDone)
        return;
    setStatus(AnalyzerRunning);
    for (SxCore* core : getSelectedCores()) {
        core->status = CoreArmed;
        writeRegisters(generateRegisterBit(core, m_deviceName, m_fileKind));
        writeStartRegister(*core, StartValue::Arm);
    }
    m_pollTimer->start();
}

void VekStandardDataManager::forceDataTrigger()
{
    if (status() == AnalyzerReading)
        return;
    for (SxCore* core : qAsConst(m_cores)) {
        if (core->status != CoreArmed)
            continue;
        core->forced = true;
        selectCore(*core);
        writeStartRegister(*core, StartValue::Force);
    }
}

void VekStandardDataManager::stopDataTrigger()
{
    m_pollTimer->stop();
    for (SxCore* core : qAsConst(m_cores)) {
        core->forced = false; // also of a core that is being read
        if (core->status != CoreArmed)
            continue;
        core->status = CoreFinished;
        selectCore(*core);
        writeStartRegister(*core, StartValue::Stop);
    }
    send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
    JtagSession::shared()->cancelAll();
    JtagSession::shared()->diagnosis(QStringLiteral("stop"));
    resetRun();
    emit triggerComplete(0);
}

/// Back to idle; the signals of the end follow in the callers.
void VekStandardDataManager::resetRun()
{
    m_currentCore = nullptr;
    setStatus(AnalyzerIdle);
    m_windowData.clear();
    m_autoRunCount = -1;
}

void VekStandardDataManager::onTimeout()
{
    stopDataTrigger();
    showAlert({AlertKind::Critical, QStringLiteral("Error"),
               QStringLiteral("ERROR: No response was reveived from Scanbridge, the server "
                              "probably timed out.")});
}

void VekStandardDataManager::checkState()
{
    auto const armed = std::find_if(m_cores.begin(), m_cores.end(),
                                    [](SxCore const* core) { return core->status == CoreArmed; });
    if (armed == m_cores.end()) {
        if (status() == AnalyzerReadDone) {
            m_pollTimer->stop();
            resetRun();
            send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
            emit triggerComplete(0);
        }
        return;
    }
    SxCore* core = *armed;
    setStatus(AnalyzerRunning);
    if (core != m_currentCore) {
        m_currentCore = core;
        selectCore(*core);
    }
    if (!core->captureInitDataEnabled || core->forced)
        pollStartRegister(&VekStandardDataManager::onStartRegister);
    else
        pollCaptureInit();
}

void VekStandardDataManager::selectCore(SxCore const& core)
{
    send(writeRequest(Protocol::Oprate::WriteRegistor, coreSelectWord(core.index)));
}

void VekStandardDataManager::writeStartRegister(SxCore const& core, unsigned int value)
{
    send(writeRequest(Protocol::Oprate::WriteStartReg,
                      startRegisterWord(value, core.dataOutShiftWidth())));
}

void VekStandardDataManager::writeRegisters(QList<QBitArray> const& words)
{
    for (QBitArray const& word : words)
        send(writeRequest(Protocol::Oprate::WriteRegistor, word));
}

void VekStandardDataManager::pollStartRegister(
    void (VekStandardDataManager::*onReply)(CmdPack const&, bool*))
{
    send(writeRequest(Protocol::Oprate::WriteStartReg, regSelectData(Register::Start)));
    ask(readRequest(Protocol::Oprate::ReadStartReg, m_currentCore->dataOutShiftWidth()),
        handler(this, onReply));
}

void VekStandardDataManager::pollCaptureInit()
{
    send(writeRequest(Protocol::Oprate::SelectCaptureInit, regSelectData(Register::CaptureInit)));
    ask(readRequest(Protocol::Oprate::ReadCaptureInit, m_currentCore->dataOutShiftWidth()),
        handler(this, &VekStandardDataManager::onCaptureInit));
}

/// A core with initial data is armed only once the chip reports that its data is there.
void VekStandardDataManager::onCaptureInit(CmdPack const& reply, bool* finished)
{
    *finished = true;
    if (!m_currentCore) // a late reply after the end of the run
        return;
    if (is0(reply.value(Protocol::Key::Data).toBitArray())) {
        pollStartRegister(&VekStandardDataManager::onStartRegisterAfterInit);
        return;
    }
    startTrigger(m_currentCore);
    pollStartRegister(&VekStandardDataManager::onStartRegister);
}

bool VekStandardDataManager::isPolling() const
{
    return status() == AnalyzerRunning || status() == AnalyzerWaiting;
}

void VekStandardDataManager::onStartRegister(CmdPack const& reply, bool* finished)
{
    *finished = true;
    noteCoreReason(reply);
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    if (!isPolling() || bits.isEmpty() || !is0(bits) || !m_currentCore)
        return;
    m_currentCore->status = CoreFinished;
    if (m_autoRunCount >= 0)
        ++m_autoRunCount;
    readTriggeredCore();
}

/// Deliberately without the test of the status and without the counting.
void VekStandardDataManager::onStartRegisterAfterInit(CmdPack const& reply, bool* finished)
{
    *finished = true;
    noteCoreReason(reply);
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    if (bits.isEmpty() || !is0(bits) || !m_currentCore)
        return;
    m_currentCore->status = CoreFinished;
    readTriggeredCore();
}

void VekStandardDataManager::readTriggeredCore()
{
    m_pollTimer->stop();
    readRunningCore();
}

void VekStandardDataManager::readRunningCore()
{
    if (!isPolling() || !m_currentCore)
        return;
    setStatus(AnalyzerReading);
    if (!m_currentCore) // a receiver has stopped the run
        return;
    m_windowData.clear();
    SxCore const& core = *m_currentCore;
    int const windows = core.windowNum;
    int const amount = core.captureAmount;
    if (sectionCount(amount, std::min(amount, SectionSamples)) < 1)
        return; // no window would ever get a section
    // kept apart from the core, which a stop in the middle of the read lets go
    qint64 const parts = fixedWindowNum(unsigned(windows));
    qint64 const share = parts ? core.storageDepth / parts : 0;
    int const signalCount = core.dataSignals().size() + 1;
    int const shiftWidth = core.dataOutShiftWidth();
    QPointer<VekStandardDataManager> const self(this);
    for (int window = 0; window < windows && status() == AnalyzerReading; ++window) {
        m_windowData.append(QList<QBitArray>());
        readRamData(window, int(share * window), signalCount, shiftWidth, amount);
        if (!self)
            return;
    }
}

void VekStandardDataManager::readRamData(int window, int address, int signalCount, int shiftWidth,
                                         int depth)
{
    Q_UNUSED(signalCount)
    int const burst = std::min(depth, SectionSamples);
    int const sections = sectionCount(depth, burst);
    if (status() != AnalyzerReading || sections < 1)
        return;
    // unsigned, so that nonsense wraps and never overflows
    int const size = int(unsigned(shiftWidth) * unsigned(burst) +
                         unsigned(Protocol::RamHeadBits + Protocol::RamTailBits));
    auto at = static_cast<unsigned short>(address);
    auto const count = static_cast<unsigned short>(burst);
    for (int i = 0; i < sections; ++i) {
        if (!pauseForReplies())
            return;
        askForSection({i, sections, window}, brustReadData(at, count), size,
                      handler(this, &VekStandardDataManager::onSection));
        if (status() != AnalyzerReading)
            return;
        at = static_cast<unsigned short>(at + burst);
    }
}

void VekStandardDataManager::onSection(CmdPack const& reply, bool* finished)
{
    if (!m_currentCore)
        return;
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    int const window = reply.value(Protocol::Key::Window).toInt();
    *finished = true;
    if (window < 0 || window >= m_windowData.size())
        return;
    QList<QBitArray>& sections = m_windowData[window];
    sections.prepend(cutTail(cutHead(bits, Protocol::RamHeadBits), Protocol::RamTailBits));
    if (sections.size() != reply.value(Protocol::Key::SectionCount).toInt())
        return;
    if (window + 1 == m_currentCore->windowNum)
        setStatus(AnalyzerReadDone); // before the signal: its receiver moves the run on
    QPointer<VekStandardDataManager> const self(this);
    emit readRamComplete(m_currentCore->index, window);
    if (self && m_currentCore)
        m_currentCore->forced = false;
}

QList<QBitArray> VekStandardDataManager::getCurrentData(int window)
{
    QList<QBitArray> const sections = m_windowData.value(window);
    if (m_autoRunCount >= 0)
        restartDataTrigger();
    else if (status() == AnalyzerReadDone)
        m_pollTimer->start();
    return sections;
}

bool VekStandardDataManager::readCsvFile(QString const& file, QList<SignalItem>& signalList,
                                         QList<QBitArray>& dataList)
{
    return readCsv(file, signalList, dataList);
}

} // namespace VEK
