#include "cli/reporttext.h"

#include <QDateTime>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>

namespace VEK::Cli {
namespace {

QJsonValue textJson(QByteArray const& utf8)
{
    return QString::fromUtf8(utf8);
}

QJsonValue timeJson(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
}

QJsonValue wordOf(Outcome outcome)
{
    return QLatin1String(rowOf(outcome).word);
}

QJsonObject tallyJson(Tally const& tally)
{
    QJsonObject json{{QStringLiteral("all"), tally.all()}};
    for (std::size_t i = 0; i < OutcomeTable.size(); ++i)
        json.insert(QLatin1String(OutcomeTable[i].word), tally.counts[i]);
    return json;
}

QJsonArray groupsJson(QVector<QByteArray> const& titles, QVector<Tally> const& tallies)
{
    QJsonArray json;
    for (int const at : worstFirst(tallies))
        json.append(QJsonObject{{QStringLiteral("name"), textJson(titles.at(at))},
                                {QStringLiteral("runs"), tallyJson(tallies.at(at))}});
    return json;
}

QJsonObject timeJson(Statistics const& statistics)
{
    QJsonArray rows;
    for (TimeRow const& row : statistics.time)
        rows.append(QJsonObject{{QStringLiteral("from"), timeJson(row.from)},
                                {QStringLiteral("runs"), tallyJson(row.tally)}});
    return {{QStringLiteral("per"),
             statistics.isByDay ? QStringLiteral("day") : QStringLiteral("hour")},
            {QStringLiteral("rows"), rows}};
}

QJsonArray failingJson(Report const& report, Statistics const& statistics)
{
    QJsonArray json;
    for (FailingBoard const& board : statistics.failing)
        json.append(QJsonObject{{QStringLiteral("board"), textJson(report.boards.at(board.board))},
                                {QStringLiteral("runs"), board.runs},
                                {QStringLiteral("failed"), board.failed},
                                {QStringLiteral("other_runs"), board.otherRuns},
                                {QStringLiteral("other_failed"), board.otherFailed},
                                {QStringLiteral("chance"), board.chance},
                                {QStringLiteral("dead"), board.isDead}});
    return json;
}

QJsonArray brokenJson(Report const& report)
{
    QJsonArray json;
    for (BrokenManifest const& broken : report.broken)
        json.append(QJsonObject{{QStringLiteral("path"), textJson(broken.path)},
                                {QStringLiteral("reason"), textJson(broken.reason)}});
    return json;
}

QJsonObject headJson(Report const& report, Statistics const& statistics)
{
    QVector<QByteArray> const configurations = report.configurationTitles();
    QJsonArray flaky;
    for (int const at : statistics.flaky)
        flaky.append(QJsonObject{{QStringLiteral("configuration"), textJson(configurations.at(at))},
                                 {QStringLiteral("runs"), tallyJson(statistics.attempts.at(at))}});
    QJsonArray slowest;
    for (int const at : statistics.slowest)
        slowest.append(
            QJsonObject{{QStringLiteral("label"), textJson(report.runs.at(at).label)},
                        {QStringLiteral("seconds"), report.runs.at(at).duration / 1000.0}});
    QJsonArray missing;
    for (QByteArray const& label : report.missing)
        missing.append(textJson(label));
    return {
        {QStringLiteral("format"), QStringLiteral("vek-report")},
        {QStringLiteral("schema"), 1},
        {QStringLiteral("program"), QStringLiteral("vek " VEK_VERSION)},
        {QStringLiteral("all_passed"), report.isAllPassed()},
        {QStringLiteral("captures"), tallyJson(statistics.captures)},
        {QStringLiteral("earlier_attempts"), statistics.earlier},
        {QStringLiteral("not_compared"), statistics.notCompared},
        {QStringLiteral("not_expected"), report.unexpected},
        {QStringLiteral("copies"), report.copies},
        {QStringLiteral("other_documents"), report.others},
        {QStringLiteral("missing"), missing},
        {QStringLiteral("broken"), brokenJson(report)},
        {QStringLiteral("configurations"), groupsJson(configurations, statistics.configurations)},
        {QStringLiteral("boards"), groupsJson(report.boards.texts(), statistics.boards)},
        {QStringLiteral("time"), timeJson(statistics)},
        {QStringLiteral("failing_boards"), failingJson(report, statistics)},
        {QStringLiteral("flaky"), flaky},
        {QStringLiteral("slowest"), slowest}};
}

QJsonObject runJson(Report const& report, QVector<QByteArray> const& configurations,
                    ReportRun const& run)
{
    return {{QStringLiteral("label"), textJson(run.label)},
            {QStringLiteral("manifest"), textJson(run.path)},
            {QStringLiteral("outcome"), wordOf(run.outcome)},
            {QStringLiteral("message"), textJson(run.message)},
            {QStringLiteral("status"),
             run.outcome == Outcome::Unfinished ? QJsonValue() : QJsonValue(run.status)},
            {QStringLiteral("counts"), run.isLast},
            {QStringLiteral("compared"), run.isCompared},
            {QStringLiteral("attempt"), run.attempt},
            {QStringLiteral("started"), timeJson(run.started)},
            {QStringLiteral("seconds"),
             run.duration == ReportRun::Unknown ? QJsonValue() : QJsonValue(run.duration / 1000.0)},
            {QStringLiteral("configuration"), textJson(configurations.at(run.configuration))},
            {QStringLiteral("board"), textJson(report.boards.at(run.board))}};
}

} // namespace

/// The runs go out one by one: as one document a hundred thousand would take more than all else.
bool writeJson(Report const& report, Statistics const& statistics, QJsonObject const& extra,
               QIODevice& out)
{
    QJsonObject head = headJson(report, statistics);
    for (auto member = extra.begin(); member != extra.end(); ++member)
        head.insert(member.key(), *member);
    QByteArray text = QJsonDocument(head).toJson(QJsonDocument::Compact);
    text.chop(1);
    text += ",\"runs\":[";
    QVector<QByteArray> const configurations = report.configurationTitles();
    for (int i = 0; i < report.runs.size(); ++i) {
        text += i > 0 ? ",\n" : "\n";
        text += QJsonDocument(runJson(report, configurations, report.runs.at(i)))
                    .toJson(QJsonDocument::Compact);
        if (out.write(text) != text.size())
            return false;
        text.clear();
    }
    text += "]}\n";
    return out.write(text) == text.size();
}

} // namespace VEK::Cli
