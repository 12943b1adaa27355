#include "cli/reportstatistics.h"

#include <QMap>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

namespace VEK::Cli {
namespace {

constexpr int SlowestCount = 10;
constexpr qint64 Hour = 3600 * 1000;
constexpr qint64 Day = 24 * Hour;
constexpr qint64 LongestByHour = 2 * Day;
constexpr double SureBelow = 0.01;
constexpr double Negligible = 1e-12;

/// Of the logarithm of the number of ways to take `count` from `all`.
double logWays(int all, int count)
{
    return std::lgamma(all + 1.0) - std::lgamma(count + 1.0) - std::lgamma(all - count + 1.0);
}

} // namespace

int Tally::all() const
{
    return std::accumulate(counts.begin(), counts.end(), 0);
}

int Tally::failed() const
{
    return (*this)[Outcome::Differed] + (*this)[Outcome::NoTrigger] + (*this)[Outcome::BoardError];
}

double chanceOf(int found, int drawn, int marked, int all)
{
    if (qint64(found) * all <= qint64(marked) * drawn)
        return 1; // not more than its share: close enough, and most boards end here
    double sum = 0;
    double const ways = logWays(all, drawn);
    for (int i = found; i <= std::min(drawn, marked); ++i) {
        double const term = std::exp(logWays(marked, i) + logWays(all - marked, drawn - i) - ways);
        sum += term;
        if (term < sum * Negligible)
            break;
    }
    return std::min(1.0, sum);
}

Statistics::Statistics(Report const& report)
    : configurations(report.configurations.size()), boards(report.boards.size()),
      attempts(report.configurations.size())
{
    count(report);
    countTime(report);
    findSlowest(report);
    findFlaky();
    findFailing();
}

void Statistics::count(Report const& report)
{
    for (ReportRun const& run : report.runs) {
        ++boards[run.board][run.outcome];
        ++attempts[run.configuration][run.outcome];
        if (!run.isLast) {
            ++earlier;
            continue;
        }
        ++captures[run.outcome];
        ++configurations[run.configuration][run.outcome];
        notCompared += run.outcome == Outcome::Passed && !run.isCompared;
    }
}

void Statistics::countTime(Report const& report)
{
    if (report.runs.isEmpty())
        return;
    auto const ends = std::minmax_element(
        report.runs.begin(), report.runs.end(),
        [](ReportRun const& one, ReportRun const& other) { return one.started < other.started; });
    isByDay = ends.second->started - ends.first->started > LongestByHour;
    qint64 const step = isByDay ? Day : Hour;
    QMap<qint64, Tally> rows;
    for (ReportRun const& run : report.runs) {
        qint64 const within = (run.started % step + step) % step; // before 1970, too
        ++rows[run.started - within][run.outcome];
    }
    for (auto row = rows.begin(); row != rows.end(); ++row)
        time << TimeRow{row.key(), *row};
}

void Statistics::findSlowest(Report const& report)
{
    for (int i = 0; i < report.runs.size(); ++i) {
        if (report.runs.at(i).isLast && report.runs.at(i).duration != ReportRun::Unknown)
            slowest << i;
    }
    auto const isSlower = [&](int one, int other) {
        qint32 const first = report.runs.at(one).duration;
        qint32 const second = report.runs.at(other).duration;
        return first != second ? first > second : one < other;
    };
    int const count = std::min(SlowestCount, slowest.size());
    std::partial_sort(slowest.begin(), slowest.begin() + count, slowest.end(), isSlower);
    slowest.resize(count);
    slowest.squeeze();
}

/// What boards, time limits and disks do says nothing about a design.
void Statistics::findFlaky()
{
    for (int i = 0; i < attempts.size(); ++i) {
        Tally const& tally = attempts.at(i);
        int const kinds = (tally[Outcome::Passed] > 0) + (tally[Outcome::Differed] > 0) +
                          (tally[Outcome::NoTrigger] > 0);
        if (kinds > 1)
            flaky << i;
    }
}

/// Dead boards first, since they are beyond doubt. Then each board against all others together, and
/// again without the one that stands out most: next to a very bad board none else would.
void Statistics::findFailing()
{
    FailingBoard others;
    QVector<FailingBoard> left;
    for (int i = 0; i < boards.size(); ++i) {
        Tally const& tally = boards.at(i);
        bool const isDead = tally.judged() > 0 && tally[Outcome::BoardError] == tally.judged();
        others.runs += tally.judged();
        others.failed += tally.failed();
        if (tally.judged() > 0)
            left << FailingBoard{i, tally.judged(), tally.failed(), 0, 0, 1, isDead};
    }
    while (!left.isEmpty()) {
        for (FailingBoard& board : left) {
            board.otherRuns = others.runs - board.runs;
            board.otherFailed = others.failed - board.failed;
            board.chance = std::min(1.0, boards.size() * chanceOf(board.failed, board.runs,
                                                                  others.failed, others.runs));
        }
        auto const worst = std::min_element(left.begin(), left.end(),
                                            [](FailingBoard const& one, FailingBoard const& other) {
                                                return std::tuple(!one.isDead, one.chance) <
                                                       std::tuple(!other.isDead, other.chance);
                                            });
        if (!worst->isDead && worst->chance >= SureBelow)
            break;
        failing << *worst;
        others.runs -= worst->runs;
        others.failed -= worst->failed;
        left.erase(worst);
    }
}

} // namespace VEK::Cli
