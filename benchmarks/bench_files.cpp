#include "benchmarks/comparison.h"
#include "benchmarks/samples.h"
#include "model/capturecore.h"
#include "model/standardfile.h"

#include <QDomDocument>
#include <QFile>

#include <map>
#include <memory>

using namespace VEK;
using bench::Comparison;

namespace {

constexpr int Cores = 16;
constexpr int SignalsEach = 4096;

/// A configuration, in its file and as text.
struct Setup
{
    QString const path;
    QString text;

    explicit Setup(int signalCount)
        : path(bench::memoryFile(QStringLiteral("vekbench-%1.vek").arg(signalCount)))
    {
        QList<SxCore*> cores;
        for (int i = 0; i < Cores; ++i) {
            SxCore* core = new SxCore(i);
            core->sampleClock = QStringLiteral("clk");
            for (int k = 0; k < signalCount; ++k) {
                SignalItem item;
                item.name = QStringLiteral("top/core%1/data[%2]").arg(i).arg(k);
                item.captureEnable = true;
                core->allSignalList.append(item);
            }
            cores.append(core);
        }
        if (!writeVEKConfigToXml(cores, path))
            qFatal("no file");
        text = writeVekConfigToString(cores);
        qDeleteAll(cores);
    }

    ~Setup() { QFile::remove(path); }
};

QList<SxCore*> read(QString const& path)
{
    QString id;
    return readVEKConfigFromXml(path, id, nullptr, nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    auto const setups = std::make_shared<std::map<int, std::unique_ptr<Setup>>>();
    for (int signalCount : {SignalsEach, SignalsEach / 10})
        setups->emplace(signalCount, std::make_unique<Setup>(signalCount));
    Comparison comparison;
    comparison.name = "reading a .vek of 16 cores with 4,096 signals";
    comparison.aim = 1.5;
    comparison.minTime = 1; // what a document leaves to be tidied up, the next one has to pay for
    comparison.repetitions = 5;
    comparison.size = SignalsEach;
    comparison.otherSize = SignalsEach / 10;
    comparison.work = [=](benchmark::State& state) {
        QString const path = setups->at(int(state.range(0)))->path;
        for (auto _ : state)
            qDeleteAll(read(path));
    };
    // The limit: Qt's parser makes a document of the same text.
    comparison.limit = [=](benchmark::State& state) {
        QString const text = setups->at(int(state.range(0)))->text;
        for (auto _ : state) {
            QDomDocument document;
            if (!document.setContent(text))
                state.SkipWithError("not parsed");
        }
    };
    comparison.agree = [=] {
        QList<SxCore*> const cores = read(setups->at(SignalsEach)->path);
        bool const whole =
            cores.size() == Cores && cores.last()->dataSignals().size() == SignalsEach;
        qDeleteAll(cores);
        return whole;
    };
    return bench::run({comparison}, argc, argv);
}
