#include "cli/run.h"

#include "cli/command.h"
#include "cli/configuration.h"
#include "cli/unixsignals.h"
#include "trigger/trigger.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSysInfo>

#include <algorithm>

#include <unistd.h>

namespace VEK::Cli {
namespace {

Status statusOf(CaptureEnd end)
{
    switch (end) {
    case CaptureEnd::Complete:
        return Status::Done;
    case CaptureEnd::Stopped:
        return Status::Signal;
    case CaptureEnd::NoServer:
        return Status::NoServer;
    case CaptureEnd::Silent:
    case CaptureEnd::Incomplete:
        return Status::NoAnswer;
    case CaptureEnd::Busy:
        return Status::Busy;
    case CaptureEnd::OpenFailed:
        return Status::OpenFailed;
    case CaptureEnd::Empty:
        return Status::Empty;
    case CaptureEnd::DeviceError:
        return Status::DeviceError;
    case CaptureEnd::NoTrigger:
        return Status::NoTrigger;
    case CaptureEnd::Lost:
        break;
    }
    return Status::ServerLost;
}

/// What to do about it, where the message does not say it.
QString hintFor(CaptureEnd end)
{
    switch (end) {
    case CaptureEnd::Busy:
        return QStringLiteral(" --queue waits for it.");
    case CaptureEnd::NoTrigger:
        return QStringLiteral(" Look at the trigger, or use --wait and --force-after.");
    case CaptureEnd::Silent:
        return QStringLiteral(" Look at the server and the cable, or use --reply-timeout.");
    case CaptureEnd::DeviceError:
        return QStringLiteral(" Look at the board and its design.");
    default:
        return QString();
    }
}

QString sha256Of(QString const& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return QString();
    return QString::fromLatin1(hash.result().toHex());
}

OutputSettings outputOf(RunSettings const& settings)
{
    return {OutputFiles::prefixFor(settings.output, settings.configuration), settings.configuration,
            settings.formats, settings.plain, settings.clock};
}

} // namespace

Run::Run(RunSettings const& settings)
    : m_settings(settings), m_recorder(settings.recording), m_files(outputOf(settings), m_capture),
      m_manifest(settings.manifest), m_progress(settings.progress)
{}

int Run::exec()
{
    prepare();
    UnixSignals signals_;
    connect(&signals_, &UnixSignals::received, this, &Run::onSignal);
    connectCapture();
    // from inside of the loop, which an end of the run then leaves
    QMetaObject::invokeMethod(this, &Run::begin, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

void Run::prepare()
{
    openConfiguration(m_settings.configuration, m_capture);
    m_places = placesOf(m_capture, m_settings.cores);
    for (QString const& note : apply(m_settings.overrides, m_capture, m_places))
        warn(note);
    for (QString const& warning : checkCores(m_capture, m_places))
        warn(warning);
    m_settings.capture.places = m_places;
    if (!m_settings.recording.isEmpty())
        m_settings.capture.tap = m_recorder.tap();
    if (m_capture.liteCore() && m_settings.capture.force >= 0)
        throw Failure{Status::Usage, QStringLiteral("--force-after: a Lite core can't be forced")};
    for (int const place : qAsConst(m_places))
        m_manifest.addCore(place, indexOf(place), windowsOf(place), triggerTextOf(place));
}

void Run::connectCapture()
{
    connect(&m_capture, &Capture::held, this, &Run::onHeld);
    connect(&m_capture, &Capture::connected, this,
            [this] { m_progress.step(QStringLiteral("arming")); });
    connect(&m_capture, &Capture::coreArmed, this,
            [this](int place) { m_manifest.noteArmed(place); });
    connect(&m_capture, &Capture::coreWaiting, this, [this](int place) {
        m_progress.wait(QStringLiteral("%1armed, waiting for the trigger").arg(coreName(place)));
    });
    connect(&m_capture, &Capture::coreFired, this, [this](int place, bool forced) {
        m_manifest.noteFired(place, forced);
        m_progress.step(coreName(place) +
                        (forced ? QStringLiteral("forced") : QStringLiteral("triggered")));
    });
    connect(&m_capture, &Capture::coreStopped, this,
            [this](int place) { m_manifest.noteStopped(place); });
    connect(&m_capture, &Capture::readProgress, this,
            [this](int place, int window, int received, int total) {
                m_progress.figure(QStringLiteral("%1reading window %2 of %3, %4 %")
                                      .arg(coreName(place))
                                      .arg(window + 1)
                                      .arg(windowsOf(place))
                                      .arg(100LL * received / std::max(1, total)));
            });
    connect(&m_capture, &Capture::windowArrived, this, &Run::onWindow);
    connect(&m_capture, &Capture::windowLost, this, [this](int place, int window) {
        m_manifest.noteLost(place, window);
        warn(QStringLiteral("core %1, window %2 did not come whole and is not written")
                 .arg(indexOf(place))
                 .arg(window));
    });
    connect(&m_capture, &Capture::told, this, &Run::warn);
    connect(
        &m_recorder, &WireRecorder::failed, this,
        [this](QString const& error) { fail(unrecorded(error)); }, Qt::QueuedConnection);
    connect(&m_capture, &Capture::ended, this, &Run::onEnded);
}

/// Nothing is touched before the cable is held: another run may be writing the same files.
void Run::begin()
{
    m_progress.step(QStringLiteral("waiting for the cable"));
    m_capture.run(m_settings.capture);
}

void Run::onHeld()
{
    try {
        QStringList const earlier = m_manifest.earlierFiles(outputOf(m_settings).prefix);
        m_files.prepare(m_places, earlier);
        describe();
        m_manifest.begin();
        m_isBegun = true;
        startRecording();
    } catch (Failure const& failure) {
        fail(failure);
    }
}

void Run::startRecording()
{
    if (m_settings.recording.isEmpty())
        return;
    WireHeader const header{QStringLiteral("vek " VEK_VERSION), QDateTime::currentDateTimeUtc(),
                            m_settings.capture.cable,
                            m_settings.capture.host.isEmpty() ? QStringLiteral("local")
                                                              : QStringLiteral("tcp")};
    QString error;
    if (!m_recorder.start(header, error))
        throw unrecorded(error);
}

void Run::endRecording()
{
    QString error;
    if (m_settings.recording.isEmpty() || !m_isBegun)
        return;
    if (!m_recorder.finish(error))
        throw unrecorded(error);
    m_progress.clear();
    tellPath(m_recorder.path());
}

Failure Run::unrecorded(QString const& error) const
{
    return {Status::Output,
            QStringLiteral("%1 can't be written: %2").arg(m_settings.recording, error)};
}

void Run::describe()
{
    CaptureSettings const& capture = m_settings.capture;
    m_manifest.setPrefix(outputOf(m_settings).prefix);
    m_manifest.set(QStringLiteral("program"), QStringLiteral("vek " VEK_VERSION));
    m_manifest.set(QStringLiteral("qt"), QString::fromLatin1(qVersion()));
    m_manifest.set(QStringLiteral("host"), QSysInfo::machineHostName());
    m_manifest.set(QStringLiteral("attempt"), m_settings.attempt);
    QJsonObject labels;
    for (auto label = m_settings.labels.begin(); label != m_settings.labels.end(); ++label)
        labels.insert(label.key(), label.value());
    m_manifest.set(QStringLiteral("labels"), labels);
    QJsonObject configuration{
        {QStringLiteral("path"), QFileInfo(m_settings.configuration).absoluteFilePath()},
        {QStringLiteral("sha256"), sha256Of(m_settings.configuration)},
        {QStringLiteral("mode"),
         m_capture.liteCore() ? QStringLiteral("lite") : QStringLiteral("standard")},
        {QStringLiteral("overrides"), m_settings.overrides.toJson()}};
    m_manifest.set(QStringLiteral("configuration"), configuration);
    m_manifest.set(QStringLiteral("cable"), m_settings.cableWord);
    m_manifest.set(QStringLiteral("location"), capture.location);
    QString server;
    if (!capture.host.isEmpty())
        server = (capture.host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2")
                                                          : QStringLiteral("%1:%2"))
                     .arg(capture.host)
                     .arg(capture.port);
    m_manifest.set(QStringLiteral("server"), server);
    m_manifest.set(QStringLiteral("device"), capture.device);
    m_manifest.set(QStringLiteral("warnings"), QJsonArray::fromStringList(m_warnings));
}

void Run::onWindow(int place, int window, QList<WaveMonitor::SignalData> const& samples)
{
    if (!m_failure.isEmpty())
        return;
    int const count = samples.isEmpty() ? 0 : samples.first().data.size();
    m_manifest.noteRead(place, window, count, triggerOf(place));
    try {
        QList<WrittenFile> const files = m_files.writeWindow(place, window, samples);
        m_manifest.noteWritten(place, window, files);
        tellFiles(files);
    } catch (Failure const& failure) {
        fail(failure);
    }
}

void Run::tellFiles(QList<WrittenFile> const& files)
{
    m_progress.clear();
    for (WrittenFile const& file : files)
        tellPath(file.path);
}

void Run::tellPath(QString const& path)
{
    if (!printLine(path))
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
}

void Run::onSignal(int number)
{
    m_signal = number;
    m_progress.step(QStringLiteral("stopping"));
    m_capture.stop();
}

/// An output that can't be written ends the run: what comes could not be kept.
void Run::fail(Failure const& failure)
{
    if (m_failure.isEmpty())
        m_failure = failure.message;
    m_capture.stop();
}

void Run::onEnded(CaptureOutcome const& outcome)
{
    m_progress.clear();
    try {
        QStringList notes;
        QList<WrittenFile> const files = m_files.writeSession(notes);
        for (QString const& note : qAsConst(notes))
            warn(note);
        m_manifest.noteWritten(files);
        tellFiles(files);
        endRecording();
    } catch (Failure const& failure) {
        if (m_failure.isEmpty())
            m_failure = failure.message;
    }
    if (!m_failure.isEmpty())
        finish(Status::Output, m_failure, outcome.reason);
    else if (m_signal && outcome.end == CaptureEnd::Stopped)
        finish(Status::Signal, QStringLiteral("ended by signal %1").arg(m_signal), outcome.reason);
    else
        finish(statusOf(outcome.end), outcome.message + hintFor(outcome.end), outcome.reason);
}

void Run::finish(Status status, QString message, QString const& reason)
{
    m_progress.clear();
    int number = int(status) + (status == Status::Signal ? m_signal : 0);
    m_manifest.set(QStringLiteral("warnings"), QJsonArray::fromStringList(m_warnings));
    try {
        if (m_isBegun)
            m_manifest.end(status, number, message, reason);
    } catch (Failure const& failure) {
        if (status == Status::Done) {
            number = int(failure.status);
            message = failure.message;
        } else {
            warn(failure.message);
        }
    }
    if (number != int(Status::Done))
        printError(message);
    QCoreApplication::exit(number);
}

void Run::warn(QString const& message)
{
    m_warnings << message;
    m_progress.clear();
    printWarning(message);
}

/// Names the core where there are several.
QString Run::coreName(int place) const
{
    return m_places.size() < 2 ? QString() : QStringLiteral("core %1: ").arg(indexOf(place));
}

int Run::indexOf(int place) const
{
    return m_capture.liteCore() ? 0 : m_capture.cores().at(place)->index;
}

int Run::windowsOf(int place) const
{
    return m_capture.liteCore() ? 1 : m_capture.cores().at(place)->windowNum;
}

/// A Lite core has no trigger.
QString Run::triggerTextOf(int place) const
{
    return m_capture.liteCore() ? QString() : triggerText(*m_capture.cores().at(place));
}

int Run::triggerOf(int place) const
{
    return m_capture.liteCore() ? 0 : m_capture.cores().at(place)->triggerPos;
}

} // namespace VEK::Cli
