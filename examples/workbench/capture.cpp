#include "workbench/capture.h"

#include "acquire/litedatamanager.h"
#include "acquire/standarddatamanager.h"
#include "analyzer/samples.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"
#include "model/vekfile.h"

#include <QProcess>
#include <QTimer>

using namespace VEK;

Capture::Capture(QObject* parent) : QObject(parent)
{}

Capture::~Capture()
{
    m_standard.reset();
    m_lite.reset();
    JtagSession::shared()->disconnectServer();
    JtagSession::shared()->clearAllServerMap();
}

bool Capture::open(QString const& path, QString& error)
{
    stop();
    m_standard.reset();
    m_lite.reset();
    VekMode const mode = vekModeFromVekConfigFile(path);
    bool ok = false;
    if (mode == VekModeStandard) {
        m_standard = std::make_unique<VekStandardDataManager>();
        connect(m_standard.get(), &VekStandardDataManager::readRamComplete, this,
                &Capture::onStandardWindow);
        connect(m_standard.get(), &DataManager::triggerComplete, this, &Capture::onComplete);
        ok = m_standard->readVekFile(path, error);
    } else if (mode == VekModeLite) {
        m_lite = std::make_unique<VekLiteDataManager>();
        connect(m_lite.get(), &VekLiteDataManager::readRamComplete, this, &Capture::onLiteWindow);
        connect(m_lite.get(), &DataManager::triggerComplete, this, &Capture::onComplete);
        ok = m_lite->readVekFile(path, error);
    }
    if (ok)
        return true;
    if (error.isEmpty())
        error = QStringLiteral("This is no configuration file with cores.");
    m_standard.reset();
    m_lite.reset();
    return false;
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
bool Capture::connectServer(CABLE cable)
{
    JtagSession* const session = JtagSession::shared();
    QString const name = cable == CableLPT ? Server::LptName : Server::Ft2chName;
    if (session->connectServer(name))
        return true;
    session->disconnectServer();
    session->clearAllServerMap();
    session->validateServerList(session->initLocalServerListForveksh(cable, Channel0));
    for (QProcess* const process : session->serverMap())
        connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                &Capture::onServerEnded);
    return session->connectServer(name);
}

void Capture::run(CABLE cable, QString const& location, bool repeat)
{
    if (m_running || (!m_standard && !m_lite))
        return;
    if (!connectServer(cable))
        return fail(QStringLiteral("No JTAG server: it could not be started, or did not answer. Is "
                                   "Programmer/bin installed beside this program?"));
    DataManager& manager = m_standard ? static_cast<DataManager&>(*m_standard) : *m_lite;
    manager.setAutoRunCount(repeat ? 0 : -1);
    m_stopped = false;
    setRunning(true);
    QString const cableName = cable == CableLPT ? Server::LptName : Server::Ft2chName;
    manager.initDeviceChainandLocation({0}, cableName, location);
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
    if (m_standard)
        m_standard->stopDataTrigger();
    else
        m_lite->stopDataTrigger();
}

void Capture::onStandardWindow(int core, int window)
{
    int const repeats = m_standard->autoRunCount();
    // first of all: this also moves the manager on
    QBitArray const tdo = combine(m_standard->getCurrentData(window));
    if (SxCore const* const captured = m_standard->getCore(core))
        Q_EMIT windowArrived(core, window, standardSamples(*captured, tdo), repeats);
}

void Capture::onLiteWindow()
{
    int const repeats = m_lite->autoRunCount();
    QBitArray const tdo = combine(m_lite->getCurrentData());
    Q_EMIT windowArrived(0, 0, liteSamples(*m_lite->core(), m_deviceName, tdo), repeats);
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
    m_results.clear();
    setRunning(false);
    switch (result) {
    case Protocol::Result::Ok:
        Q_EMIT ended(true,
                     m_stopped ? QStringLiteral("Stopped.") : QStringLiteral("Capture complete."));
        break;
    case Protocol::Result::NoBitstream:
        fail(QStringLiteral("The device is empty: download its Fs file first."));
        break;
    case Protocol::Result::OpenFailed:
        fail(QStringLiteral("The device could not be opened: check cable, location and power."));
        break;
    default:
        fail(QStringLiteral("The server reports device error %1.").arg(result));
    }
}

void Capture::onServerEnded()
{
    JtagSession::shared()->disconnectServer();
    if (!m_running)
        return;
    fail(QStringLiteral("The JTAG server has ended. Run again to start another one."));
    stop();
}

void Capture::setRunning(bool running)
{
    m_running = running;
    Q_EMIT runningChanged(running);
}

void Capture::fail(QString const& message)
{
    Q_EMIT ended(false, message);
}
