#include "capture/capture.h"

#include "acquire/litedatamanager.h"
#include "acquire/samples.h"
#include "acquire/standarddatamanager.h"
#include "capture/serverlink.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"
#include "model/vekfile.h"

#include <QFile>

#include <algorithm>

namespace VEK {
namespace {

constexpr int StopPatience = 1000; ///< ms, for the chip to say that it was stopped.
constexpr int StopLook = 5;        ///< ms between two looks for that.
constexpr int IdleRounds = 4;
constexpr int WriteTime = 2; ///< ms that a word takes a slow server.

int lookInterval(int patience)
{
    return std::clamp(patience / 4, 20, 1000);
}

} // namespace

Capture::Capture(QObject* parent) : QObject(parent)
{
    for (QTimer* const timer : {&m_waitTimer, &m_forceTimer, &m_stopTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_waitTimer, &QTimer::timeout, this, &Capture::onWaitOver);
    connect(&m_forceTimer, &QTimer::timeout, this, &Capture::onForceDue);
    connect(&m_stopTimer, &QTimer::timeout, this, &Capture::abort);
    connect(&m_lookTimer, &QTimer::timeout, this, &Capture::lookAtServer);
    // queued: it may come from inside a write, in the middle of the manager's arming
    connect(JtagSession::shared(), &JtagSession::connectionLost, this, &Capture::onServerLost,
            Qt::QueuedConnection);
    makeLink();
}

void Capture::makeLink()
{
    if (m_link)
        m_link->disconnect(this);
    m_link = std::make_unique<ServerLink>();
    connect(m_link.get(), &ServerLink::held, this, &Capture::held);
    connect(m_link.get(), &ServerLink::opened, this, &Capture::onOpened);
    connect(m_link.get(), &ServerLink::failed, this, &Capture::endRun);
    connect(m_link.get(), &ServerLink::closed, this, &Capture::onClosed);
}

Capture::~Capture()
{
    shutDown();
}

bool Capture::open(QString const& path, QString& error)
{
    auto standard = std::make_unique<VekStandardDataManager>();
    auto lite = std::make_unique<VekLiteDataManager>();
    VekMode const mode = vekModeFromVekConfigFile(path);
    error.clear();
    bool const ok =
        mode == VekModeLite ? lite->readVekFile(path, error) : standard->readVekFile(path, error);
    if (mode == VekModeUnknown || !ok) {
        if (error.isEmpty())
            error = QFile::exists(path)
                        ? QStringLiteral("This is no configuration file with cores.")
                        : QStringLiteral("There is no such file.");
        return false;
    }
    shutDown();
    Q_EMIT closing();
    m_standard.reset(mode == VekModeStandard ? standard.release() : nullptr);
    m_lite.reset(mode == VekModeLite ? lite.release() : nullptr);
    connectManager();
    return true;
}

void Capture::connectManager()
{
    if (m_standard)
        connect(m_standard.get(), &VekStandardDataManager::readRamComplete, this,
                &Capture::onStandardWindow);
    else
        connect(m_lite.get(), &VekLiteDataManager::readRamComplete, this, &Capture::onLiteWindow);
    DataManager* const source = manager();
    connect(source, &DataManager::triggerComplete, this, &Capture::onComplete);
    connect(source, &DataManager::coreArmed, this,
            [this](int index) { Q_EMIT coreArmed(placeOf(index)); });
    connect(source, &DataManager::coreWaiting, this,
            [this](int index) { onCoreWaiting(placeOf(index)); });
    connect(source, &DataManager::coreFired, this,
            [this](int index, bool forced) { Q_EMIT coreFired(placeOf(index), forced); });
    connect(source, &DataManager::coreStopped, this, [this](int index) {
        m_stopped << placeOf(index);
        Q_EMIT coreStopped(placeOf(index));
    });
    connect(source, &DataManager::readProgress, this,
            [this](int index, int window, int received, int total) {
                Q_EMIT readProgress(placeOf(index), window, received, total);
            });
    connect(source, &DataManager::windowIncomplete, this,
            [this](int index, int window) { loseWindow(placeOf(index), window); });
    // queued: a reason for which the run ends is a part of its end
    connect(source, &DataManager::deviceReasonChanged, this, &Capture::onReason,
            Qt::QueuedConnection);
}

DataManager* Capture::manager() const
{
    return m_standard ? static_cast<DataManager*>(m_standard.get()) : m_lite.get();
}

QList<SxCore*> Capture::cores() const
{
    return m_standard ? m_standard->cores() : QList<SxCore*>();
}

SXCore_Lite* Capture::liteCore() const
{
    return m_lite ? m_lite->core() : nullptr;
}

int Capture::placeOf(int index) const
{
    if (m_lite)
        return 0;
    QList<SxCore*> const& cores = m_standard->cores();
    auto const core = std::find_if(cores.begin(), cores.end(),
                                   [index](SxCore const* core) { return core->index == index; });
    return int(core - cores.begin());
}

void Capture::run(CaptureSettings const& settings)
{
    if (isRunning() || !manager())
        return;
    m_settings = settings;
    m_outcome = {};
    m_isStopping = false;
    m_isWaitBegun = false;
    m_isForced = false;
    m_stopped.clear();
    m_lost.clear();
    m_results.clear();
    m_unread = 0;
    m_idleRounds = 0;
    m_sinceEnd.invalidate();
    setPhase(Phase::Starting);
    m_link->open(settings);
}

void Capture::onOpened()
{
    if (m_phase != Phase::Starting)
        return;
    m_phase = Phase::Running;
    if (m_settings.endsOnSilence) {
        m_lookTimer.start(lookInterval(m_settings.patience));
        m_sinceLook.start();
    }
    Q_EMIT connected();
    if (m_phase == Phase::Running)
        startCores();
}

void Capture::startCores()
{
    manager()->setPacing(m_settings.pacing);
    manager()->setAutoRunCount(m_settings.repeat ? 0 : -1);
    manager()->initDeviceChainandLocation({0}, m_settings.cable, m_settings.location);
    if (m_lite) {
        m_lite->startDataTrigger(0);
        return;
    }
    m_standard->setDeviceName(m_settings.device);
    QList<int> places = m_settings.places;
    for (int i = 0; i < m_standard->cores().size() && m_settings.places.isEmpty(); ++i)
        places << i;
    m_standard->startDataTrigger(places);
}

/// The first reply of a poll: the chip has taken the words of all cores that were armed, however
/// long that took the server. From now on they are waited for.
void Capture::onCoreWaiting(int place)
{
    if (!m_isWaitBegun) {
        m_isWaitBegun = true;
        if (m_settings.wait >= 0)
            m_waitTimer.start(m_settings.wait);
        if (m_settings.force >= 0)
            m_forceTimer.start(m_settings.force);
    }
    Q_EMIT coreWaiting(place);
}

void Capture::onWaitOver()
{
    if (m_phase == Phase::Running)
        manager()->finishWaiting();
}

void Capture::onForceDue()
{
    m_isForced = true;
    force();
}

void Capture::force()
{
    if (m_phase == Phase::Running && m_standard)
        m_standard->forceArmedCores();
}

void Capture::stop()
{
    if (!isRunning() || m_isStopping || m_phase == Phase::Ending)
        return;
    m_isStopping = true;
    m_stopTimer.start(StopPatience);
    bool const isArmed = m_phase == Phase::Running && manager()->status() != AnalyzerIdle;
    if (isArmed)
        manager()->stopGracefully();
    else if (m_results.isEmpty()) // else it has ended by itself
        endRun(CaptureEnd::Stopped);
}

void Capture::abort()
{
    if (!isRunning() || m_phase == Phase::Ending)
        return;
    m_isStopping = true;
    if (manager()->status() != AnalyzerIdle)
        manager()->stopDataTrigger();
    endRun(CaptureEnd::Stopped);
}

void Capture::shutDown()
{
    if (!isRunning())
        return;
    m_phase = Phase::Ending;
    for (QTimer* const timer : {&m_waitTimer, &m_forceTimer, &m_stopTimer, &m_lookTimer})
        timer->stop();
    if (manager()->status() != AnalyzerIdle)
        manager()->stopDataTrigger();
    makeLink(); // the old one kills its server
    setPhase(Phase::Idle);
}

qint64 Capture::serverSilence() const
{
    JtagSession::ReplyDebt const debt = JtagSession::shared()->replyDebt();
    if (m_phase != Phase::Running || debt.replies == 0)
        return 0;
    return std::max<qint64>(0, debt.waited - qint64(WriteTime) * debt.writes);
}

/// A late look says nothing: the process was suspended or busy, and replies may lie unread.
void Capture::lookAtServer()
{
    bool const isLate = m_sinceLook.restart() > 2 * m_lookTimer.interval();
    if (isLate || m_phase != Phase::Running || m_isStopping ||
        serverSilence() <= m_settings.patience)
        return;
    manager()->stopDataTrigger();
    endRun(CaptureEnd::Silent,
           QStringLiteral("The JTAG server does not answer: it owes a reply for more than %1 s.")
               .arg(m_settings.patience / 1000.0));
}

void Capture::onStandardWindow(int index, int window)
{
    int const repeats = m_standard->autoRunCount();
    int const place = placeOf(index);
    // first of all: this also moves the manager on
    QList<QBitArray> const sections = m_standard->getCurrentData(window);
    SxCore const* const captured = m_standard->getCore(place);
    if (!captured)
        return;
    bool const isLost = m_lost.contains({place, window});
    if (window + 1 == captured->windowNum)
        m_lost.clear(); // of this read; a repeated run goes on with the next
    if (!isLost)
        Q_EMIT windowArrived(place, window, standardSamples(*captured, combine(sections)), repeats);
}

void Capture::onLiteWindow()
{
    int const repeats = m_lite->autoRunCount();
    QList<QBitArray> const sections = m_lite->getCurrentData();
    if (!m_lost.remove({0, 0}))
        Q_EMIT windowArrived(
            0, 0, liteSamples(*m_lite->core(), m_settings.device, combine(sections)), repeats);
}

void Capture::loseWindow(int place, int window)
{
    m_lost << qMakePair(place, window);
    m_outcome.end = CaptureEnd::Incomplete;
    Q_EMIT windowLost(place, window);
}

/// A core for which no trigger is to be expected any more is not waited for.
void Capture::onReason()
{
    if (m_phase != Phase::Running || !m_results.isEmpty() || manager()->deviceReason().isEmpty())
        return;
    Q_EMIT told(manager()->deviceReason());
    if (m_phase != Phase::Running || !m_settings.givesUp || m_isForced ||
        manager()->coreReason().isEmpty())
        return;
    if (m_settings.force >= 0)
        onForceDue();
    else
        onWaitOver();
}

/// A failed open stops the run first, which comes out as a 0 of its own just before the error.
void Capture::onComplete(int result)
{
    if (m_phase != Phase::Running)
        return;
    if (m_results.isEmpty())
        QTimer::singleShot(0, this, &Capture::finishRun);
    m_results << result;
}

/// Cores that were stopped alone are known to be so once all replies are there.
void Capture::finishRun()
{
    if (m_phase != Phase::Running || m_results.isEmpty())
        return;
    bool const isStopOwed = !m_stopped.isEmpty() && JtagSession::shared()->replyDebt().replies > 0;
    if (isStopOwed && !m_sinceEnd.isValid())
        m_sinceEnd.start();
    if (isStopOwed && !m_sinceEnd.hasExpired(StopPatience)) {
        QTimer::singleShot(StopLook, this, &Capture::finishRun);
        return;
    }
    int const result = m_results.last();
    if (result != Protocol::Result::Ok) {
        m_outcome = deviceOutcome(result);
        endRun(m_outcome.end);
    } else if (m_isStopping) {
        endRun(CaptureEnd::Stopped);
    } else if (m_outcome.end == CaptureEnd::Incomplete) {
        endRun(CaptureEnd::Incomplete);
    } else {
        m_outcome.reason = manager()->deviceReason();
        endRun(m_stopped.isEmpty() ? CaptureEnd::Complete : CaptureEnd::NoTrigger);
    }
}

CaptureOutcome Capture::deviceOutcome(int result) const
{
    CaptureOutcome outcome;
    outcome.result = result;
    outcome.reason = manager()->deviceReason();
    outcome.end = CaptureEnd::DeviceError;
    if (result == Protocol::Result::NoBitstream)
        outcome.end = CaptureEnd::Empty;
    else if (result == Protocol::Result::OpenFailed)
        outcome.end = CaptureEnd::OpenFailed;
    return outcome;
}

/// What came before the end is taken first, a frame a round of the event loop. After that the
/// manager itself would wait for ever.
void Capture::onServerLost()
{
    if (m_phase != Phase::Running || !m_results.isEmpty() || m_link->isConnected())
        return;
    qint64 const unread = m_link->unreadBytes();
    m_idleRounds = unread < m_unread ? 0 : m_idleRounds + 1;
    m_unread = unread;
    if (unread > 0 && m_idleRounds < IdleRounds) { // the rest of a frame stays for ever
        QTimer::singleShot(0, this, &Capture::onServerLost);
        return;
    }
    if (manager()->status() != AnalyzerIdle)
        manager()->stopDataTrigger();
    if (m_isStopping)
        endRun(CaptureEnd::Stopped);
    else if (m_settings.host.isEmpty() || m_link->hasAnswered())
        endRun(CaptureEnd::Lost);
    else
        endRun(CaptureEnd::Busy,
               QStringLiteral("The JTAG server closed the connection at once: it "
                              "serves another client, or none. Try again later."));
}

void Capture::endRun(CaptureEnd end, QString const& message)
{
    if (m_phase == Phase::Ending || m_phase == Phase::Idle)
        return;
    m_phase = Phase::Ending;
    for (QTimer* const timer : {&m_waitTimer, &m_forceTimer, &m_stopTimer, &m_lookTimer})
        timer->stop();
    m_outcome.end = end;
    m_outcome.message = message.isEmpty() ? messageFor(end) : message;
    m_link->close();
}

QString Capture::messageFor(CaptureEnd end) const
{
    QString message;
    switch (end) {
    case CaptureEnd::Complete:
        return QStringLiteral("Capture complete.");
    case CaptureEnd::Stopped:
        return QStringLiteral("Stopped.");
    case CaptureEnd::Lost:
        return m_settings.host.isEmpty() && !m_settings.attach
                   ? QStringLiteral("The JTAG server has ended. Run again to start another one.")
                   : QStringLiteral("The connection to the JTAG server was lost.");
    case CaptureEnd::Incomplete:
        return QStringLiteral("Capture incomplete: the server did not send all of it. Run again.");
    case CaptureEnd::NoTrigger:
        message = QStringLiteral("No trigger in time.");
        break;
    case CaptureEnd::Empty:
        message = QStringLiteral("The device is empty: download its Fs file first.");
        break;
    case CaptureEnd::OpenFailed:
        message =
            QStringLiteral("The device could not be opened: check cable, location and power.");
        break;
    default:
        message = QStringLiteral("The server reports device error %1.").arg(m_outcome.result);
    }
    return m_outcome.reason.isEmpty() ? message : message + QLatin1Char(' ') + m_outcome.reason;
}

void Capture::onClosed()
{
    if (m_phase != Phase::Ending)
        return;
    setPhase(Phase::Idle);
    Q_EMIT ended(m_outcome);
}

void Capture::setPhase(Phase phase)
{
    m_phase = phase;
    Q_EMIT runningChanged(isRunning());
}

} // namespace VEK
