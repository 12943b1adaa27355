#pragma once

#include "model/vekfile.h"
#include "results/capturedwindow.h"

namespace VEK {

/// What a session file holds of one core.
struct SessionCapture
{
    int core = 0; ///< Its place among the cores.
    QList<CapturedWindow> windows;
};

/// Reads all captures of a session file. `parsed` gets the document with its configuration; the
/// samples are not in it, so that it stays small. Signals come in the order of their rows, behind
/// them those that no row shows. False, with an error, for what is no session with a capture, or
/// one whose signals are not of bits and equally long.
bool readSessionCaptures(QByteArray const& file, ParsedDocument& parsed,
                         QList<SessionCapture>& captures, QString& error);

} // namespace VEK
