#pragma once

#include "cli/report.h"

#include <QJsonObject>

namespace VEK::Cli {

/// What a report takes from one manifest, apart from what stands in its JSON as it is.
struct ManifestRun
{
    QJsonObject root;
    ReportRun run;         ///< Without numbers of configuration and board.
    QString configuration; ///< The name of its file, and what was overridden.
    QString sha256;        ///< Of the configuration.
    QString board;         ///< The label "board"; else server or machine, cable and location.
};

/// Thrown for what is no manifest of a run, or none that this program knows.
struct BadManifest
{
    QString reason;
};

/// Thrown for a document of another kind, which is nobody's fault.
struct OtherDocument
{};

/// The comparisons of a manifest that count: of several of the same two files the last one.
QVector<QJsonObject> lastComparisons(QJsonObject const& root);

/// What came of a signal that is not equal, in words; `signal` is as in a comparison.
QString sentenceOf(QJsonObject const& signal);

/// The facts of a manifest. The label of the run is that with the key `labelKey`, or empty. Throws
/// `BadManifest` or `OtherDocument`.
ManifestRun manifestRun(QByteArray const& json, QString const& labelKey);

} // namespace VEK::Cli
