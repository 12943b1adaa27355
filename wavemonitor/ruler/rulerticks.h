#pragma once

#include <QtGlobal>

namespace WaveMonitor {

/// The distances of the ruler's ticks, in samples, both at least 1.
struct TickSteps
{
    qint64 major = 1; ///< labelled ticks
    qint64 minor = 1; ///< with 1 there are no minor ticks
};

/// The law of the ticks: at a horizontal scale of 1 or more a label at every sample; below, 2, 5,
/// 10, 20, 50 and so on for every halving. A scale that is not finite or not above 0 is taken as 1;
/// the steps stop growing beyond any time that fits an int.
TickSteps tickSteps(double scale);

/// Samples `from` .. `to` - 1.
struct TickRange
{
    qint64 from = 0;
    qint64 to = 0;
};

/// The samples whose ticks and labels can touch the exposed scene x from `left` to `right`, on a
/// ruler of `length` samples.
TickRange tickRange(double left, double right, int length, TickSteps const& steps);

/// The first sample at or after `from` that is a multiple of `step`, plus `remainder`
/// (0 <= remainder < step).
qint64 firstTick(qint64 from, qint64 step, qint64 remainder = 0);

/// Samples from one window's begin to the next's: `length` / `num`, 0 if there is no such step
/// (no windows, or more windows than samples).
qint64 windowStep(int length, int num);

/// By how many window boundaries to go on: where several of them share a device pixel column, most
/// are left out, yet no column that one falls into stays empty. At least 1.
qint64 windowStride(qint64 step, double scale);

/// Device x of what stands at a sample, before the scroll offset: its label goes 3 pixels right of
/// it.
double labelX(qint64 sample, double scale);

} // namespace WaveMonitor
