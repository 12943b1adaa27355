// vek convert and vek compare, from the start of the program to the files, on 1,000,000 samples of
// 64 signals. The limit parses the same table, packs it and writes the same file, and looks at
// nothing but the characters that tell the bits.

#include "benchmarks/comparison.h"
#include "benchmarks/samples.h"
#include "benchmarks/tightwriters.h"
#include "model/bits.h"
#include "results/csvexport.h"

#include <QFile>
#include <QProcess>

#include <cstring>
#include <memory>

using bench::Comparison;

namespace {

constexpr int Signals = 64;
constexpr int Rows = 1000000;
constexpr int CellBytes = 3; // of a comma, a blank and a bit
const QString Program = QStringLiteral(VEK_BUILD_ROOT "/Analyzer/bin/vek");

/// The table, and what is made of it; it goes with its last user.
struct Files
{
    QString const table = bench::memoryFile(QStringLiteral("vekbench-convert.csv"));
    QString const again = bench::memoryFile(QStringLiteral("vekbench-again.csv"));
    QString const work = bench::memoryFile(QStringLiteral("vekbench-work"));
    QString const limit = bench::memoryFile(QStringLiteral("vekbench-limit"));

    Files()
    {
        bench::WindowInMemory const window =
            bench::windowOf(bench::togglingSamples(Signals, Rows), 0);
        for (QString const& path : {table, again}) {
            if (!VEK::exportCSV(path, QStringLiteral("us"), 1, window.element))
                qFatal("no table");
        }
    }
    ~Files()
    {
        for (QString const& path :
             {table, again, work + QStringLiteral(".prn"), work + QStringLiteral(".vcd"), limit})
            QFile::remove(path);
    }
};

/// 64 rows a block, as the columns' words.
bench::Samples parse(QString const& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    char const* at = reinterpret_cast<char const*>(file.map(0, file.size()));
    at = std::strstr(at, "\n0, X");
    at = std::strchr(at + 1, '\n') + 1;
    bench::Samples samples{Rows, std::vector<std::vector<quint64>>(Signals)};
    for (int row = 0; row < Rows; row += 64) {
        VEK::BitBlock block = {};
        for (int i = 0; i < 64 && row + i < Rows; ++i) {
            while (*at != ',')
                ++at;
            quint64 bits = 0;
            for (int k = 0; k < Signals; ++k)
                bits |= quint64(at[k * CellBytes + 2] & 1) << k;
            block[i] = bits;
            at += Signals * CellBytes + 2; // the last comma and the line feed
        }
        VEK::transpose(block);
        for (int k = 0; k < Signals; ++k)
            samples.columns[std::size_t(k)].push_back(block[k]);
    }
    return samples;
}

bool runs(QStringList const& arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(Program, arguments);
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

bench::Body running(QStringList const& arguments)
{
    return [=](benchmark::State& state) {
        for (auto _ : state) {
            if (!runs(arguments))
                state.SkipWithError("it failed");
        }
    };
}

Comparison comparisonOf(char const* name, bench::Body const& work, bench::Body const& limit)
{
    Comparison comparison;
    comparison.name = std::string(name) + ", 1,000,000 x 64";
    comparison.aim = 2;
    comparison.size = Rows;
    comparison.realTime = true;
    comparison.repetitions = 5;
    comparison.work = work;
    comparison.limit = limit;
    comparison.agree = [] { return true; };
    return comparison;
}

QByteArray behindFirstLine(QString const& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    file.readLine();
    return file.readAll();
}

} // namespace

int main(int argc, char** argv)
{
    auto const files = std::make_shared<Files>();
    QString const prn = files->work + QStringLiteral(".prn");
    QString const vcd = files->work + QStringLiteral(".vcd");
    QStringList const toPrn{QStringLiteral("convert"), files->table, prn};
    auto const writePrn = [=] {
        bench::Samples const samples = parse(files->table);
        bench::TightWriter(samples, 0).writeTable<1>(files->limit, "\n", "\t", " \n", 0);
    };
    Comparison table =
        comparisonOf("vek convert, CSV to PRN", running(toPrn), [=](benchmark::State& state) {
            for (auto _ : state)
                writePrn();
        });
    table.agree = [=] {
        writePrn();
        return runs(toPrn) && behindFirstLine(prn) == behindFirstLine(files->limit);
    };
    Comparison const dump = comparisonOf(
        "vek convert, CSV to VCD",
        running({QStringLiteral("convert"), files->table, vcd, QStringLiteral("--trigger"),
                 QStringLiteral("0")}),
        [=](benchmark::State& state) {
            for (auto _ : state) {
                bench::Samples const samples = parse(files->table);
                bench::TightWriter(samples, 0).writeDump(files->limit, QByteArray(), 1000);
            }
        });
    Comparison const compare =
        comparisonOf("vek compare, CSV with CSV",
                     running({QStringLiteral("compare"), files->table, files->again,
                              QStringLiteral("--align"), QStringLiteral("0")}),
                     [=](benchmark::State& state) {
                         for (auto _ : state) {
                             if (parse(files->table).columns != parse(files->again).columns)
                                 state.SkipWithError("they differ");
                         }
                     });
    return bench::run({table, dump, compare}, argc, argv);
}
