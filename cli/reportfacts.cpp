#include "cli/reportfacts.h"

#include "cli/exitstatus.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QSet>

#include <limits>

namespace VEK::Cli {
namespace {

constexpr int KnownSchema = 1;

QString textIn(QJsonObject const& object, char const* key)
{
    return object.value(QLatin1String(key)).toString();
}

QDateTime timeIn(QJsonObject const& object, char const* key)
{
    return QDateTime::fromString(textIn(object, key), Qt::ISODateWithMs);
}

/// Of a cause, as in the table of exit statuses.
Outcome outcomeOf(QString const& cause)
{
    static QHash<QString, Outcome> const outcomes{
        {causeOf(Status::Done), Outcome::Passed},
        {causeOf(Status::Differs), Outcome::Differed},
        {causeOf(Status::NoServer), Outcome::BoardError},
        {causeOf(Status::NoAnswer), Outcome::BoardError},
        {causeOf(Status::Busy), Outcome::BoardError},
        {causeOf(Status::OpenFailed), Outcome::BoardError},
        {causeOf(Status::Empty), Outcome::BoardError},
        {causeOf(Status::DeviceError), Outcome::BoardError},
        {causeOf(Status::NoTrigger), Outcome::NoTrigger},
        {causeOf(Status::ServerLost), Outcome::BoardError},
        {causeOf(Status::Output), Outcome::OutputError},
        {causeOf(Status::Signal), Outcome::Stopped},
    };
    auto const found = outcomes.constFind(cause);
    if (found == outcomes.constEnd())
        throw BadManifest{QStringLiteral("its cause \"%1\" is not known").arg(cause)};
    return *found;
}

/// The first thing that differs, in words.
QString firstDifference(QJsonObject const& comparison)
{
    for (QJsonValue const& value : comparison.value(QLatin1String("windows")).toArray()) {
        QJsonObject const window = value.toObject();
        if (window.value(QLatin1String("equal")).toBool())
            continue;
        QString const title = textIn(window, "window");
        QString const head = title.isEmpty() ? QString() : title + QStringLiteral(": ");
        for (QJsonValue const& signalValue : window.value(QLatin1String("signals")).toArray()) {
            QJsonObject const signal = signalValue.toObject();
            if (textIn(signal, "result") != QLatin1String("equal"))
                return head + sentenceOf(signal);
        }
        return head + textIn(window, "lengths");
    }
    return QStringLiteral("differs");
}

void judgeComparisons(QJsonObject const& root, ReportRun& run)
{
    for (QJsonObject const& comparison : lastComparisons(root)) {
        run.isCompared = true;
        if (comparison.value(QLatin1String("equal")).toBool() || run.outcome != Outcome::Passed)
            continue;
        run.outcome = Outcome::Differed;
        run.message = firstDifference(comparison).toUtf8();
    }
}

void judge(QJsonObject const& root, ReportRun& run)
{
    QString const state = textIn(root, "state");
    QDateTime const started = timeIn(root, "started");
    if (!started.isValid())
        throw BadManifest{QStringLiteral("it tells no start")};
    run.started = started.toMSecsSinceEpoch();
    if (state == QLatin1String("running")) {
        run.message = "runs, or was killed";
        return;
    }
    QJsonObject const outcome = root.value(QLatin1String("outcome")).toObject();
    QDateTime const ended = timeIn(root, "ended");
    if (state != QLatin1String("ended") || outcome.isEmpty() || !ended.isValid())
        throw BadManifest{QStringLiteral("it tells no end")};
    run.duration =
        int(qBound<qint64>(0, started.msecsTo(ended), std::numeric_limits<qint32>::max()));
    run.status = quint8(outcome.value(QLatin1String("status")).toInt());
    run.outcome = outcomeOf(textIn(outcome, "cause"));
    if (run.outcome != Outcome::Passed)
        run.message = textIn(outcome, "message").toUtf8();
    judgeComparisons(root, run);
}

QString configurationName(QJsonObject const& configuration)
{
    QString name = textIn(configuration, "path").section(QLatin1Char('/'), -1);
    QJsonObject const overrides = configuration.value(QLatin1String("overrides")).toObject();
    for (auto value = overrides.begin(); value != overrides.end(); ++value) {
        QStringList values;
        for (QJsonValue const& one : value->isArray() ? value->toArray() : QJsonArray{*value})
            values << one.toVariant().toString();
        name += QStringLiteral(" %1=%2").arg(value.key(), values.join(QLatin1Char(',')));
    }
    return name.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

/// A server that is reached by a loopback address is another one on each machine.
bool isLoopback(QString const& server)
{
    QString host = server.section(QLatin1Char(':'), 0, -2);
    host.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    return host == QLatin1String("localhost") || host == QLatin1String("::1") ||
           host.startsWith(QLatin1String("127."));
}

QString boardName(QJsonObject const& root)
{
    QString const given = textIn(root.value(QLatin1String("labels")).toObject(), "board");
    if (!given.isEmpty())
        return given;
    QString const server = textIn(root, "server");
    QStringList parts;
    if (server.isEmpty() || isLoopback(server))
        parts << textIn(root, "host");
    parts << server << textIn(root, "cable") << textIn(root, "location");
    parts.removeAll(QString());
    return parts.join(QLatin1Char(' '));
}

} // namespace

QVector<QJsonObject> lastComparisons(QJsonObject const& root)
{
    QVector<QJsonObject> last;
    QSet<QString> seen;
    QJsonArray const comparisons = root.value(QLatin1String("comparisons")).toArray();
    for (int i = comparisons.size() - 1; i >= 0; --i) {
        QJsonObject const comparison = comparisons.at(i).toObject();
        QString const pair =
            textIn(comparison, "golden") + QLatin1Char('\n') + textIn(comparison, "new");
        if (!seen.contains(pair))
            last.prepend(comparison);
        seen.insert(pair);
    }
    return last;
}

QString sentenceOf(QJsonObject const& signal)
{
    QString const result = textIn(signal, "result");
    if (result != QLatin1String("differs"))
        return textIn(signal, "name") + QStringLiteral(": ") + result;
    return QStringLiteral("%1: %2 samples differ, the first at %3")
        .arg(textIn(signal, "name"),
             QString::number(signal.value(QLatin1String("differing")).toInt()),
             QString::number(signal.value(QLatin1String("first")).toInt()));
}

ManifestRun manifestRun(QByteArray const& json, QString const& labelKey)
{
    QJsonParseError error;
    QJsonDocument const document = QJsonDocument::fromJson(json, &error);
    if (document.isNull())
        throw BadManifest{json.isEmpty() ? QStringLiteral("it is empty") : error.errorString()};
    ManifestRun facts;
    facts.root = document.object();
    if (textIn(facts.root, "format") != QLatin1String("vek-run"))
        throw OtherDocument{};
    if (facts.root.value(QLatin1String("schema")).toInt() != KnownSchema)
        throw BadManifest{QStringLiteral("it has a form that this program does not know")};
    facts.run.label =
        textIn(facts.root.value(QLatin1String("labels")).toObject(), labelKey.toUtf8().constData())
            .toUtf8();
    facts.run.attempt = facts.root.value(QLatin1String("attempt")).toInt();
    judge(facts.root, facts.run);
    QJsonObject const configuration = facts.root.value(QLatin1String("configuration")).toObject();
    facts.configuration = configurationName(configuration);
    facts.sha256 = textIn(configuration, "sha256");
    facts.board = boardName(facts.root);
    return facts;
}

} // namespace VEK::Cli
