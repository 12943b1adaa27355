#include "acquire/datamanager.h"

#include "image/matchencoding.h"
#include "image/registermap.h"
#include "jtag/cablereport.h"
#include "jtag/jtagsession.h"

#include <QBitArray>

#include <utility>

namespace VEK {
namespace {

/// The protocol's number of a cable in an OPEN request, not the number in a server's record; -1
/// for a cable that has no locations.
int cableIndex(QString const& cable)
{
    return QStringList{Server::Ft2chName, Server::Tr7qzName, Server::WinUsbName}.indexOf(cable);
}

} // namespace

DataManager::DataManager() : m_pollTimer(new QTimer(this)), m_cableName(Server::Ft2chName)
{
    connect(m_pollTimer, &QTimer::timeout, this, &DataManager::checkState);
}

DataManager::~DataManager() = default;

void DataManager::setStatus(ANALYZER_STATUS status)
{
    m_status = status;
    emit statusChanged(status != AnalyzerIdle);
}

bool DataManager::moveTo(ANALYZER_STATUS status)
{
    QPointer<DataManager> const self(this);
    setStatus(status);
    return self && m_status == status;
}

void DataManager::setTiming(int pollInterval, unsigned sectionPause)
{
    m_pollTimer->setInterval(pollInterval);
    m_sectionPause = sectionPause;
}

void DataManager::initDeviceChain(QList<QVariant> const& chain)
{
    openChain({{Protocol::Key::Cmd, Protocol::Cmd::Open}, {Protocol::Key::Chain, chain}});
}

void DataManager::initDeviceChainandLocation(QList<QVariant> const& chain, QString const& cable,
                                             QString const& location)
{
    int const index = cableIndex(cable);
    if (index < 0 || location.isEmpty()) {
        initDeviceChain(chain);
        return;
    }
    openChain({{Protocol::Key::Cmd, Protocol::Cmd::Open},
               {Protocol::Key::Chain, chain},
               {Protocol::Key::CableIndex, index},
               {Protocol::Key::CableLocation, location.toInt()}});
}

void DataManager::openChain(CmdPack pack)
{
    setReasons(QString(), QString());
    QPointer<DataManager> const self(this);
    JtagSession::shared()->createTask({QUrl(), pack}, [self](CmdPack const& reply) {
        if (self)
            self->onChainOpened(reply);
    });
}

void DataManager::onChainOpened(CmdPack const& reply)
{
    int const result = reply.value(Protocol::Key::Res).toInt();
    setReasons(reply.value(Protocol::Key::Reason).toString(), m_coreReason);
    if (result == Protocol::Result::Ok)
        return;
    QPointer<DataManager> const self(this);
    stopDataTrigger();
    if (self)
        emit triggerComplete(result);
}

void DataManager::noteCoreReason(CmdPack const& reply)
{
    setReasons(m_chainReason, reply.value(Protocol::Key::Reason).toString());
}

void DataManager::setReasons(QString const& ofChain, QString const& ofCore)
{
    QString const before = deviceReason();
    m_chainReason = ofChain;
    m_coreReason = ofCore;
    if (deviceReason() != before)
        emit deviceReasonChanged(deviceReason());
}

void DataManager::getCableForNlc()
{
    m_nlcCables.clear();
    emit StartandAutoEnable(false);
    JtagSession::shared()->connectServer(m_cableName);
    QPointer<DataManager> const self(this);
    CmdPack const pack{{Protocol::Key::Cmd, Protocol::Cmd::Query}};
    JtagSession::shared()->createTask({QUrl(), pack}, [self](CmdPack const& reply) {
        if (self)
            self->onCablesQueried(reply);
    });
}

void DataManager::onCablesQueried(CmdPack const& reply)
{
    if (reply.value(Protocol::Key::Res).toInt() == Protocol::Result::Ok)
        m_nlcCables = cableRows(reply.value(Protocol::Key::Cables)
                                    .toString()
                                    .split(QLatin1Char(';'), Qt::SkipEmptyParts));
    emit CableChangedForNlc();
    emit StartandAutoEnable(true);
}

void DataManager::send(CmdPack const& pack)
{
    JtagSession::shared()->createTask({QUrl(), pack}, nullptr);
}

void DataManager::ask(CmdPack const& pack, ReplyHandler const& handler)
{
    JtagSession::shared()->createDataTask({QUrl(), pack}, handler);
}

CmdPack DataManager::writeRequest(QString const& oprate, QBitArray const& data)
{
    return {{Protocol::Key::Cmd, Protocol::Cmd::Write},
            {Protocol::Key::Oprate, oprate},
            {Protocol::Key::Data, data}};
}

CmdPack DataManager::readRequest(QString const& oprate, int size)
{
    return {{Protocol::Key::Cmd, Protocol::Cmd::Read},
            {Protocol::Key::Oprate, oprate},
            {Protocol::Key::Size, size}};
}

void DataManager::stopDataTrigger()
{
    stopArmedCores();
    send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
    // what is on its way must not be taken for the replies of the next run; the required times
    // leave none behind that matters, and deployed servers see their ids begin at 0
    if (m_pacing == Pacing::ByReplies)
        JtagSession::shared()->abandonAll();
    else
        JtagSession::shared()->cancelAll();
    JtagSession::shared()->diagnosis(QStringLiteral("stop"));
    if (resetRun())
        emit triggerComplete(0);
}

void DataManager::confirmStop(int width, ReplyHandler const& onTaken)
{
    send(writeRequest(Protocol::Oprate::WriteStartReg, regSelectData(Register::Start)));
    ask(
        readRequest(Protocol::Oprate::ReadStartReg, width),
        onTaken ? onTaken : [](CmdPack const&, bool* finished) { *finished = true; });
}

bool DataManager::stopGracefully()
{
    if (m_status == AnalyzerIdle)
        return false;
    JtagSession::shared()->abandonAll();
    int const width = stopArmedCores();
    QPointer<DataManager> const self(this);
    if (width > 0) {
        confirmStop(width, [self](CmdPack const&, bool* finished) {
            *finished = true;
            if (!self || !std::exchange(self->m_isStopAwaited, false) ||
                self->m_status != AnalyzerIdle) // another run is on already
                return;
            emit self->stopTaken();
            if (self)
                emit self->triggerComplete(0);
        });
    }
    send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
    if (!resetRun())
        return false;
    m_isStopAwaited = width > 0;
    if (!m_isStopAwaited)
        emit triggerComplete(0);
    return width > 0;
}

void DataManager::finishRun()
{
    bool const isAlive = resetRun();
    send({{Protocol::Key::Cmd, Protocol::Cmd::Close}});
    if (isAlive)
        emit triggerComplete(0);
}

/// Back to idle; the signals of the end follow in the callers. False when the manager is gone.
bool DataManager::resetRun()
{
    m_pollTimer->stop();
    m_windows = nullptr;
    m_isPollOwed = false;
    m_isFinishing = false;
    m_isStopAwaited = false;
    QPointer<DataManager> const self(this);
    setStatus(AnalyzerIdle);
    if (!self)
        return false;
    clearCapture();
    m_autoRunCount = -1;
    return true;
}

} // namespace VEK
