/// How a run on standard cores is forced and stopped, one core alone or all of them.
#include "acquire/standarddatamanager.h"

#include "image/registermap.h"
#include "model/alert.h"

namespace VEK {

void VekStandardDataManager::forceDataTrigger()
{
    if (status() == AnalyzerReading)
        return;
    m_isForceDue = false;
    for (SxCore* core : qAsConst(m_cores)) {
        if (core->status != CoreArmed)
            continue;
        core->forced = true;
        selectCore(*core);
        writeStartRegister(*core, StartValue::Force);
        // at the required times the chain deliberately stays at the last one
        m_isSelectionLost = pacing() == Pacing::ByReplies;
    }
}

void VekStandardDataManager::forceArmedCores()
{
    if (status() == AnalyzerIdle)
        return;
    m_isForceDue = true; // for the poll behind the read
    forceDataTrigger();
}

void VekStandardDataManager::writeStop(SxCore& core)
{
    core.status = CoreFinished;
    core.forced = false;
    selectCore(core);
    writeStartRegister(core, StartValue::Stop);
}

void VekStandardDataManager::stopCore(SxCore* core)
{
    if (status() == AnalyzerIdle || !core || core->status != CoreArmed)
        return;
    writeStop(*core);
    if (pacing() == Pacing::ByReplies)
        confirmStop(core->dataOutShiftWidth(), nullptr);
    m_isSelectionLost = true;
    bool const wasPolled = core == m_currentCore;
    if (status() == AnalyzerReading) {
        reselectCore();
    } else if (wasPolled) {
        m_currentCore = nullptr;
        m_isSelectionLost = false;
        forgetPolls();
    }
    bool const isOver = isPolling() && !firstArmed();
    int const index = core->index;
    if (isOver && !moveTo(AnalyzerReadDone)) // there is nothing to read
        return;
    if (isOver || (wasPolled && isPolling()))
        startPolling();
    emit coreStopped(index);
}

void VekStandardDataManager::stopPolledCore()
{
    stopCore(m_currentCore);
}

int VekStandardDataManager::stopArmedCores()
{
    m_pollTimer->stop();
    SxCore const* last = m_currentCore;
    for (SxCore* core : qAsConst(m_cores)) {
        core->forced = false; // also of a core that is being read
        if (core->status == CoreArmed) {
            writeStop(*core);
            last = core;
        }
    }
    m_currentCore = nullptr;
    return last ? last->dataOutShiftWidth() : 0;
}

void VekStandardDataManager::clearCapture()
{
    m_windowData.clear();
    m_isCut.clear();
    m_isForceDue = false;
    m_isSelectionLost = false;
}

void VekStandardDataManager::onTimeout()
{
    stopDataTrigger();
    showAlert({AlertKind::Critical, QStringLiteral("Error"),
               QStringLiteral("ERROR: No response was reveived from Scanbridge, the server "
                              "probably timed out.")});
}

} // namespace VEK
