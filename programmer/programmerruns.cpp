// The runs of the command-line programmer.

#include "jtag/cablereport.h"
#include "jtag/jtagsession.h"
#include "programmer/programmerprocess.h"
#include "programmer/vekprogrammermodel.h"

#include <QPointer>
#include <QRegExp>
#include <QSet>

namespace VEK {

namespace {

constexpr int RemoteConnection = 1;

bool failed(int code, QProcess::ExitStatus status)
{
    return code != 0 || status != QProcess::NormalExit;
}

/// The value of an output line such as "Name: TK-107".
QString valueOf(QString const& line)
{
    return line.section(QLatin1Char(':'), 1, 1).simplified();
}

/// Up to three lines that describe a device, behind the line that announces it.
void takeDeviceInfo(QStringList const& block, DeviceItem& row)
{
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    QString const family = block.value(0);
    QString const name = block.value(1);
    QString const id = block.value(2);
    bool known = false;
    if (name.contains(QLatin1String("Name:")) && catalogue->deviceModes(valueOf(name))) {
        row.setDevice(valueOf(name));
        known = true;
    }
    if (family.contains(QLatin1String("Family:")) && catalogue->series(valueOf(family)))
        row.series = valueOf(family);
    if (id.contains(QLatin1String("ID:"))) {
        row.idCode = valueOf(id).section(QStringLiteral("0x"), 1, 1);
        known = known || !catalogue->getDevicesNamesByIDCODE(row.idCode).isEmpty();
    }
    row.known = known ? 1 : 0;
}

} // namespace

bool VekProgrammerModel::isBusy() const
{
    return m_run != Run::None || m_process->isRunning();
}

int VekProgrammerModel::cabletoProgrammerCableIdx(int cable)
{
    constexpr int Numbers[] = {0, 1, 5, 2};
    return cable >= 0 && cable <= 3 ? Numbers[cable] : cable;
}

QStringList VekProgrammerModel::remoteArguments() const
{
    JtagSession const* const session = JtagSession::shared();
    if (session->kindOfConnection() != RemoteConnection)
        return {};
    return {QStringLiteral("--nlc"),
            session->nlcHostText() + QLatin1Char(':') + session->nlcPortText()};
}

/// Starts the programmer. `giveBack` ends the run, however it went; until then any other is
/// refused.
void VekProgrammerModel::start(Run run, QStringList const& arguments, FinishSlot finish)
{
    m_run = run;
    Q_EMIT TargetEnable(false);
    m_finish = connect(m_process, &ProgrammerProcess::finished, this, finish);
    m_process->start(arguments);
}

/// What every finish slot does first, since the process is used again.
void VekProgrammerModel::endRun(Run run)
{
    m_run = run;
    disconnect(m_finish);
}

/// What every run does last. The next one may start in answer.
void VekProgrammerModel::giveBack()
{
    Run const run = m_run;
    if (run == Run::Cables || run == Run::CablesInit)
        Q_EMIT StartandAutoEnable(true);
    m_run = Run::None;
    Q_EMIT TargetEnable(true);
    if (run == Run::CablesInit)
        Q_EMIT cableInitFinsh();
}

void VekProgrammerModel::onProgramError()
{
    // a crash finishes the process too, but is told once
    bool const hadRun = disconnect(m_finish);
    m_process->dropOutput();
    Q_EMIT statusChanged(ProgrammerFailed, {QStringLiteral("Error: Call Programmer failed!")});
    // not yet: the process tidies up behind this signal, and with it a run that was started here
    if (hadRun)
        QMetaObject::invokeMethod(this, &VekProgrammerModel::giveBack, Qt::QueuedConnection);
}

void VekProgrammerModel::scanCables()
{
    scanCablesForFT2CH(Run::Cables, &VekProgrammerModel::onScanCableFinishForFT2CH);
}

void VekProgrammerModel::scanCablesInit()
{
    scanCablesForFT2CH(Run::CablesInit, &VekProgrammerModel::onScanCableFinishForFT2CHInit);
}

void VekProgrammerModel::scanCablesForFT2CH(Run run, FinishSlot finish)
{
    if (isBusy())
        return;
    m_cables.clear();
    m_run = run;
    Q_EMIT StartandAutoEnable(false);
    start(run, QStringList{QStringLiteral("--scan-cables")} + remoteArguments(), finish);
}

/// The second half of a cable scan, which follows however the first one ended.
void VekProgrammerModel::scanCablesForWINUSB(Run run, FinishSlot finish, int code,
                                             QProcess::ExitStatus status)
{
    endRun(run);
    addCables(code, status);
    start(run,
          QStringList{QStringLiteral("--scan-cables"), QStringLiteral("L")} + remoteArguments(),
          finish);
}

void VekProgrammerModel::addCables(int code, QProcess::ExitStatus status)
{
    QString const output = QString::fromUtf8(m_process->takeOutput());
    if (!failed(code, status))
        m_cables += cableRows(output.split(QRegExp(QStringLiteral("[\r\n]")), Qt::SkipEmptyParts));
}

void VekProgrammerModel::onScanCableFinishForFT2CH(int code, QProcess::ExitStatus status)
{
    scanCablesForWINUSB(Run::Cables, &VekProgrammerModel::onScanCableFinishForWINUSB, code, status);
}

void VekProgrammerModel::onScanCableFinishForFT2CHInit(int code, QProcess::ExitStatus status)
{
    scanCablesForWINUSB(Run::CablesInit, &VekProgrammerModel::onScanCableFinishForWINUSBInit, code,
                        status);
}

void VekProgrammerModel::onScanCableFinishForWINUSB(int code, QProcess::ExitStatus status)
{
    endCableScan(Run::Cables, code, status);
}

void VekProgrammerModel::onScanCableFinishForWINUSBInit(int code, QProcess::ExitStatus status)
{
    endCableScan(Run::CablesInit, code, status);
}

void VekProgrammerModel::endCableScan(Run run, int code, QProcess::ExitStatus status)
{
    endRun(run);
    addCables(code, status);
    checkCableAndChannel();
    giveBack();
}

/// A cable that both scans see counts once.
void VekProgrammerModel::checkCableAndChannel()
{
    QList<QStringList> const all = m_cables;
    QSet<QStringList> seen;
    m_cables.clear();
    for (QStringList const& row : all) {
        if (seen.contains(row))
            continue;
        seen << row;
        m_cables << row;
    }
}

void VekProgrammerModel::scanDevices(int cable, int location)
{
    if (isBusy())
        return;
    m_run = Run::Devices;
    replaceRows({});
    QStringList arguments{QStringLiteral("--cable-index"),
                          QString::number(cabletoProgrammerCableIdx(cable))};
    if (location > 0)
        arguments << QStringLiteral("--location") << QString::number(location);
    arguments << QStringLiteral("--scan");
    start(Run::Devices, arguments + remoteArguments(), &VekProgrammerModel::onScanFinish);
}

void VekProgrammerModel::onScanFinish(int code, QProcess::ExitStatus status)
{
    endRun(Run::Devices);
    QString const output = QString::fromUtf8(m_process->takeOutput());
    if (failed(code, status)) {
        replaceRows({});
        Q_EMIT statusChanged(ProgrammerNothingFound,
                             {QStringLiteral("Error: Scan Device Failed, No device found!")});
        giveBack();
        return;
    }
    QStringList const lines = output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList messages;
    QList<DeviceItem*> rows;
    for (int i = 0; i < lines.size(); ++i) {
        if (!lines[i].contains(QLatin1String("Device Info:"))) {
            if (!lines[i].simplified().isEmpty())
                messages << lines[i].simplified();
            continue;
        }
        rows << new DeviceItem;
        takeDeviceInfo(lines.mid(i + 1, 3), *rows.last());
        i += 3;
    }
    if (!chooseDevices(rows))
        return;
    replaceRows(rows);
    Q_EMIT statusChanged(rows.isEmpty() ? ProgrammerNothingFound : ProgrammerIdle, messages);
    giveBack();
}

/// False when this object went away while the user was choosing; the rows are gone then too.
bool VekProgrammerModel::chooseDevices(QList<DeviceItem*> const& rows)
{
    QPointer<VekProgrammerModel> const self(this);
    for (DeviceItem* const row : rows) {
        selectDevice(row);
        if (!self) {
            qDeleteAll(rows);
            return false;
        }
        updateOperation(row);
    }
    return true;
}

void VekProgrammerModel::readDeviceCodes()
{
    if (isBusy())
        return;
    start(Run::Devices,
          QStringList{QStringLiteral("--operation_index"), QStringLiteral("0")} + remoteArguments(),
          &VekProgrammerModel::onDownloadFinish);
}

QStringList VekProgrammerModel::downloadArguments(DeviceItem const& target, int cable, int location,
                                                  QString const& frequency) const
{
    QStringList arguments{
        QStringLiteral("--device"),          target.device,
        QStringLiteral("--fsFile"),          target.fsFile,
        QStringLiteral("--operation_index"), QString::number(target.operation->cmdIndex),
        QStringLiteral("--cable-index"),     QString::number(cabletoProgrammerCableIdx(cable))};
    arguments << remoteArguments();
    if (location > 0)
        arguments << QStringLiteral("--location") << QString::number(location);
    if (!frequency.isEmpty() && (cable == 1 || cable == 2))
        arguments << QStringLiteral("--frequency") << frequency;
    if (m_rows.size() > 1) {
        int place = 0;
        QStringList irCodes;
        for (int i = 0; i < m_rows.size(); ++i) {
            if (m_rows[i]->enable)
                place = i;
            irCodes << QString::number(m_rows[i]->irCode);
        }
        arguments << QStringLiteral("--chain_size") << QString::number(m_rows.size())
                  << QStringLiteral("--chain_index") << QString::number(place)
                  << QStringLiteral("--chain_ir") << irCodes.join(QLatin1Char(','));
    }
    return arguments;
}

void VekProgrammerModel::programFs(int cable, int location, QString const& frequency)
{
    if (isBusy())
        return;
    auto const refuse = [this](QString const& text) {
        Q_EMIT statusChanged(ProgrammerFailed, {text});
    };
    DeviceItem const* const target = activeDevice();
    if (!target)
        return refuse(QStringLiteral("Error: Program Failed, No target device! "));
    if (target->fsFile.isEmpty())
        return refuse(QStringLiteral("Error: Program Failed, No fs file!"));
    if (!target->operation)
        return refuse(QStringLiteral("Error: Program Failed, No operation!"));
    QStringList const arguments = downloadArguments(*target, cable, location, frequency);
    m_run = Run::Devices;
    Q_EMIT statusChanged(ProgrammerRunning, {});
    start(Run::Devices, arguments, &VekProgrammerModel::onDownloadFinish);
}

void VekProgrammerModel::onDownloadFinish(int code, QProcess::ExitStatus status)
{
    endRun(Run::Devices);
    QByteArray const output = m_process->takeOutput();
    for (DeviceItem* const row : qAsConst(m_rows))
        row->status = ProgrammerIdle;
    if (!activeDevice()) {
        giveBack();
        return;
    }
    if (failed(code, status)) {
        Q_EMIT statusChanged(ProgrammerIdle, {QStringLiteral("Error: Fs file download failed!")});
        giveBack();
        return;
    }
    QByteArray const shown(output.constData()); // up to the first NUL
    QRegExp const progressBar(QStringLiteral("\\[#+ ?\\]"));
    QStringList lines;
    bool const droppedError = m_process->hasDroppedError();
    if (droppedError)
        lines << QStringLiteral("Error: The programmer told of one in output too long to keep.");
    for (QString const& line : QString::fromUtf8(shown).split(QLatin1Char('\n')))
        if (!line.contains(progressBar))
            lines << line;
    bool const clean = !droppedError && !tellsError(shown);
    Q_EMIT statusChanged(clean ? ProgrammerDownloaded : ProgrammerFailed, lines);
    giveBack();
}

} // namespace VEK
