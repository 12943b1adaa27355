#include "benchmarks/comparison.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>

namespace bench {
namespace {

constexpr double MostGrowth = 1.1;
/// Work and limit take turns, so that both meet the same disturbances.
constexpr char Interleaving[] = "--benchmark_enable_random_interleaving=true";

enum class Part { Work, Limit };

std::string benchmarkName(Comparison const& comparison, Part part)
{
    return comparison.name + (part == Part::Work ? "/work" : "/limit");
}

std::string timeText(double seconds)
{
    char const* const units[] = {"s", "ms", "us", "ns"};
    int unit = 0;
    for (; seconds < 1 && unit < 3; ++unit)
        seconds *= 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f %s",
                  seconds < 10    ? 2
                  : seconds < 100 ? 1
                                  : 0,
                  seconds, units[unit]);
    return text;
}

/// Keeps the times of all runs by benchmark name and size, and prints nothing.
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(Context const&) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override
    {
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            double const total = run.run_name.time_type.empty() ? run.cpu_accumulated_time
                                                                : run.real_accumulated_time;
            m_times[run.run_name.function_name + '/' + run.run_name.args].push_back(
                total / double(run.iterations));
        }
    }

    /// Seconds, the least of the repetitions: other programs only ever add to it. 0 if there were
    /// none.
    double least(Comparison const& comparison, Part part, int size)
    {
        std::vector<double> const& times =
            m_times[benchmarkName(comparison, part) + '/' + std::to_string(size)];
        return times.empty() ? 0 : *std::min_element(times.begin(), times.end());
    }

private:
    std::map<std::string, std::vector<double>> m_times;
};

void enter(Comparison const& comparison, Part part)
{
    auto* const entry =
        benchmark::RegisterBenchmark(benchmarkName(comparison, part).c_str(),
                                     part == Part::Work ? comparison.work : comparison.limit);
    entry->Arg(comparison.size)->Repetitions(comparison.repetitions);
    if (comparison.otherSize)
        entry->Arg(comparison.otherSize);
    if (comparison.realTime)
        entry->UseRealTime()->Iterations(1);
    else
        entry->MinTime(comparison.minTime);
}

void printComparison(Comparison const& comparison, Collector& times)
{
    double const work = times.least(comparison, Part::Work, comparison.size);
    double const limit = times.least(comparison, Part::Limit, comparison.size);
    if (work == 0 || limit == 0)
        return; // filtered out
    double const ratio = work / limit;
    double growth = 0;
    double const otherLimit = times.least(comparison, Part::Limit, comparison.otherSize);
    if (otherLimit > 0) { // neither without another size nor filtered out
        double const other = times.least(comparison, Part::Work, comparison.otherSize) / otherLimit;
        growth = comparison.otherSize < comparison.size ? ratio / other : other / ratio;
    }
    bool const inAim = ratio <= comparison.aim || work - limit <= comparison.slack;
    printRow(comparison.name, timeText(work), timeText(limit), ratio, comparison.aim,
             inAim && growth <= MostGrowth, growth);
}

} // namespace

void printHead()
{
    std::printf("%-52s %9s %9s %7s %6s %7s\n", "work", "time", "limit", "ratio", "aim", "growth");
}

void printRow(std::string const& name, std::string const& work, std::string const& limit,
              double ratio, double aim, bool ok, double growth)
{
    char growthText[16] = "-";
    if (growth > 0)
        std::snprintf(growthText, sizeof growthText, "%.2f", growth);
    std::printf("%-52s %9s %9s %7.2f %6.2f %7s  %s\n", name.c_str(), work.c_str(), limit.c_str(),
                ratio, aim, growthText, ok ? "ok" : "over");
    std::fflush(stdout);
}

int run(std::vector<Comparison> const& comparisons, int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + 1);
    std::string interleaving = Interleaving;
    arguments.push_back(interleaving.data());
    bool head = true;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--rows") == 0)
            head = false;
        else
            arguments.push_back(argv[i]);
    }
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    int status = 0;
    for (Comparison const& comparison : comparisons) {
        if (!comparison.agree || comparison.agree()) {
            enter(comparison, Part::Work);
            enter(comparison, Part::Limit);
            continue;
        }
        std::fprintf(stderr, "%s: not what its limit gives\n", comparison.name.c_str());
        status = 1;
    }
    Collector times;
    benchmark::RunSpecifiedBenchmarks(&times);
    benchmark::ClearRegisteredBenchmarks(); // what they hold goes with the caller's application
    if (head)
        printHead();
    for (Comparison const& comparison : comparisons)
        printComparison(comparison, times);
    benchmark::Shutdown();
    return status;
}

} // namespace bench
