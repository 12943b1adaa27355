#include "cli/reportdifferences.h"

#include "cli/reportfacts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <limits>

namespace VEK::Cli {
namespace {

constexpr int MostSentences = 20;
constexpr qint64 LargestManifest = 16 * 1024 * 1024;

QString textIn(QJsonObject const& object, char const* key)
{
    return object.value(QLatin1String(key)).toString();
}

QStringList textsIn(QJsonObject const& object, char const* key)
{
    QStringList texts;
    for (QJsonValue const& text : object.value(QLatin1String(key)).toArray())
        texts << text.toString();
    return texts;
}

/// A file of the manifest for people's and viewers' eyes: one of a single window.
bool isOfOneWindow(QString const& path)
{
    return path.endsWith(QLatin1String(".csv")) || path.endsWith(QLatin1String(".vcd"));
}

/// A file of that window of a session.
QString fileOfWindow(QJsonObject const& root, QString const& title)
{
    for (QJsonValue const& coreValue : root.value(QLatin1String("cores")).toArray()) {
        QJsonObject const core = coreValue.toObject();
        for (QJsonValue const& value : core.value(QLatin1String("windows")).toArray()) {
            QJsonObject const window = value.toObject();
            QString const name = QStringLiteral("core %1 window %2")
                                     .arg(core.value(QLatin1String("index")).toInt())
                                     .arg(window.value(QLatin1String("index")).toInt());
            for (QJsonValue const& file : window.value(QLatin1String("files")).toArray()) {
                QString const path = textIn(file.toObject(), "file");
                if (name == title && isOfOneWindow(path))
                    return path;
            }
        }
    }
    return QString();
}

/// The capture that was compared, seen from where the manifest is now. Empty when it isn't there.
QString captureOf(QJsonObject const& root, QJsonObject const& comparison, QString const& window,
                  QDir const& folder)
{
    QString path = textIn(comparison, "new_file");
    if (!window.isEmpty())
        path = fileOfWindow(root, window);
    if (path.isEmpty())
        return QString();
    QString const absolute = folder.absoluteFilePath(path);
    return QFileInfo(absolute).isFile() ? QDir::cleanPath(absolute) : QString();
}

void readSignals(QJsonObject const& window, Difference& difference, int& first)
{
    QString const lengths = textIn(window, "lengths");
    if (!lengths.isEmpty())
        difference.sentences << lengths;
    for (QJsonValue const& value : window.value(QLatin1String("signals")).toArray()) {
        QJsonObject const signal = value.toObject();
        QString const result = textIn(signal, "result");
        if (result == QLatin1String("differs"))
            first = std::min(first, signal.value(QLatin1String("first")).toInt());
        if (result != QLatin1String("equal") && difference.sentences.size() < MostSentences)
            difference.sentences << sentenceOf(signal);
    }
}

void readAround(QJsonObject const& around, Difference& difference)
{
    difference.from = around.value(QLatin1String("from")).toInt();
    for (QJsonValue const& value : around.value(QLatin1String("signals")).toArray()) {
        QJsonObject const signal = value.toObject();
        difference.rows << Difference::Row{textIn(signal, "name"), textsIn(signal, "golden"),
                                           textsIn(signal, "new")};
    }
}

Difference differenceOf(QJsonObject const& root, QJsonObject const& comparison,
                        QJsonObject const& window, QDir const& folder)
{
    constexpr int Nowhere = std::numeric_limits<int>::max();
    Difference difference;
    difference.window = textIn(window, "window");
    int first = Nowhere;
    readSignals(window, difference, first);
    readAround(window.value(QLatin1String("around")).toObject(), difference);
    QJsonValue const at = window.value(QLatin1String("new_at"));
    if (first != Nowhere && at.isDouble()) {
        difference.capture = captureOf(root, comparison, difference.window, folder);
        difference.sample = at.toInt() + first;
    }
    return difference;
}

/// Empty for what is no manifest any more.
QJsonObject manifestAt(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > LargestManifest)
        return {};
    try {
        return manifestRun(file.readAll(), QString()).root;
    } catch (BadManifest const&) {
        return {};
    } catch (OtherDocument const&) {
        return {};
    }
}

} // namespace

QVector<Difference> differencesOf(Report const& report, int most)
{
    QVector<Difference> differences;
    for (int i = 0; i < report.runs.size(); ++i) {
        ReportRun const& run = report.runs.at(i);
        if (!run.isLast || run.outcome != Outcome::Differed)
            continue;
        QString const path = QFile::decodeName(run.path);
        QDir const folder = QFileInfo(path).absoluteDir();
        QJsonObject const root = manifestAt(path);
        for (QJsonObject const& comparison : lastComparisons(root)) {
            for (QJsonValue const& value : comparison.value(QLatin1String("windows")).toArray()) {
                QJsonObject const window = value.toObject();
                if (window.value(QLatin1String("equal")).toBool())
                    continue;
                if (differences.size() == most)
                    return differences;
                differences << differenceOf(root, comparison, window, folder);
                differences.last().run = i;
            }
        }
    }
    return differences;
}

} // namespace VEK::Cli
