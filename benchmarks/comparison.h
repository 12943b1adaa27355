#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

/// Benchmarks in pairs: a piece of work, and beside it, in the same run, its limit, the least that
/// a machine has to do for the same result. What counts is how many times its limit the work takes.
namespace bench {

/// One benchmark; `state.range(0)` is the size of its input.
using Body = std::function<void(benchmark::State&)>;

struct Comparison
{
    std::string name;
    double aim; ///< How many times its limit's time the work may take.
    int size;   ///< Of the input that the times in the table belong to.
    int otherSize =
        0; ///< A tenth or ten times of it, to see both grow; 0 for work that isn't linear.
    Body work;
    Body limit;
    /// Whether work and limit give the same result. A limit that does less would be none.
    std::function<bool()> agree;
    double slack = 0;     ///< Seconds that the work may take more than its limit, whatever the aim.
    int repetitions = 15; ///< The table shows the least of them.
    double minTime = 0.03; ///< Seconds of a repetition.
    bool realTime =
        false; ///< By the clock on the wall and once a repetition, not by processor time.
};

/// Measures all of them and prints a row of the table for each, the table's head first unless
/// `--rows` is among the arguments. The others are those of Google Benchmark. The result is the
/// exit status: 1 if some work and its limit don't agree, which is then not measured.
int run(std::vector<Comparison> const& comparisons, int argc, char** argv);

/// A row that was measured otherwise; `growth` 0 for none.
void printRow(std::string const& name, std::string const& work, std::string const& limit,
              double ratio, double aim, bool ok, double growth = 0);
void printHead();

} // namespace bench
