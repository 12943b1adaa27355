#include "capture/capture.h"

#include "acquire/litedatamanager.h"
#include "acquire/samples.h"
#include "acquire/standarddatamanager.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"
#include "model/signallist.h"
#include "model/vekfile.h"

#include <QFile>
#include <QTimer>

#include <algorithm>

namespace VEK {
namespace {

/// Whether each section of a window has all the bits that were asked for, of `depth` samples. A
/// short one in the middle would move all that is behind it.
bool isWhole(QList<QBitArray> const& sections, int width, int depth)
{
    int const bits = width * std::min(depth, DataManager::SectionSamples);
    return std::all_of(sections.begin(), sections.end(),
                       [bits](QBitArray const& section) { return section.size() == bits; });
}

} // namespace

Capture::Capture(QObject* parent) : QObject(parent)
{
    connect(JtagSession::shared(), &JtagSession::connectionLost, this, &Capture::onServerLost);
}

Capture::~Capture()
{
    m_standard.reset();
    m_lite.reset();
    dropServer();
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
    stop();
    Q_EMIT closing();
    m_standard.reset(mode == VekModeStandard ? standard.release() : nullptr);
    m_lite.reset(mode == VekModeLite ? lite.release() : nullptr);
    if (m_standard)
        connect(m_standard.get(), &VekStandardDataManager::readRamComplete, this,
                &Capture::onStandardWindow);
    else
        connect(m_lite.get(), &VekLiteDataManager::readRamComplete, this, &Capture::onLiteWindow);
    connect(manager(), &DataManager::triggerComplete, this, &Capture::onComplete);
    // queued: a reason for which the run ends is a part of its end
    connect(manager(), &DataManager::deviceReasonChanged, this, &Capture::onReason,
            Qt::QueuedConnection);
    return true;
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

void Capture::setDeviceName(QString const& name)
{
    m_deviceName = name;
}

/// A server is started once, and kept; another cable's replaces it.
bool Capture::connectServer(QString const& cable)
{
    JtagSession* const session = JtagSession::shared();
    if (session->connectServer(cable))
        return true;
    dropServer();
    session->validateServerList(session->initLocalServerListForveksh(
        cable == Server::LptName ? CableLPT : CableFT2CH, Channel0));
    return session->connectServer(cable);
}

void Capture::dropServer()
{
    JtagSession::shared()->disconnectServer();
    JtagSession::shared()->clearAllServerMap();
}

void Capture::run(QString const& cable, QString const& location, bool repeat)
{
    if (m_running || !manager())
        return;
    if (!connectServer(cable)) {
        Q_EMIT ended(false, QStringLiteral("No JTAG server: it could not be started, or did not "
                                           "answer. Is Programmer/bin installed beside this "
                                           "program?"));
        return;
    }
    manager()->setAutoRunCount(repeat ? 0 : -1);
    m_stopped = false;
    m_lost = false;
    m_isWhole = true;
    m_next.clear();
    setRunning(true);
    manager()->initDeviceChainandLocation({0}, cable, location);
    if (m_lite)
        return m_lite->startDataTrigger(0);
    m_standard->setDeviceName(m_deviceName);
    QList<int> places;
    for (int i = 0; i < m_standard->cores().size(); ++i)
        places << i;
    m_standard->startDataTrigger(places);
}

void Capture::force()
{
    if (m_running && m_standard)
        m_standard->forceDataTrigger();
}

void Capture::stop()
{
    if (!m_running)
        return;
    m_stopped = true;
    manager()->stopDataTrigger();
}

void Capture::shutDown()
{
    stop();
    dropServer();
}

void Capture::onStandardWindow(int core, int window)
{
    int const repeats = m_standard->autoRunCount();
    // first of all: this also moves the manager on
    QList<QBitArray> const sections = m_standard->getCurrentData(window);
    SxCore const* const captured = m_standard->getCore(core);
    if (!captured)
        return;
    int const count = captured->windowNum;
    int next = m_next.value(core);
    bool const isNext =
        window == next && isWhole(sections, captured->dataOutShiftWidth(), captured->captureAmount);
    next += isNext;
    bool const isLast = window + 1 == count;
    m_next[core] = isLast ? 0 : next;
    if (isLast && next < count)
        tellLoss(core, next, count);
    if (isNext) // last of all: the receiver may open another configuration
        Q_EMIT windowArrived(core, window, standardSamples(*captured, combine(sections)), repeats);
}

void Capture::onLiteWindow()
{
    int const repeats = m_lite->autoRunCount();
    QList<QBitArray> const sections = m_lite->getCurrentData();
    SXCore_Lite const& core = *m_lite->core();
    int const width = flatSignals(core.dataSignalList).size();
    if (!isWhole(sections, width, core.captureAmount))
        return tellLoss(0, 0, 1);
    Q_EMIT windowArrived(0, 0, liteSamples(core, m_deviceName, combine(sections)), repeats);
}

void Capture::tellLoss(int core, int window, int count)
{
    m_isWhole = false;
    QString const behind = window + 1 < count
                               ? QStringLiteral(" It and the windows behind it are not shown.")
                               : QStringLiteral(" It is not shown.");
    Q_EMIT windowsLost(QStringLiteral("Core %1, window %2 of %3 did not come whole.")
                           .arg(core)
                           .arg(window)
                           .arg(count) +
                       behind);
}

void Capture::onReason()
{
    if (m_running && m_results.isEmpty() && !manager()->deviceReason().isEmpty())
        Q_EMIT told(manager()->deviceReason());
}

/// A failed open stops the run first, which comes out as a 0 of its own just before the error.
void Capture::onComplete(int result)
{
    if (!m_running)
        return;
    if (m_results.isEmpty())
        QTimer::singleShot(0, this, &Capture::finishRun);
    m_results << result;
}

void Capture::finishRun()
{
    int const result = m_results.last();
    QString const reason = manager()->deviceReason();
    m_results.clear();
    setRunning(false);
    QString message;
    if (m_lost)
        message = QStringLiteral("The JTAG server has ended. Run again to start another one.");
    else if (result == Protocol::Result::NoBitstream)
        message = QStringLiteral("The device is empty: download its Fs file first.");
    else if (result == Protocol::Result::OpenFailed)
        message =
            QStringLiteral("The device could not be opened: check cable, location and power.");
    else if (result != Protocol::Result::Ok)
        message = QStringLiteral("The server reports device error %1.").arg(result);
    else if (m_stopped)
        message = QStringLiteral("Stopped.");
    else if (!m_isWhole)
        message =
            QStringLiteral("Capture incomplete: the server did not send all of it. Run again.");
    else
        message = QStringLiteral("Capture complete.");
    if (result != Protocol::Result::Ok && !reason.isEmpty())
        message += QLatin1Char(' ') + reason;
    Q_EMIT ended(!m_lost && result == Protocol::Result::Ok && (m_stopped || m_isWhole), message);
}

/// The manager itself would wait for ever.
void Capture::onServerLost()
{
    JtagSession::shared()->disconnectServer();
    if (!m_running || !m_results.isEmpty())
        return;
    m_lost = true;
    stop();
}

void Capture::setRunning(bool running)
{
    m_running = running;
    Q_EMIT runningChanged(running);
}

} // namespace VEK
