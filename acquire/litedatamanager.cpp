#include "acquire/litedatamanager.h"

#include "image/matchencoding.h"
#include "image/registerimage.h"
#include "image/registermap.h"
#include "jtag/jtagsession.h"
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
    setStatus(AnalyzerRunning);
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
    ask(readRequest(Protocol::Oprate::ReadCaptureInit, width()),
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
    writeStartRegister(StartValue::Arm);
    setStatus(AnalyzerWaiting);
    m_pollTimer->start();
}

void VekLiteDataManager::checkState()
{
    if (m_core && m_core->status == CoreArmed) {
        m_pollTimer->stop();
        m_silenceTimer->start();
        send(writeRequest(Protocol::Oprate::WriteStartReg, regSelectData(Register::Start)));
        ask(readRequest(Protocol::Oprate::ReadStartReg, width()),
            handler(this, &VekLiteDataManager::onStartRegister));
        return;
    }
    resetRun();
    send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
    emit triggerComplete(0);
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
    m_pollTimer->start();
}

void VekLiteDataManager::readCore()
{
    m_core->status = CoreFinished;
    m_pollTimer->stop();
    m_silenceTimer->stop();
    setStatus(AnalyzerReading);
    readRamData(width(), m_core->captureAmount);
}

void VekLiteDataManager::readRamData(int width, int depth)
{
    if (m_autoRunCount >= 0)
        ++m_autoRunCount;
    int const burst = std::min(depth, SectionSamples);
    int const sections = sectionCount(depth, burst);
    m_sectionData.clear();
    if (status() != AnalyzerReading || sections < 1)
        return;
    // unsigned, so that nonsense wraps and never overflows
    int const size = int(unsigned(width) * unsigned(burst) + unsigned(Protocol::RamTailBits));
    unsigned short at = 0;
    for (int i = 0; i < sections; ++i) {
        if (!pauseForReplies())
            return;
        askForSection({i, sections, 0}, liteBurstWord(at, width), size,
                      handler(this, &VekLiteDataManager::onSection));
        if (status() != AnalyzerReading)
            return;
        at = static_cast<unsigned short>(at + burst);
    }
}

void VekLiteDataManager::onSection(CmdPack const& reply, bool* finished)
{
    *finished = true;
    if (status() != AnalyzerReading) // the section that a stop still let out
        return;
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    m_sectionData.prepend(cutTail(bits, Protocol::RamTailBits));
    if (m_sectionData.size() != reply.value(Protocol::Key::SectionCount).toInt())
        return;
    setStatus(AnalyzerReadDone); // before the signal: its receiver moves the run on
    emit readRamComplete();
}

QList<QBitArray> VekLiteDataManager::getCurrentData()
{
    QList<QBitArray> sections;
    sections.swap(m_sectionData);
    setStatus(AnalyzerRunning);
    if (m_autoRunCount < 0) {
        m_pollTimer->start();
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

void VekLiteDataManager::stopDataTrigger()
{
    m_delayTimer->stop();
    m_pollTimer->stop();
    if (m_core && m_core->status == CoreArmed) {
        m_core->status = CoreFinished;
        writeStartRegister(StartValue::Stop);
    }
    send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
    JtagSession::shared()->cancelAll();
    JtagSession::shared()->diagnosis(QStringLiteral("stop"));
    resetRun();
    emit triggerComplete(0);
}

void VekLiteDataManager::resetRun()
{
    m_pollTimer->stop();
    m_silenceTimer->stop();
    setStatus(AnalyzerIdle);
    m_sectionData.clear();
    m_autoRunCount = -1;
}

} // namespace VEK
