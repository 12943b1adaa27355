#include "cli/manifestreader.h"

#include "cli/exitstatus.h"
#include "results/wholefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace VEK::Cli {
namespace {

constexpr qint64 LargestManifest = 16 * 1024 * 1024;

/// Empty for what is no manifest.
QJsonObject manifestIn(QString const& path)
{
    QFile file(path);
    QJsonObject root;
    if (QFileInfo(path).isFile() && file.size() <= LargestManifest &&
        file.open(QIODevice::ReadOnly))
        root = QJsonDocument::fromJson(file.readAll()).object();
    bool const isOurs = root.value(QStringLiteral("format")).toString() == QLatin1String("vek-run");
    return isOurs ? root : QJsonObject();
}

QJsonObject manifestOrFailure(QString const& path)
{
    QJsonObject const root = manifestIn(path);
    if (root.isEmpty())
        throw Failure{Status::Configuration, path + QStringLiteral(": this is no manifest")};
    return root;
}

/// Whether one of the window's files is the one at `path`, or of another format beside it.
bool isOfWindow(QJsonObject const& window, QDir const& folder, QFileInfo const& path)
{
    bool isSibling = false;
    for (QJsonValue const& value : window.value(QStringLiteral("files")).toArray()) {
        QJsonObject const file = value.toObject();
        QFileInfo const known(
            folder.absoluteFilePath(file.value(QStringLiteral("file")).toString()));
        if (known.absoluteFilePath() == path.absoluteFilePath())
            return path.size() == qint64(file.value(QStringLiteral("size")).toDouble());
        isSibling = isSibling || (known.absolutePath() == path.absolutePath() &&
                                  known.completeBaseName() == path.completeBaseName());
    }
    return isSibling;
}

ManifestFacts factsIn(QJsonObject const& root, QDir const& folder, QFileInfo const& path)
{
    for (QJsonValue const& coreValue : root.value(QStringLiteral("cores")).toArray()) {
        QJsonObject const core = coreValue.toObject();
        for (QJsonValue const& value : core.value(QStringLiteral("windows")).toArray()) {
            QJsonObject const window = value.toObject();
            if (isOfWindow(window, folder, path))
                return {true, core.value(QStringLiteral("index")).toInt(),
                        window.value(QStringLiteral("samples")).toInt(),
                        window.value(QStringLiteral("trigger_sample")).toInt()};
        }
    }
    return {};
}

} // namespace

ManifestFacts manifestFacts(QString const& path, QString const& manifest)
{
    QFileInfo const file(path);
    if (!manifest.isEmpty()) {
        ManifestFacts const facts =
            factsIn(manifestOrFailure(manifest), QFileInfo(manifest).absoluteDir(), file);
        if (facts.isKnown)
            return facts;
    }
    QDir const folder = file.absoluteDir();
    for (QString const& name : folder.entryList({QStringLiteral("*.json")}, QDir::Files)) {
        ManifestFacts const facts = factsIn(manifestIn(folder.filePath(name)), folder, file);
        if (facts.isKnown)
            return facts;
    }
    return {};
}

void addComparison(QString const& manifest, QJsonObject const& comparison)
{
    QJsonObject root = manifestOrFailure(manifest);
    QString const key = QStringLiteral("comparisons");
    QJsonArray comparisons = root.value(key).toArray();
    comparisons.append(comparison);
    root.insert(key, comparisons);
    QString error;
    if (!writeWholeFile(manifest, QJsonDocument(root).toJson(), error))
        throw Failure{Status::Output,
                      QStringLiteral("%1 can't be written: %2").arg(manifest, error)};
}

} // namespace VEK::Cli
