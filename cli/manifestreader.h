#pragma once

#include <QJsonObject>
#include <QString>

namespace VEK::Cli {

/// What a run's manifest says of one window's file.
struct ManifestFacts
{
    bool isKnown = false;
    int core = 0; ///< Its own index.
    int samples = 0;
    int trigger = 0;
};

/// Looks for a file, or one of the same window in another format, in `manifest`, or when that is
/// empty in the manifests beside the file. One that was changed since it was written is not taken
/// for the manifest's. Throws a Failure when `manifest` can't be read.
ManifestFacts manifestFacts(QString const& path, QString const& manifest);

/// Appends an object to the array "comparisons" of a manifest. Throws a Failure.
void addComparison(QString const& manifest, QJsonObject const& comparison);

} // namespace VEK::Cli
