#pragma once

#include "cli/report.h"
#include "cli/reportstatistics.h"

#include <QJsonObject>
#include <QStringList>

class QIODevice;

namespace VEK::Cli {

/// A time such as "2026-03-01 14:05:06", UTC.
QString timeText(qint64 ms);
/// The beginning of an hour or a day, UTC.
QString rowText(qint64 ms, bool isByDay);
/// A duration such as "1.250 s".
QString secondsText(qint32 ms);
/// Numbers of rows, the worst first: those with the largest share of captures that did not pass.
QVector<int> worstFirst(QVector<Tally> const& tallies);
/// What a board's failures are to be told as.
QString sentence(FailingBoard const& board, QString const& title);
/// Such as "6 passed, 1 differed", of those that say something about a design.
QString flakyText(Tally const& attempts);
/// "no trigger, differed, then passed", of the attempt that counts, at `last`.
QString attemptsText(Report const& report, int last);
/// Places of captures that had earlier attempts.
QVector<int> retried(Report const& report);

/// The report for people, a line a string.
QStringList tableOf(Report const& report, Statistics const& statistics);

/// The report as one JSON object, docs/report.schema.json. `extra` are further members. False when
/// the device did not take it.
bool writeJson(Report const& report, Statistics const& statistics, QJsonObject const& extra,
               QIODevice& out);

/// The report as JUnit XML: a test suite a configuration, a test case a capture. False when the
/// device did not take it.
bool writeJUnit(Report const& report, Statistics const& statistics, QIODevice& out);

} // namespace VEK::Cli
