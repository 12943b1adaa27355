#pragma once

#include "cli/report.h"
#include "cli/reportdifferences.h"
#include "cli/reportstatistics.h"

#include <QByteArray>

/// Sections of the page for people, as HTML in UTF-8 with all text from outside escaped. Each is
/// bounded, however many runs there are; one that has nothing to say is empty.
namespace VEK::Cli {

/// The numbers of the summary, with links that filter.
QByteArray tiles(Report const& report, Statistics const& statistics);
QByteArray failingBoards(Report const& report, Statistics const& statistics);
QByteArray timeChart(Statistics const& statistics);
/// In front of the articles; `shown` is their number.
QByteArray differenceHead(Statistics const& statistics, int shown);
/// One difference, with its picture and values.
QByteArray article(Report const& report, Difference const& difference);
/// Configurations, boards, what comes out differently, several attempts, the slowest.
QByteArray groups(Report const& report, Statistics const& statistics);
/// What is missing and broken.
QByteArray losses(Report const& report);

} // namespace VEK::Cli
