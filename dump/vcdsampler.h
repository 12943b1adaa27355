#pragma once

#include "dump/sampletable.h"

#include <QStringList>

#include <functional>
#include <vector>

class QIODevice;

namespace VEK::Dump {

/// What one core watches in a dump.
struct SampleRequest
{
    QStringList signalNames; ///< Names for `VcdNames`; row position i is entry i.
    QString clock;           ///< Empty: a row for each time at which a signal has a new value.
};

/// Takes the next row of a request: `SampleTable::wordsFor` its signals words, valid for the call.
/// False ends the reading.
using RowSink = std::function<bool(int request, quint64 const* row)>;

/// Samples a value change dump, all requests in one pass, and keeps nothing of it.
///
/// A row holds the values just before a rising edge of the request's clock: those at the end of
/// the last time before the edge's time. An edge is a clock of 0 at the end of one time and of 1
/// at the end of the next; the first value of a clock, at the start or after $dumpoff, is none.
/// Without a clock a row holds the values at the end of its time; what comes before the first time
/// belongs to it.
/// A dump that was cut is sampled up to its last whole time, with a `warning`.
/// False, with an `error` that names the line or the signals, for a dump that is broken, misses
/// signals or has no row for a request; with an empty one where `take` has ended the reading.
bool streamVcd(QIODevice& device, std::vector<SampleRequest> const& requests, RowSink const& take,
               QString& warning, QString& error);

/// The same from a file.
bool streamVcdFile(QString const& path, std::vector<SampleRequest> const& requests,
                   RowSink const& take, QString& warning, QString& error);

/// The same into tables. False as well for more samples than a bench may have.
bool sampleVcd(QIODevice& device, std::vector<SampleRequest> const& requests,
               SampledStimulus& stimulus, QString& error);

/// The same from a file.
bool sampleVcdFile(QString const& path, std::vector<SampleRequest> const& requests,
                   SampledStimulus& stimulus, QString& error);

} // namespace VEK::Dump
