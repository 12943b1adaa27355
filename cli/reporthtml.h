#pragma once

#include "cli/report.h"
#include "cli/reportdifferences.h"
#include "cli/reportstatistics.h"

class QIODevice;

namespace VEK::Cli {

/// The report as one page that needs no other file: summary, filters, differences. All text is
/// escaped, and the page lets no script run but its own. False when the device did not take it.
bool writeHtml(Report const& report, Statistics const& statistics,
               QVector<Difference> const& differences, QIODevice& out);

} // namespace VEK::Cli
