#pragma once

#include "cli/report.h"

#include <array>

namespace VEK::Cli {

/// How many runs came out how.
struct Tally
{
    std::array<int, OutcomeTable.size()> counts{};

    int& operator[](Outcome outcome) { return counts[std::size_t(outcome)]; }
    int operator[](Outcome outcome) const { return counts[std::size_t(outcome)]; }
    int all() const;
    /// What says something about the board: differed, no trigger, board errors.
    int failed() const;
    /// Those, and what passed.
    int judged() const { return failed() + (*this)[Outcome::Passed]; }
};

/// Runs that began within an hour or a day.
struct TimeRow
{
    qint64 from = 0; ///< ms since 1970, UTC.
    Tally tally;
};

/// A board that fails more than the others.
struct FailingBoard
{
    int board = 0;
    int runs = 0; ///< That say something about the board.
    int failed = 0;
    int otherRuns = 0;   ///< Of the boards that are not told before it.
    int otherFailed = 0; ///< The same.
    double chance = 1;   ///< That it has as many by chance, times the number of boards.
    bool isDead = false; ///< Board errors and nothing else.
};

/// What is told of a report. Captures are counted once, by their last attempt; boards, time and
/// configurations that come out differently are judged by all attempts, which a retry would hide.
struct Statistics
{
    explicit Statistics(Report const& report);

    Tally captures;
    int earlier = 0;     ///< Attempts that were followed by another.
    int notCompared = 0; ///< Captures that passed without a golden one to compare with.
    QVector<Tally> configurations;
    QVector<Tally> boards;
    bool isByDay = false;          ///< Else by hour.
    QVector<TimeRow> time;         ///< Without those in which nothing began.
    QVector<int> slowest;          ///< Captures, by their places among the report's runs.
    QVector<int> flaky;            ///< Configurations: of `attempts` more than one outcome.
    QVector<Tally> attempts;       ///< By configuration.
    QVector<FailingBoard> failing; ///< The surest first.

private:
    void count(Report const& report);
    void countTime(Report const& report);
    void findSlowest(Report const& report);
    void findFlaky();
    void findFailing();
};

/// The chance that of `drawn` things, taken from `all` of which `marked` are marked, `found` or
/// more are marked. The exact one, as in Fisher's test; 1 when they are no more than their share.
double chanceOf(int found, int drawn, int marked, int all);

} // namespace VEK::Cli
