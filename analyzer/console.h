#pragma once

#include <QString>

namespace VEK {

/// Prints one line on standard output, in UTF-8, and flushes it: whoever waits on a pipe sees it at
/// once. Everything the batch tool says goes out here; nothing goes to standard error.
void printLine(QString const& text);

} // namespace VEK
