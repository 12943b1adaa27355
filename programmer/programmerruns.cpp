// The runs of the command-line programmer.

#include "jtag/cablereport.h"
#include "jtag/jtagsession.h"
#include "programmer/vekprogrammermodel.h"

#include <QCoreApplication>
#include <QDir>
#include <QPointer>
#include <QRegExp>

#include <utility>

namespace VEK {

namespace {

constexpr int RemoteConnection = 1;
constexpr int MostOutput = 64 * 1024 * 1024; // a programmer that says more is broken

QString programmerPath()
{
    QString const folder =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../../Programmer/bin/");
    return QDir::toNativeSeparators(QDir::cleanPath(folder) + QStringLiteral("/loader_cli"));
}

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
    return m_process->state() != QProcess::NotRunning;
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

/// Starts the programmer. `giveBack` runs when the run has ended, however it did.
void VekProgrammerModel::run(QStringList const& arguments, FinishSlot finish,
                             std::function<void()> const& giveBack)
{
    Q_EMIT TargetEnable(false);
    m_output.clear();
    m_giveBack = giveBack;
    m_finish = connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                       this, finish);
    m_process->start(m_programmer.isEmpty() ? programmerPath() : m_programmer, arguments,
                     QIODevice::ReadWrite);
}

/// What every finish slot does first, since the process is used again. Gives what gives back what
/// the run took.
std::function<void()> VekProgrammerModel::endRun()
{
    disconnect(m_finish);
    collectOutput();
    return std::exchange(m_giveBack, nullptr);
}

/// Keeps the pipe of the process empty, and the memory bounded.
void VekProgrammerModel::collectOutput()
{
    m_output += m_process->readAllStandardOutput();
    if (m_output.size() > MostOutput && isBusy())
        m_process->kill();
}

QByteArray VekProgrammerModel::takeOutput()
{
    QByteArray output;
    output.swap(m_output);
    return output;
}

void VekProgrammerModel::onProgramError()
{
    // a crash finishes the process too, but is told once
    std::function<void()> const giveBack = endRun();
    m_output.clear();
    Q_EMIT statusChanged(ProgrammerFailed, {QStringLiteral("Error: Call Programmer failed!")});
    if (giveBack)
        giveBack();
}

void VekProgrammerModel::scanCables()
{
    scanCablesForFT2CH(&VekProgrammerModel::onScanCableFinishForFT2CH);
}

void VekProgrammerModel::scanCablesInit()
{
    scanCablesForFT2CH(&VekProgrammerModel::onScanCableFinishForFT2CHInit);
}

void VekProgrammerModel::scanCablesForFT2CH(FinishSlot finish)
{
    if (isBusy())
        return;
    m_cables.clear();
    bool const init = finish == &VekProgrammerModel::onScanCableFinishForFT2CHInit;
    Q_EMIT StartandAutoEnable(false);
    run(QStringList{QStringLiteral("--scan-cables")} + remoteArguments(), finish, [this, init] {
        Q_EMIT StartandAutoEnable(true);
        Q_EMIT TargetEnable(true);
        if (init)
            Q_EMIT cableInitFinsh();
    });
}

void VekProgrammerModel::scanCablesForWINUSB(FinishSlot finish,
                                             std::function<void()> const& giveBack)
{
    run(QStringList{QStringLiteral("--scan-cables"), QStringLiteral("L")} + remoteArguments(),
        finish, giveBack);
}

void VekProgrammerModel::addCables(int code, QProcess::ExitStatus status)
{
    QString const output = QString::fromUtf8(takeOutput());
    if (!failed(code, status))
        m_cables += cableRows(output.split(QRegExp(QStringLiteral("[\r\n]")), Qt::SkipEmptyParts));
}

void VekProgrammerModel::onScanCableFinishForFT2CH(int code, QProcess::ExitStatus status)
{
    std::function<void()> const giveBack = endRun();
    addCables(code, status);
    scanCablesForWINUSB(&VekProgrammerModel::onScanCableFinishForWINUSB, giveBack);
}

void VekProgrammerModel::onScanCableFinishForFT2CHInit(int code, QProcess::ExitStatus status)
{
    std::function<void()> const giveBack = endRun();
    addCables(code, status);
    scanCablesForWINUSB(&VekProgrammerModel::onScanCableFinishForWINUSBInit, giveBack);
}

void VekProgrammerModel::onScanCableFinishForWINUSB(int code, QProcess::ExitStatus status)
{
    endCableScan(code, status);
}

void VekProgrammerModel::onScanCableFinishForWINUSBInit(int code, QProcess::ExitStatus status)
{
    endCableScan(code, status);
}

void VekProgrammerModel::endCableScan(int code, QProcess::ExitStatus status)
{
    std::function<void()> const giveBack = endRun();
    addCables(code, status);
    checkCableAndChannel();
    giveBack();
}

/// A cable that both scans see counts once.
void VekProgrammerModel::checkCableAndChannel()
{
    QList<QStringList> const all = m_cables;
    m_cables.clear();
    for (QStringList const& row : all)
        if (!m_cables.contains(row))
            m_cables << row;
}

void VekProgrammerModel::scanDevices(int cable, int location)
{
    if (isBusy())
        return;
    replaceRows({});
    QStringList arguments{QStringLiteral("--cable-index"),
                          QString::number(cabletoProgrammerCableIdx(cable))};
    if (location > 0)
        arguments << QStringLiteral("--location") << QString::number(location);
    arguments << QStringLiteral("--scan");
    run(arguments + remoteArguments(), &VekProgrammerModel::onScanFinish,
        [this] { Q_EMIT TargetEnable(true); });
}

void VekProgrammerModel::onScanFinish(int code, QProcess::ExitStatus status)
{
    std::function<void()> const giveBack = endRun();
    QString const output = QString::fromUtf8(takeOutput());
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
    run(QStringList{QStringLiteral("--operation_index"), QStringLiteral("0")} + remoteArguments(),
        &VekProgrammerModel::onDownloadFinish, [this] { Q_EMIT TargetEnable(true); });
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
    Q_EMIT statusChanged(ProgrammerRunning, {});
    run(arguments, &VekProgrammerModel::onDownloadFinish, [this] { Q_EMIT TargetEnable(true); });
}

void VekProgrammerModel::onDownloadFinish(int code, QProcess::ExitStatus status)
{
    std::function<void()> const giveBack = endRun();
    QByteArray const output = takeOutput();
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
    QString const text = QString::fromUtf8(output.constData()); // up to the first NUL
    QRegExp const progressBar(QStringLiteral("\\[#+ ?\\]"));
    QStringList lines;
    for (QString const& line : text.split(QLatin1Char('\n')))
        if (!line.contains(progressBar))
            lines << line;
    bool const clean =
        !text.contains(QLatin1String("Error")) && !text.contains(QLatin1String("error"));
    Q_EMIT statusChanged(clean ? ProgrammerDownloaded : ProgrammerFailed, lines);
    giveBack();
}

} // namespace VEK
