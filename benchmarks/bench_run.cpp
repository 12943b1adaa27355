#include "benchmarks/comparison.h"
#include "model/capturecore.h"
#include "model/standardfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <unistd.h>

using namespace VEK;
using bench::Comparison;

namespace {

const QString Root = QStringLiteral(VEK_SOURCE_ROOT);
const QString Program = QStringLiteral(VEK_BUILD_ROOT "/Analyzer/bin/veksh");

// What a run waits for by design, in ms.
constexpr int ConnectPause = 30;
constexpr int Tick = 500;
constexpr int SectionPause = 50;
constexpr int SectionSamples = 128;

/// The pauses of a run in which every core has captured by the first tick that looks at it: a round
/// of connecting, a tick a core and the last one, and one pause a section.
int pauses(QString const& setup)
{
    QString id;
    QList<SxCore*> const cores = readVEKConfigFromXml(setup, id, nullptr, nullptr);
    int sum = ConnectPause + Tick * (cores.size() + 1);
    for (SxCore const* core : cores) {
        int const burst = std::min(core->captureAmount, SectionSamples);
        sum += core->windowNum * (core->captureAmount / burst) * SectionPause;
    }
    qDeleteAll(cores);
    return sum;
}

void runDemo(benchmark::State& state, QString const& setup, QString const& bench)
{
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir const folder(QStringLiteral("/tmp/vekbench-XXXXXX"));
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TMPDIR"), folder.path()); // a socket of its own
        environment.insert(QStringLiteral("VEK_BENCH"), bench);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
        state.ResumeTiming();
        process.start(Program, {QStringLiteral("-cable"), QStringLiteral("FT2CH"),
                                QStringLiteral("-vek"), setup});
        bool const ended = process.waitForFinished(60000);
        state.PauseTiming();
        if (!ended || process.exitCode() != 0 ||
            QDir(folder.path(), QStringLiteral("*.csv")).isEmpty())
            state.SkipWithError("no capture");
        state.ResumeTiming();
    }
}

Comparison demo(QString const& path)
{
    QString const setup = Root + QStringLiteral("/examples/") + path + QStringLiteral(".vek");
    QString const bench = Root + QStringLiteral("/examples/") + path + QStringLiteral(".json");
    Comparison comparison;
    comparison.name = "veksh on the demo " + path.section(QLatin1Char('/'), 1).toStdString();
    comparison.aim = 1.05;
    comparison.slack = 0.1;
    comparison.size = pauses(setup);
    comparison.repetitions = 3;
    comparison.realTime = true;
    comparison.work = [=](benchmark::State& state) { runDemo(state, setup, bench); };
    // The limit: the pauses themselves, of `range(0)` ms.
    comparison.limit = [](benchmark::State& state) {
        for (auto _ : state)
            usleep(unsigned(state.range(0)) * 1000);
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    return bench::run({demo(QStringLiteral("uart/uart-lines")),
                       demo(QStringLiteral("uart/uart-link")),
                       demo(QStringLiteral("bus/bus-stall"))},
                      argc, argv);
}
