#include "acquire/litedatamanager.h"

#include "image/matchencoding.h"
#include "image/registerimage.h"
#include "image/registermap.h"
#include "model/bits.h"
#include "model/litefile.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace VEK {
namespace {

constexpr int SilenceInterval = 500; ///< ms

/// The protocol's name of the one core.
const QString CoreName = QStringLiteral("10000");

/// Sections of a read of `depth` samples, the last one part-filled. In single precision, as the
/// chip's own tools count.
int sectionCount(int depth, int burst)
{
    return burst == 0 ? 0 : int(std::ceil(float(depth) / float(burst)));
}

/// The burst word of a lite core: in place of a count it has a zero field of the record's width.
QBitArray liteBurstWord(unsigned short address, int width)
{
    return combine(
        {str2bit(QString::fromLatin1(Opcode::Burst)), int16ToBit(address), QBitArray(width)});
}

} // namespace

VekLiteDataManager::VekLiteDataManager()
    : m_delayTimer(new QTimer(this)), m_silenceTimer(new QTimer(this))
{
    connect(m_delayTimer, &QTimer::timeout, this, &VekLiteDataManager::onDelay);
    // the poll timer keeps its 0 ms: it rests while a poll is unanswered
    m_silenceTimer->setSingleShot(true);
    m_silenceTimer->setInterval(SilenceInterval);
    connect(m_silenceTimer, &QTimer::timeout, m_pollTimer, QOverload<>::of(&QTimer::start));
}

VekLiteDataManager::~VekLiteDataManager() = default;

bool VekLiteDataManager::readVekFile(QString const& file, QString& error)
{
    if (!QFile::exists(file))
        return false;
    QString id;
    QList<SXCore_Lite*> const cores = readVEKConfigFromXml_Lite(file, id, nullptr, &error);
    if (cores.size() == 1) {
        m_core.reset(cores.first());
        return true;
    }
    qDeleteAll(cores);
    return false;
}

int VekLiteDataManager::width() const
{
    return flatSignals(m_core->dataSignalList).size();
}

void VekLiteDataManager::sendTestMsg()
{
    if (!m_core)
        return;
    send({{Protocol::Key::Cmd, Protocol::Cmd::WriteInfor},
          {Protocol::Key::Mode, Protocol::Mode::Lite},
          {Protocol::Key::SxCore, CoreName},
          {Protocol::Key::MemDataWidth, width()},
          {Protocol::Key::ShiftWidth, width()}});
}

void VekLiteDataManager::startDataTrigger(int delay)
{
    if (!m_core)
        return;
    if (!moveTo(AnalyzerRunning))
        return;
    m_core->status = CoreArmed;
    if (delay > 0)
        m_delayTimer->start(delay);
    else if (delay == 0)
        forceDataTrigger();
}

void VekLiteDataManager::onDelay()
{
    forceDataTrigger();
}

void VekLiteDataManager::forceDataTrigger()
{
    if (status() != AnalyzerRunning || !m_core)
        return;
    m_delayTimer->stop();
    send(writeRequest(Protocol::Oprate::SelectCaptureInit,
                      regSelectData(Register::CaptureInitLite)));
    poll(readRequest(Protocol::Oprate::ReadCaptureInit, width()), false,
         handler(this, &VekLiteDataManager::onCaptureInit));
}

void VekLiteDataManager::onCaptureInit(CmdPack const& reply, bool* finished)
{
    *finished = true;
    if (!isPolling()) // a second answer, when the owner began the capture twice
        return;
    if (is0(reply.value(Protocol::Key::Data).toBitArray())) {
        readCore(); // the capture is there already
        return;
    }
    if (isFinalPoll()) { // no time is left to arm it
        stopPolledCore();
        return;
    }
    writeStartRegister(StartValue::Arm);
    if (!moveTo(AnalyzerWaiting))
        return;
    startPolling();
    emit coreArmed(0);
}

void VekLiteDataManager::checkState()
{
    if (isPollOwed())
        return;
    if (m_core && m_core->status == CoreArmed) {
        m_pollTimer->stop();
        if (pacing() == Pacing::Timed)
            m_silenceTimer->start();
        send(writeRequest(Protocol::Oprate::WriteStartReg, regSelectData(Register::Start)));
        poll(readRequest(Protocol::Oprate::ReadStartReg, width()), false,
             handler(this, &VekLiteDataManager::onStartRegister));
        return;
    }
    m_silenceTimer->stop();
    finishRun();
}

bool VekLiteDataManager::isPolling() const
{
    return m_core->status == CoreArmed &&
           (status() == AnalyzerRunning || status() == AnalyzerWaiting);
}

/// A late answer to an earlier poll neither starts a second read nor polls again.
void VekLiteDataManager::onStartRegister(CmdPack const& reply, bool* finished)
{
    *finished = true;
    noteCoreReason(reply);
    if (!isPolling())
        return;
    if (is0(reply.value(Protocol::Key::Data).toBitArray())) {
        readCore();
        return;
    }
    m_silenceTimer->stop();
    if (pacing() == Pacing::Timed && !isFinalPoll())
        m_pollTimer->start();
    onCoreWaiting(0);
}

void VekLiteDataManager::readCore()
{
    m_core->status = CoreFinished;
    m_pollTimer->stop();
    m_silenceTimer->stop();
    QPointer<VekLiteDataManager> const self(this);
    emit coreFired(0, false);
    if (self && status() != AnalyzerIdle && moveTo(AnalyzerReading))
        readRamData(width(), m_core->captureAmount);
}

void VekLiteDataManager::readRamData(int width, int depth)
{
    if (m_autoRunCount >= 0)
        ++m_autoRunCount;
    WindowRead read;
    read.burst = std::min(depth, SectionSamples);
    read.sections = sectionCount(depth, read.burst);
    m_sectionData.clear();
    m_isCut = false;
    if (status() != AnalyzerReading)
        return;
    if (read.sections < 1) {
        if (pacing() == Pacing::ByReplies)
            onReadBroken();
        return;
    }
    // unsigned, so that nonsense wraps and never overflows
    read.size = int(unsigned(width) * unsigned(read.burst) + unsigned(Protocol::RamTailBits));
    read.burstWord = [width](unsigned short at) { return liteBurstWord(at, width); };
    readWindow(read);
}

void VekLiteDataManager::onSection(int size, CmdPack const& reply, bool* finished)
{
    *finished = true;
    if (status() != AnalyzerReading) // the section that a stop still let out
        return;
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    m_sectionData.prepend(cutTail(bits, Protocol::RamTailBits));
    m_isCut = m_isCut || bits.size() != size;
    int const received = m_sectionData.size();
    int const total = reply.value(Protocol::Key::SectionCount).toInt();
    QPointer<VekLiteDataManager> const self(this);
    emit readProgress(0, 0, received, total);
    if (!self || status() != AnalyzerReading || received != total)
        return;
    if (m_isCut)
        emit windowIncomplete(0, 0);
    if (!self || status() != AnalyzerReading)
        return;
    if (moveTo(AnalyzerReadDone)) // before the signal: its receiver moves the run on
        emit readRamComplete();
}

void VekLiteDataManager::onReadBroken()
{
    QPointer<VekLiteDataManager> const self(this);
    emit windowIncomplete(0, 0);
    // no `readRamComplete` comes whose receiver would move the run on
    if (self && status() == AnalyzerReading && moveTo(AnalyzerReadDone))
        getCurrentData();
}

QList<QBitArray> VekLiteDataManager::getCurrentData()
{
    QList<QBitArray> sections;
    sections.swap(m_sectionData);
    if (!moveTo(AnalyzerRunning))
        return sections;
    if (m_autoRunCount < 0) {
        startPolling();
    } else if (m_core) {
        m_core->status = CoreArmed;
        forceDataTrigger();
    }
    return sections;
}

void VekLiteDataManager::writeStartRegister(unsigned int value)
{
    send(writeRequest(Protocol::Oprate::WriteStartReg, startRegisterWord(value, width())));
}

void VekLiteDataManager::stopPolledCore()
{
    stopArmedCores();
    if (pacing() == Pacing::ByReplies)
        confirmStop(width(), nullptr);
    QPointer<VekLiteDataManager> const self(this);
    emit coreStopped(0);
    if (self && status() != AnalyzerIdle)
        finishRun();
}

int VekLiteDataManager::stopArmedCores()
{
    m_delayTimer->stop();
    m_pollTimer->stop();
    m_silenceTimer->stop();
    if (!m_core)
        return 0;
    if (m_core->status == CoreArmed) {
        m_core->status = CoreFinished;
        writeStartRegister(StartValue::Stop);
    }
    return width();
}

void VekLiteDataManager::clearCapture()
{
    m_sectionData.clear();
}

} // namespace VEK
