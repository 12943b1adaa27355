#include "acquire/datamanager.h"

#include "jtag/cablereport.h"
#include "jtag/jtagsession.h"

#include <QBitArray>
#include <QCoreApplication>

#include <unistd.h>

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
    stopDataTrigger();
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

bool DataManager::pauseForReplies()
{
    QPointer<DataManager> const self(this);
    usleep(m_sectionPause);
    QCoreApplication::processEvents();
    // data on the socket is announced by a queued call, which only a second round delivers
    if (self)
        QCoreApplication::processEvents();
    return !self.isNull();
}

void DataManager::askForSection(Section const& section, QBitArray const& burstWord, int size,
                                ReplyHandler const& handler)
{
    auto const placed = [&](CmdPack pack) {
        pack.insert(Protocol::Key::Section, section.index);
        pack.insert(Protocol::Key::SectionCount, section.count);
        pack.insert(Protocol::Key::Window, section.window);
        return pack;
    };
    send(placed(writeRequest(Protocol::Oprate::BrustRead, burstWord)));
    ask(placed(readRequest(Protocol::Oprate::ReadRam, size)), handler);
}

} // namespace VEK
