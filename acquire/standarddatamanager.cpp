#include "acquire/standarddatamanager.h"

#include "image/expressionimage.h"
#include "image/matchencoding.h"
#include "image/registermap.h"
#include "model/bits.h"
#include "model/standardfile.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace VEK {
namespace {

constexpr int PollInterval = 500; ///< ms

/// Whether a reply to a read of the start register says that the capture is there. One without bits
/// says nothing.
bool saysFired(CmdPack const& reply)
{
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    return !bits.isEmpty() && is0(bits);
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
    if (!moveTo(AnalyzerRunning))
        return;
    QList<SxCore*> armed;
    for (SxCore* core : qAsConst(m_cores)) { // what an earlier run has left
        core->status = CoreUnused;
        core->forced = false;
    }
    for (int index : coreIndexes) {
        SxCore* core = getCore(index);
        if (!core)
            continue;
        if (core->captureInitDataEnabled) {
            core->status = CoreArmed;
        } else {
            startTrigger(core);
            armed.append(core);
        }
    }
    startPolling();
    tellArmed(armed);
}

/// Not before all words are out, since a receiver may stop the run.
void VekStandardDataManager::tellArmed(QList<SxCore*> const& cores)
{
    QPointer<VekStandardDataManager> const self(this);
    for (SxCore const* core : cores) {
        if (!self || !m_cores.contains(const_cast<SxCore*>(core)) || core->status != CoreArmed)
            return;
        emit coreArmed(core->index);
    }
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
    if (!moveTo(AnalyzerRunning))
        return;
    QList<SxCore*> const armed = getSelectedCores();
    for (SxCore* core : armed) {
        core->status = CoreArmed;
        writeRegisters(generateRegisterBit(core, m_deviceName, m_fileKind));
        writeStartRegister(*core, StartValue::Arm);
    }
    // at the required times the chain deliberately stays at the last one
    m_isSelectionLost =
        pacing() == Pacing::ByReplies && !armed.isEmpty() && armed.last() != m_currentCore;
    startPolling();
    tellArmed(armed);
}

SxCore* VekStandardDataManager::firstArmed() const
{
    auto const armed = std::find_if(m_cores.begin(), m_cores.end(),
                                    [](SxCore const* core) { return core->status == CoreArmed; });
    return armed == m_cores.end() ? nullptr : *armed;
}

void VekStandardDataManager::checkState()
{
    if (isPollOwed())
        return;
    SxCore* const core = firstArmed();
    if (!core) {
        if (status() == AnalyzerReadDone) {
            m_currentCore = nullptr;
            finishRun();
        }
        return;
    }
    if (!moveTo(AnalyzerRunning) || core != firstArmed())
        return;
    if (m_isForceDue)
        forceDataTrigger();
    if (core != m_currentCore) {
        m_currentCore = core;
        m_isSelectionLost = false;
        restartBackoff();
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

/// After words to another core the chain is turned back to the one that is polled.
void VekStandardDataManager::reselectCore()
{
    if (std::exchange(m_isSelectionLost, false))
        selectCore(*m_currentCore);
}

void VekStandardDataManager::pollRegister(QString const& select, QString const& read,
                                          unsigned short address, OnReply onReply)
{
    reselectCore();
    send(writeRequest(select, regSelectData(address)));
    if (!m_currentCore) // the server had gone, and the run ended with the first word
        return;
    poll(readRequest(read, m_currentCore->dataOutShiftWidth()), m_currentCore->forced,
         handler(this, onReply));
}

void VekStandardDataManager::pollStartRegister(OnReply onReply)
{
    pollRegister(Protocol::Oprate::WriteStartReg, Protocol::Oprate::ReadStartReg, Register::Start,
                 onReply);
}

void VekStandardDataManager::pollCaptureInit()
{
    pollRegister(Protocol::Oprate::SelectCaptureInit, Protocol::Oprate::ReadCaptureInit,
                 Register::CaptureInit, &VekStandardDataManager::onCaptureInit);
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
    if (isFinalPoll()) { // no time is left to arm it
        stopPolledCore();
        return;
    }
    SxCore* const core = m_currentCore;
    startTrigger(core);
    restartBackoff();
    pollStartRegister(&VekStandardDataManager::onStartRegister);
    tellArmed({core});
}

bool VekStandardDataManager::isPolling() const
{
    return status() == AnalyzerRunning || status() == AnalyzerWaiting;
}

void VekStandardDataManager::onStartRegister(CmdPack const& reply, bool* finished)
{
    *finished = true;
    noteCoreReason(reply);
    if (!isPolling() || !m_currentCore)
        return;
    if (!saysFired(reply)) {
        onCoreWaiting(m_currentCore->index);
        return;
    }
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
    if (!m_currentCore)
        return;
    if (!saysFired(reply)) {
        if (isPolling())
            onCoreWaiting(m_currentCore->index);
        return;
    }
    m_currentCore->status = CoreFinished;
    readTriggeredCore();
}

} // namespace VEK
