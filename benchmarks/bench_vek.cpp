// Runs of vek, from the start of the program to the files on the disk.

#include "benchmarks/comparison.h"
#include "benchmarks/samples.h"
#include "benchmarks/tightwriters.h"
#include "benchmarks/widecapture.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <unistd.h>

using bench::Comparison;

namespace {

const QString Program = QStringLiteral(VEK_BUILD_ROOT "/Analyzer/bin/vek");
const QString Server = QStringLiteral(VEK_BUILD_ROOT "/Programmer/bin/scanbridge");

// Of the slow servers, in ms.
constexpr int Latency = 20;
constexpr int LatencyLimit = 1500;
constexpr int ReplyTime = 4;

/// Replies of a run with one core: the chain, the poll, the sections.
constexpr int Replies = 2 + bench::WideSamples / 128;

bool runs(QString const& program, QStringList const& arguments,
          QProcessEnvironment const& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

/// Captures on a fresh desk, `times` times.
bench::Body running(int cores, int times, QByteArray const& more = QByteArray())
{
    return [=](benchmark::State& state) {
        QTemporaryDir const folder(QStringLiteral("/tmp/vekbench-XXXXXX"));
        QProcessEnvironment const environment = bench::layWideCapture(folder.path(), cores, more);
        QString const setup = folder.filePath(QStringLiteral("core.vek"));
        QString const last =
            folder.filePath(QStringLiteral("core_core%1_window0.csv").arg(cores - 1));
        for (auto _ : state) {
            bool ok = true;
            for (int i = 0; i < times; ++i)
                ok = ok && runs(Program,
                                {QStringLiteral("run"), setup, QStringLiteral("-o"), folder.path()},
                                environment);
            if (!ok || QFileInfo(last).size() < bench::WideSamples * bench::WideSignals)
                state.SkipWithError("no capture");
        }
    };
}

bench::Body sleeping(int ms, int times = 1)
{
    return [=](benchmark::State& state) {
        for (auto _ : state) {
            for (int i = 0; i < times; ++i)
                usleep(unsigned(ms) * 1000);
        }
    };
}

/// The limit: the start of both programs, the frames of the read, and a file of that form.
void startMoveAndWrite(benchmark::State& state)
{
    QTemporaryDir const folder(QStringLiteral("/tmp/vekbench-XXXXXX"));
    bench::Samples const samples = bench::togglingSamples(bench::WideSignals, bench::WideSamples);
    bench::TightWriter writer(samples, 0);
    QProcessEnvironment const environment = QProcessEnvironment::systemEnvironment();
    for (auto _ : state) {
        runs(Program, {QStringLiteral("--version")}, environment);
        runs(Server, {QStringLiteral("--help")}, environment); // ends with what it takes
        bench::moveFrames();
        if (!writer.writeTable<2>(folder.filePath(QStringLiteral("window.csv")), QByteArray(), ", ",
                                  ",\n", 1))
            state.SkipWithError("no file");
    }
}

Comparison comparison(std::string const& name, double aim, bench::Body const& work,
                      bench::Body const& limit)
{
    Comparison comparison;
    comparison.name = name;
    comparison.aim = aim;
    comparison.size = bench::WideSamples;
    comparison.repetitions = 5;
    comparison.realTime = true;
    comparison.work = work;
    comparison.limit = limit;
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    return bench::run(
        {comparison("vek run, 65,536 x 64, start to file", 2, running(1, 1), startMoveAndWrite),
         comparison("the same within 200 ms", 1, running(1, 1), sleeping(200)),
         comparison("8 cores in 8 times one", 1, running(8, 1), running(1, 8)),
         comparison("a server of 20 ms latency within 1.5 s", 1,
                    running(1, 1, R"(, "faults": {"delay": )" + QByteArray::number(Latency) + '}'),
                    sleeping(LatencyLimit)),
         comparison("a server of 4 ms a reply, serially", 1.05,
                    running(1, 1, R"(, "faults": {"work": )" + QByteArray::number(ReplyTime) + '}'),
                    sleeping(ReplyTime, Replies))},
        argc, argv);
}
