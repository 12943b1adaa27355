#include "benchmarks/comparison.h"
#include "benchmarks/tightwriters.h"
#include "results/csvexport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"

#include <QFile>

#include <map>
#include <memory>

using bench::Comparison;

namespace {

constexpr int TimeStep = 10; // of the dumps; the tables have 1
constexpr int NoTrigger = -1;
const QString TimeUnit = QStringLiteral("us");

/// The export's file and the limit's.
struct Files
{
    QString const work = bench::memoryFile(QStringLiteral("vekbench-work"));
    QString const limit = bench::memoryFile(QStringLiteral("vekbench-limit"));

    ~Files()
    {
        QFile::remove(work);
        QFile::remove(limit);
    }

    static QByteArray content(QString const& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

/// One window in both forms.
struct Input
{
    bench::Samples samples;
    bench::WindowInMemory window;
    bench::TightWriter writer;

    Input(int signalCount, int rows, int busWidth)
        : samples(bench::togglingSamples(signalCount, rows)),
          window(bench::windowOf(samples, busWidth)), writer(samples, busWidth)
    {}
};

/// Windows of the same signals, by their number of samples.
using Inputs = std::map<int, std::unique_ptr<Input>>;

/// A kind of file: the export, the limit, and the last line of the head, which the limit takes from
/// the export's file.
struct Kind
{
    char const* name;
    std::function<bool(QString const&, QDomElement const&)> work;
    std::function<bool(QString const&, QByteArray const&, bench::TightWriter&)> limit;
    char const* lastOfHead;
};

Comparison comparisonOf(Kind const& kind, std::string const& size, int rows,
                        std::shared_ptr<Inputs> const& inputs)
{
    auto const files = std::make_shared<Files>();
    auto const headFrom = [kind, files](QDomElement const& window) {
        kind.work(files->work, window);
        QByteArray const text = Files::content(files->work);
        int const at = text.indexOf(kind.lastOfHead);
        return text.left(text.indexOf('\n', at) + 1);
    };
    auto const heads = std::make_shared<std::map<int, QByteArray>>();
    for (auto const& input : *inputs)
        heads->emplace(input.first, headFrom(input.second->window.element));
    Comparison comparison;
    comparison.name = kind.name + (' ' + size);
    comparison.aim = 3;
    comparison.size = rows;
    comparison.otherSize = rows / 10;
    comparison.work = [=](benchmark::State& state) {
        QDomElement const& window = inputs->at(int(state.range(0)))->window.element;
        for (auto _ : state) {
            if (!kind.work(files->work, window))
                state.SkipWithError("not written");
        }
    };
    comparison.limit = [=](benchmark::State& state) {
        Input& input = *inputs->at(int(state.range(0)));
        QByteArray const& head = heads->at(int(state.range(0)));
        for (auto _ : state) {
            if (!kind.limit(files->limit, head, input.writer))
                state.SkipWithError("not written");
        }
    };
    comparison.agree = [=] {
        return kind.limit(files->limit, heads->at(rows), inputs->at(rows)->writer) &&
               kind.work(files->work, inputs->at(rows)->window.element) &&
               Files::content(files->work).mid(heads->at(rows).size()) ==
                   Files::content(files->limit).mid(heads->at(rows).size());
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    using Path = QString const&;
    using Head = QByteArray const&;
    using Element = QDomElement const&;
    using Writer = bench::TightWriter&;
    Kind const kinds[] = {
        {"exportCSV",
         [](Path path, Element window) { return VEK::exportCSV(path, TimeUnit, 1, window); },
         [](Path path, Head head, Writer writer) {
             return writer.writeTable<2>(path, head, ", ", ",\n", 1);
         },
         "0, X"},
        {"exportPRN",
         [](Path path, Element window) {
             return VEK::exportPRN(path, TimeUnit, 1, window, VEK::PrnAllColumns);
         },
         [](Path path, Head head, Writer writer) {
             return writer.writeTable<1>(path, head, "\t", " \n", 0);
         },
         "time unit"},
        {"exportVCD",
         [](Path path, Element window) {
             return VEK::exportVCD(path, QStringLiteral("top"), QStringLiteral("clock"), true,
                                   TimeUnit, TimeStep, NoTrigger, window);
         },
         [](Path path, Head head, Writer writer) { return writer.writeDump(path, head, TimeStep); },
         "$end\n#5\n"},
    };
    struct Shape
    {
        char const* name;
        int rows;
        int signalCount;
        int busWidth;
    };
    Shape const shapes[] = {{"65,536 x 64, four 16-bit buses", 65536, 64, 16},
                            {"1,000,000 x 32", 1000000, 32, 0}};
    std::vector<Comparison> comparisons;
    for (Shape const& shape : shapes) {
        auto const inputs = std::make_shared<Inputs>();
        for (int rows : {shape.rows, shape.rows / 10})
            inputs->emplace(rows, std::make_unique<Input>(shape.signalCount, rows, shape.busWidth));
        for (Kind const& kind : kinds)
            comparisons.push_back(comparisonOf(kind, shape.name, shape.rows, inputs));
    }
    return bench::run(comparisons, argc, argv);
}
