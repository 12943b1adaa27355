/// Reading the sample memory of a standard core, and a capture that was exported.
#include "acquire/standarddatamanager.h"

#include "image/matchencoding.h"
#include "model/bits.h"
#include "results/csvimport.h"

#include <algorithm>

namespace VEK {
namespace {

/// Whole sections of a window of `depth` samples. A negative depth makes one, of that size.
int sectionCount(int depth, int burst)
{
    return burst == 0 ? 0 : depth / burst;
}

} // namespace

void VekStandardDataManager::readTriggeredCore()
{
    m_pollTimer->stop();
    QPointer<VekStandardDataManager> const self(this);
    emit coreFired(m_currentCore->index, isForcedPoll());
    if (self)
        readRunningCore();
}

void VekStandardDataManager::readRunningCore()
{
    if (!isPolling() || !m_currentCore || !moveTo(AnalyzerReading) || !m_currentCore)
        return;
    m_windowData.clear();
    m_isCut.clear();
    SxCore const& core = *m_currentCore;
    int const windows = core.windowNum;
    int const amount = core.captureAmount;
    m_sectionsPerWindow = sectionCount(amount, std::min(amount, SectionSamples));
    if (m_sectionsPerWindow < 1) { // no window would ever get a section
        if (pacing() == Pacing::ByReplies)
            onReadBroken();
        return;
    }
    // kept apart from the core, which a stop in the middle of the read lets go
    qint64 const parts = fixedWindowNum(unsigned(windows));
    qint64 const share = parts ? core.storageDepth / parts : 0;
    int const shiftWidth = core.dataOutShiftWidth();
    readMemory([this, windows, share, shiftWidth, amount, window = 0](WindowRead& next) mutable {
        if (window >= windows)
            return false;
        m_windowData.append(QList<QBitArray>());
        m_isCut.append(false);
        next = windowRead(window, int(share * window), shiftWidth, amount);
        ++window;
        return true;
    });
}

VekStandardDataManager::WindowRead VekStandardDataManager::windowRead(int window, int address,
                                                                      int shiftWidth, int depth)
{
    WindowRead read;
    read.window = window;
    read.burst = std::min(depth, SectionSamples);
    read.sections = sectionCount(depth, read.burst);
    // unsigned, so that nonsense wraps and never overflows
    read.size = int(unsigned(shiftWidth) * unsigned(read.burst) +
                    unsigned(Protocol::RamHeadBits + Protocol::RamTailBits));
    read.address = static_cast<unsigned short>(address);
    auto const count = static_cast<unsigned short>(read.burst);
    read.burstWord = [count](unsigned short at) { return brustReadData(at, count); };
    return read;
}

void VekStandardDataManager::readRamData(int window, int address, int signalCount, int shiftWidth,
                                         int depth)
{
    Q_UNUSED(signalCount)
    WindowRead const read = windowRead(window, address, shiftWidth, depth);
    if (status() != AnalyzerReading || read.sections < 1)
        return;
    readWindow(read);
}

void VekStandardDataManager::onSection(int size, CmdPack const& reply, bool* finished)
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
    int const received = sections.size();
    int const total = reply.value(Protocol::Key::SectionCount).toInt();
    m_isCut[window] = m_isCut.at(window) || bits.size() != size;
    QPointer<VekStandardDataManager> const self(this);
    emit readProgress(m_currentCore->index, window, received, total);
    if (self && m_currentCore && received == total)
        onWindow(window);
}

/// A window has all its sections.
void VekStandardDataManager::onWindow(int window)
{
    SxCore const* const core = m_currentCore;
    QPointer<VekStandardDataManager> const self(this);
    bool const isLast = window + 1 == core->windowNum;
    if (m_isCut.value(window))
        emit windowIncomplete(core->index, window);
    if (!self || core != m_currentCore || (isLast && !tellIncomplete(window)))
        return;
    // before the signal: its receiver moves the run on
    if (isLast && (!moveTo(AnalyzerReadDone) || core != m_currentCore))
        return;
    emit readRamComplete(core->index, window);
    if (self && m_currentCore)
        m_currentCore->forced = false;
}

/// Names those of the first `windows` that lack a section, which will not come any more. False when
/// a receiver has ended the run.
bool VekStandardDataManager::tellIncomplete(int windows)
{
    QPointer<VekStandardDataManager> const self(this);
    SxCore const* const core = m_currentCore;
    for (int window = 0; window < windows && window < m_windowData.size(); ++window) {
        if (m_windowData.at(window).size() >= m_sectionsPerWindow)
            continue;
        emit windowIncomplete(core->index, window);
        if (!self || core != m_currentCore)
            return false;
    }
    return true;
}

void VekStandardDataManager::onReadBroken()
{
    if (!tellIncomplete(m_windowData.size()) || !moveTo(AnalyzerReadDone))
        return;
    if (m_currentCore)
        m_currentCore->forced = false;
    getCurrentData(-1); // no `readRamComplete` comes whose receiver would move the run on
}

QList<QBitArray> VekStandardDataManager::getCurrentData(int window)
{
    QList<QBitArray> const sections = m_windowData.value(window);
    if (m_autoRunCount >= 0)
        restartDataTrigger();
    else if (status() == AnalyzerReadDone)
        startPolling();
    return sections;
}

bool VekStandardDataManager::readCsvFile(QString const& file, QList<SignalItem>& signalList,
                                         QList<QBitArray>& dataList)
{
    return readCsv(file, signalList, dataList);
}

} // namespace VEK
