#pragma once

#include "results/plainwindow.h"
#include "results/sampleclock.h"

class QIODevice;

/// Captures for other tools, in profiles that these read without a recipe. The device must be open
/// for writing. All give false once it has refused bytes, as on a full disk; it holds what went
/// before.
namespace VEK {

/// A table for spreadsheets and pandas: one title line, one row a sample, a line feed behind each,
/// quotes where RFC 4180 wants them. The first column is the sample's number ("sample"), with a
/// clock its time ("time_ns"). Values are decimal up to 64 bits, wider ones hexadecimal behind 0x.
bool exportPlainCsv(QIODevice& device, PlainWindow const& window, SampleClock const& clock);

/// A value change dump for GTKWave, its converters and others: one line a `$var`, buses as vectors,
/// nets in the scopes of their names ("a/b" and "a.b" are net b in scope a), the trigger as an
/// event variable in the module's scope, no comment. Without a clock a sample takes a nanosecond.
bool exportPlainVcd(QIODevice& device, PlainWindow const& window, SampleClock const& clock);

/// Samples in binary: a bit for each net in the order of the columns, the first one lowest in the
/// first byte, each sample padded to whole bytes.
bool exportPlainRaw(QIODevice& device, PlainWindow const& window);

/// The nets of such a file, in one line as sigrok-cli's option for channels takes it:
/// "0=valid,1=addr[7]". Commas, blanks and equal signs in names become underscores.
QByteArray rawChannels(PlainWindow const& window);

} // namespace VEK
