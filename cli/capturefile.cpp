#include "cli/capturefile.h"

#include "cli/dumpwindow.h"
#include "cli/exitstatus.h"
#include "cli/knowncores.h"
#include "cli/manifestreader.h"
#include "results/sessioncaptures.h"
#include "results/windowtables.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace VEK::Cli {
namespace {

Failure broken(QString const& path, QString const& what)
{
    return {Status::Configuration, path + QStringLiteral(": ") + what};
}

void open(QFile& file)
{
    if (!QFileInfo(file.fileName()).isDir() && file.open(QIODevice::ReadOnly))
        return;
    throw broken(file.fileName(), QFileInfo(file.fileName()).isDir()
                                      ? QStringLiteral("this is a folder")
                                      : file.errorString());
}

/// The index of a core in a name that a run gives.
std::optional<int> indexInName(QString const& path)
{
    static QRegularExpression const form(QStringLiteral("_core(\\d{1,9})_window\\d+\\z"));
    QRegularExpressionMatch const match = form.match(QFileInfo(path).completeBaseName());
    return match.hasMatch() ? std::optional<int>(match.captured(1).toInt()) : std::nullopt;
}

/// Reads one file.
class Reading
{
public:
    Reading(QString const& path, CaptureHints const& hints) : m_path(path), m_hints(hints) {}

    CaptureFile read()
    {
        m_file.format = captureFormat(m_path);
        if (m_file.format.isEmpty())
            throw Failure{Status::Usage,
                          QStringLiteral("%1: a capture's name ends in .csv, .vcd, .rsx, .prn or "
                                         ".raw")
                              .arg(m_path)};
        m_facts = manifestFacts(m_path, m_hints.manifest);
        if (!m_hints.configuration.isEmpty())
            m_known = KnownCores::fromFile(m_hints.configuration);
        if (m_file.format == QLatin1String("rsx"))
            readSession();
        else
            readWindow();
        return m_file;
    }

private:
    void readSession();
    void readWindow();
    void readTable(CapturedWindow& window);
    void readDump(CoreCapture& core, CapturedWindow& window);
    int place() const;

    QString m_path;
    CaptureHints const& m_hints;
    CaptureFile m_file;
    ManifestFacts m_facts;
    KnownCores m_known;
};

/// Of the core of a file with one window.
int Reading::place() const
{
    std::optional<int> index = m_hints.core;
    if (!index && m_known.cores().size() > 1)
        index = m_facts.isKnown ? m_facts.core : indexInName(m_path);
    return m_known.placeOf(index);
}

void Reading::readSession()
{
    QFile source(m_path);
    open(source);
    ParsedDocument parsed;
    QList<SessionCapture> captures;
    QString error;
    if (!readSessionCaptures(source.readAll(), parsed, captures, error))
        throw broken(m_path, error);
    KnownCores const own = KnownCores::fromDocument(parsed.document);
    KnownCores const& cores = m_known.cores().isEmpty() ? own : m_known;
    for (SessionCapture& capture : captures) {
        if (capture.core < 0 || capture.core >= cores.cores().size())
            throw broken(m_path,
                         QStringLiteral("it has a capture of core %1, which is not among its cores")
                             .arg(capture.core));
        KnownCores::Core const& core = cores.cores().at(capture.core);
        if (m_hints.core && core.index != *m_hints.core)
            continue;
        for (CapturedWindow& window : capture.windows) {
            if (!m_known.cores().isEmpty())
                window = withLayout(window, core.layout, m_path);
            if (m_hints.trigger)
                window.trigger = m_hints.trigger;
        }
        m_file.cores << CoreCapture{capture.core, core.index, core.module, core.clock,
                                    capture.windows};
    }
    if (m_file.cores.isEmpty())
        throw Failure{
            Status::Usage,
            QStringLiteral("%1: it has no capture of core %2").arg(m_path).arg(*m_hints.core)};
    m_file.configuration = cores.text();
}

void Reading::readWindow()
{
    CoreCapture core;
    core.module = QStringLiteral("capture");
    core.clock = QStringLiteral("sample_clock");
    core.index = m_hints.core.value_or(m_facts.isKnown ? m_facts.core : 0);
    bool const isKnown = !m_known.cores().isEmpty();
    if (isKnown) {
        core.place = place();
        KnownCores::Core const& known = m_known.cores().at(core.place);
        core.index = known.index;
        core.module = known.module;
        core.clock = known.clock;
        m_file.configuration = m_known.text();
    }
    CapturedWindow window;
    if (m_file.format == QLatin1String("vcd"))
        readDump(core, window);
    else
        readTable(window);
    if (isKnown)
        window = withLayout(window, m_known.cores().at(core.place).layout, m_path);
    if (m_facts.isKnown && !window.trigger)
        window.trigger = m_facts.trigger;
    if (m_hints.trigger)
        window.trigger = m_hints.trigger;
    core.windows << window;
    m_file.cores << core;
}

void Reading::readDump(CoreCapture& core, CapturedWindow& window)
{
    DumpSampling sampling{m_hints.clock, m_hints.times, m_facts.samples, {}, m_hints.eachChange};
    bool const isKnown = !m_known.cores().isEmpty();
    if (isKnown) {
        for (SignalItem const& net : flatSignals(m_known.cores().at(core.place).layout))
            sampling.nets << net.name;
        if (sampling.clock.isEmpty())
            sampling.clock = core.clock;
    }
    DumpWindow const dump = readDumpWindow(m_path, sampling);
    window = dump.window;
    m_file.warnings << dump.warnings;
    if (!isKnown && !dump.module.isEmpty())
        core.module = dump.module;
    if (!isKnown && !dump.clock.isEmpty())
        core.clock = dump.clock;
}

void Reading::readTable(CapturedWindow& window)
{
    QFile source(m_path);
    open(source);
    QString error;
    bool ok = false;
    if (m_file.format == QLatin1String("prn")) {
        ok = readPrnWindow(source, window, error);
    } else if (m_file.format == QLatin1String("raw")) {
        QFileInfo const info(m_path);
        QFile channels(info.path() + QLatin1Char('/') + info.completeBaseName() +
                       QStringLiteral(".channels"));
        open(channels);
        ok = readRawWindow(source, channels.readAll(), window, error);
    } else {
        QByteArray const head = source.peek(16);
        bool const isPlain = head.startsWith("sample,") || head.startsWith("time_");
        ok = isPlain ? readPlainCsvWindow(source, window, error)
                     : readCsvWindow(source, window, error);
    }
    if (!ok)
        throw broken(m_path, error);
}

} // namespace

QString captureFormat(QString const& path)
{
    QString const ending = QFileInfo(path).suffix().toLower();
    static QStringList const known{QStringLiteral("csv"), QStringLiteral("vcd"),
                                   QStringLiteral("rsx"), QStringLiteral("prn"),
                                   QStringLiteral("raw")};
    return known.contains(ending) ? ending : QString();
}

CaptureFile readCaptureFile(QString const& path, CaptureHints const& hints)
{
    return Reading(path, hints).read();
}

QList<QBitArray> samplesOf(CapturedWindow const& window, QString const& name)
{
    auto const isIt = [&](SignalItem const& item) {
        return labelOf(item) == name || item.name == name;
    };
    int place = 0;
    for (SignalItem const& item : window.layout) {
        int const width = std::max(1, item.signalList.size());
        if (isIt(item))
            return window.samples.mid(place, width);
        for (int i = 0; i < item.signalList.size(); ++i) {
            if (isIt(item.signalList.at(i)))
                return window.samples.mid(place + i, 1);
        }
        place += width;
    }
    return {};
}

} // namespace VEK::Cli
