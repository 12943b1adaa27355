#pragma once

#include "results/capturedwindow.h"

class QIODevice;

/// Readers of the tables that the exports write. Unlike `readCsv` they take nothing that is not
/// whole: a row that is missing or cut, or a value that is no bit, is an error. All give false with
/// an `error` that names the line; the window is not to be used then. The device must be open for
/// reading. No table holds the trigger.
namespace VEK {

/// A file of `exportCSV`. Names are those of the file, which are display names; a bus's values are
/// not looked at, those of its members are.
bool readCsvWindow(QIODevice& device, CapturedWindow& window, QString& error);

/// A file of `exportPlainCsv`. The width of a bus is that of its greatest value, and its members
/// are numbered.
bool readPlainCsvWindow(QIODevice& device, CapturedWindow& window, QString& error);

/// A file of `exportPRN` with all columns. The members of a bus are those that its hexadecimal
/// values fit; where several numbers of them do, the one that their names tell, else the greatest.
bool readPrnWindow(QIODevice& device, CapturedWindow& window, QString& error);

/// A file of `exportPlainRaw`, and the line of `rawChannels` beside it.
bool readRawWindow(QIODevice& device, QByteArray const& channels, CapturedWindow& window,
                   QString& error);

} // namespace VEK
