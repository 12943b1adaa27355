#include "cli/manifest.h"

#include "results/wholefile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace VEK::Cli {
namespace {

QString const FormatKey = QStringLiteral("format");
QString const FormatName = QStringLiteral("vek-run");
QString const StateKey = QStringLiteral("state");
QString const PrefixKey = QStringLiteral("prefix");
QString const CoresKey = QStringLiteral("cores");
QString const WindowsKey = QStringLiteral("windows");
QString const FilesKey = QStringLiteral("files");
QString const FileKey = QStringLiteral("file");
constexpr int SchemaVersion = 1;

QDateTime now()
{
    return QDateTime::currentDateTimeUtc();
}

QJsonValue timeJson(QDateTime const& time)
{
    return time.isValid() ? QJsonValue(time.toString(Qt::ISODateWithMs)) : QJsonValue();
}

QByteArray sha256Of(QString const& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    bool const ok = file.open(QIODevice::ReadOnly) && hash.addData(&file);
    return ok ? hash.result().toHex() : QByteArray();
}

void appendNames(QJsonArray const& files, QStringList& names)
{
    for (QJsonValue const& file : files)
        names << file.toObject().value(FileKey).toString();
}

} // namespace

QStringList Manifest::earlierFiles(QString const& prefix) const
{
    QFileInfo const info(m_path);
    if (m_path.isEmpty() || !info.exists() || (!info.isFile() && !info.isDir()))
        return {}; // a device such as /dev/stdout
    QFile file(m_path);
    QJsonObject root;
    if (file.open(QIODevice::ReadOnly))
        root = QJsonDocument::fromJson(file.readAll()).object();
    if (root.value(FormatKey).toString() != FormatName)
        throw Failure{Status::Output,
                      QStringLiteral("%1 can't be written: something that is no manifest is in the "
                                     "way")
                          .arg(m_path)};
    if (root.value(PrefixKey).toString() != relative(prefix))
        return {};
    QStringList names;
    appendNames(root.value(FilesKey).toArray(), names);
    for (QJsonValue const& core : root.value(CoresKey).toArray()) {
        for (QJsonValue const& window : core.toObject().value(WindowsKey).toArray())
            appendNames(window.toObject().value(FilesKey).toArray(), names);
    }
    for (QString& name : names)
        name = info.absoluteDir().absoluteFilePath(name);
    return names;
}

void Manifest::setPrefix(QString const& prefix)
{
    set(PrefixKey, relative(prefix));
}

void Manifest::addCore(int place, int index, int windows, QString const& trigger)
{
    Core& core = m_cores[place];
    core.index = index;
    core.windowCount = windows;
    core.trigger = trigger;
}

void Manifest::noteArmed(int place)
{
    m_cores[place].armed = now();
}

void Manifest::noteFired(int place, bool forced)
{
    m_cores[place].triggered = now();
    m_cores[place].forced = forced;
}

void Manifest::noteStopped(int place)
{
    m_cores[place].stopped = true;
}

void Manifest::noteLost(int place, int window)
{
    m_cores[place].windows[window].isLost = true;
}

void Manifest::noteRead(int place, int window, int samples, int triggerSample)
{
    Window& read = m_cores[place].windows[window];
    read.read = now();
    read.samples = samples;
    read.triggerSample = triggerSample;
}

void Manifest::noteWritten(int place, int window, QList<WrittenFile> const& files)
{
    m_cores[place].windows[window].files = digestsOf(files);
    m_cores[place].written = now();
}

void Manifest::noteWritten(QList<WrittenFile> const& files)
{
    m_files = digestsOf(files);
}

/// Digests take as long as the files: they are made aside while the capture goes on.
QList<Manifest::Digest> Manifest::digestsOf(QList<WrittenFile> const& files) const
{
    QList<Digest> digests;
    for (WrittenFile const& file : files) {
        if (!m_path.isEmpty())
            digests << Digest{file, std::async(std::launch::async, sha256Of, file.path)};
    }
    return digests;
}

void Manifest::begin()
{
    set(FormatKey, FormatName);
    set(QStringLiteral("schema"), SchemaVersion);
    set(StateKey, QStringLiteral("running"));
    set(QStringLiteral("started"), timeJson(now()));
    set(QStringLiteral("ended"), QJsonValue());
    set(QStringLiteral("outcome"), QJsonValue());
    write();
}

void Manifest::end(Status status, int exitStatus, QString const& message, QString const& reason)
{
    set(StateKey, QStringLiteral("ended"));
    set(QStringLiteral("ended"), timeJson(now()));
    set(QStringLiteral("outcome"), QJsonObject{{QStringLiteral("status"), exitStatus},
                                               {QStringLiteral("cause"), causeOf(status)},
                                               {QStringLiteral("message"), message},
                                               {QStringLiteral("reason"), reason}});
    write();
}

QString Manifest::relative(QString const& path) const
{
    return QFileInfo(m_path).absoluteDir().relativeFilePath(QFileInfo(path).absoluteFilePath());
}

QJsonObject Manifest::fileJson(Digest const& file) const
{
    return {{QStringLiteral("format"), file.file.format},
            {FileKey, relative(file.file.path)},
            {QStringLiteral("size"), file.file.size},
            {QStringLiteral("sha256"), QString::fromLatin1(file.sha256.get())}};
}

QJsonArray Manifest::filesJson(QList<Digest> const& files) const
{
    QJsonArray json;
    for (Digest const& file : files)
        json.append(fileJson(file));
    return json;
}

QJsonObject Manifest::coreJson(Core const& core) const
{
    QJsonArray windows;
    int whole = 0;
    bool isLost = false;
    for (auto window = core.windows.begin(); window != core.windows.end(); ++window) {
        isLost = isLost || window->isLost;
        if (!window->read.isValid())
            continue;
        ++whole;
        windows.append(QJsonObject{{QStringLiteral("index"), window.key()},
                                   {QStringLiteral("samples"), window->samples},
                                   {QStringLiteral("trigger_sample"), window->triggerSample},
                                   {QStringLiteral("read"), timeJson(window->read)},
                                   {FilesKey, filesJson(window->files)}});
    }
    QString result = QStringLiteral("waiting");
    if (core.stopped)
        result = QStringLiteral("no-trigger");
    else if (whole == core.windowCount)
        result = QStringLiteral("captured");
    else if (core.triggered.isValid())
        result = isLost ? QStringLiteral("incomplete") : QStringLiteral("triggered");
    return {{QStringLiteral("index"), core.index},
            {QStringLiteral("trigger"), core.trigger},
            {QStringLiteral("result"), result},
            {QStringLiteral("forced"), core.forced},
            {QStringLiteral("armed"), timeJson(core.armed)},
            {QStringLiteral("triggered"), timeJson(core.triggered)},
            {QStringLiteral("written"), timeJson(core.written)},
            {QStringLiteral("window_count"), core.windowCount},
            {WindowsKey, windows}};
}

void Manifest::write() const
{
    if (m_path.isEmpty())
        return;
    QJsonObject root = m_root;
    QJsonArray cores;
    for (Core const& core : m_cores)
        cores.append(coreJson(core));
    root.insert(CoresKey, cores);
    root.insert(FilesKey, filesJson(m_files));
    QString error;
    if (!QDir().mkpath(QFileInfo(m_path).path()))
        error = QStringLiteral("its folder can't be made");
    else if (writeWholeFile(m_path, QJsonDocument(root).toJson(), error))
        return;
    throw Failure{Status::Output, QStringLiteral("%1 can't be written: %2").arg(m_path, error)};
}

} // namespace VEK::Cli
