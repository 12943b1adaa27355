#include "simulator/bench.h"

#include "simulator/benchfields.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace VEK::Simulator {
namespace {

constexpr qint64 MaxFileSize = 16 << 20;
constexpr int MaxInt = std::numeric_limits<int>::max();
constexpr int MaxPatternSamples = 1 << 24;

void readCables(BenchFields& fields, Bench& bench)
{
    static QStringList const kinds{QStringLiteral("FT2CH"), QStringLiteral("TR7QZ"),
                                   QStringLiteral("WINUSB"), QStringLiteral("LPT")};
    bench.listsCables = fields.has("cables");
    for (BenchFields& item : fields.objects("cables")) {
        BenchCable cable;
        cable.kind = item.choice("kind", kinds, QString());
        cable.location = item.integer("location", 0, 0, MaxInt);
        cable.serial = item.text("serial");
        // These characters separate the fields of the cable report.
        for (QChar const c : cable.serial) {
            if (QStringLiteral(";:/(").contains(c))
                item.fail(QStringLiteral("\"serial\" must not hold any of ; : / ("));
        }
        item.close();
        bench.cables.append(cable);
    }
}

void readStimulus(BenchFields fields, QDir const& folder, Bench& bench)
{
    static QStringList const patterns{QStringLiteral("counter"), QStringLiteral("walking one"),
                                      QStringLiteral("lfsr")};
    bench.endless = fields.flag("endless");
    bool const hasVcd = fields.has("vcd");
    if (hasVcd == fields.has("pattern"))
        fields.fail(QStringLiteral("either \"vcd\" or \"pattern\" is needed"));
    if (hasVcd) {
        bench.vcd = folder.absoluteFilePath(fields.text("vcd"));
        bench.scope = fields.text("scope");
        bench.clock = fields.text("clock");
        bench.names = fields.texts("signals");
    } else {
        QString const kind = fields.choice("pattern", patterns, patterns.first());
        bench.pattern.kind = Pattern::Kind(patterns.indexOf(kind));
        bench.pattern.samples = fields.integer("samples", 65536, 1, MaxPatternSamples);
        bench.pattern.seed = quint32(fields.integer("seed", 1, 1, MaxInt));
    }
    fields.close();
}

void readFaults(BenchFields fields, Faults& faults)
{
    constexpr int MaxDelay = 600000;
    constexpr int MaxTogether = 1000;
    faults.of = fields.text("of");
    faults.delay = fields.integer("delay", 0, 0, MaxDelay);
    faults.work = fields.integer("work", 0, 0, MaxDelay);
    faults.silentFrom = fields.integer("silent_from", 0, 1, MaxInt);
    faults.garbledFrom = fields.integer("garbled_from", 0, 1, MaxInt);
    faults.loses = fields.integer("loses", 0, 1, MaxInt);
    faults.shortens = fields.integer("shortens", 0, 1, MaxInt);
    faults.byteByByte = fields.flag("byte_by_byte");
    faults.together = fields.integer("together", 1, 1, MaxTogether);
    faults.closeAfter = fields.integer("close_after", 0, 1, MaxInt);
    faults.dieAfter = fields.integer("die_after", 0, 1, MaxInt);
    faults.neverListen = fields.flag("never_listen");
    fields.close();
}

void readLoader(BenchFields fields, QDir const& folder, Bench& bench)
{
    constexpr int MaxDelay = 600000;
    LoaderBench& loader = bench.loader;
    for (BenchFields& item : fields.objects("chain")) {
        loader.chain.append({item.text("family"), item.text("name"), item.text("id")});
        item.close();
    }
    auto const path = [&](char const* key) {
        QString const name = fields.text(key);
        return name.isEmpty() ? QString() : folder.absoluteFilePath(name);
    };
    loader.bitstream = path("bitstream");
    loader.log = path("log");
    loader.output = fields.text("output");
    loader.delay = fields.integer("delay", 0, 0, MaxDelay);
    loader.exitCode = fields.integer("exit_code", 0, 0, 255);
    loader.crash = fields.flag("crash");
    loader.flood = fields.flag("flood");
    fields.close();
}

} // namespace

bool parseBench(QByteArray const& text, QString const& folder, Bench& bench, QString& error)
{
    bench = Bench();
    bench.isEmpty = false;
    error.clear();
    QJsonParseError problem;
    QJsonDocument const document = QJsonDocument::fromJson(text, &problem);
    if (problem.error != QJsonParseError::NoError) {
        int const line = text.left(problem.offset).count('\n') + 1;
        error = QStringLiteral("line %1: %2").arg(line).arg(problem.errorString());
        return false;
    }
    if (!document.isObject()) {
        error = QStringLiteral("a bench is a JSON object");
        return false;
    }
    QDir const paths(folder);
    BenchFields fields(document.object(), QString(), error);
    QString const design = fields.text("design");
    bench.design = design.isEmpty() ? QString() : paths.absoluteFilePath(design);
    bench.device = fields.text("device");
    bench.openResult = fields.integer("open_result", 0, -MaxInt, MaxInt);
    readCables(fields, bench);
    if (fields.has("stimulus"))
        readStimulus(fields.object("stimulus"), paths, bench);
    readFaults(fields.object("faults"), bench.faults);
    readLoader(fields.object("programmer"), paths, bench);
    fields.close();
    return error.isEmpty();
}

bool readBench(QString const& path, Bench& bench, QString& error)
{
    bench = Bench();
    bench.isEmpty = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    QByteArray const text = file.read(MaxFileSize + 1);
    QString const folder = QFileInfo(path).absolutePath();
    if (text.size() > MaxFileSize)
        error = QStringLiteral("more than %1 bytes").arg(MaxFileSize);
    else if (parseBench(text, folder, bench, error))
        return true;
    error = QStringLiteral("%1: %2").arg(path, error);
    return false;
}

QString findBench(QString const& programFolder)
{
    QString const named = qEnvironmentVariable("VEK_BENCH");
    if (!named.isEmpty())
        return named;
    QString const beside = programFolder + QStringLiteral("/bench.json");
    return QFileInfo::exists(beside) ? beside : QString();
}

} // namespace VEK::Simulator
