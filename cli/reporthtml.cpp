#include "cli/reporthtml.h"

#include "cli/reportsections.h"
#include "cli/reporttext.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>

namespace VEK::Cli {
namespace {

QByteArray resource(char const* name)
{
    QFile file(QStringLiteral(":/") + QLatin1String(name));
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

QByteArray digestOf(QByteArray const& text)
{
    return "'sha256-" + QCryptographicHash::hash(text, QCryptographicHash::Sha256).toBase64() +
           '\'';
}

/// The page's own script and style are all that may act in it, whatever else slips in.
QByteArray head(QByteArray const& style, QByteArray const& script)
{
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
           "img-src data:; style-src " +
           digestOf(style) + "; script-src " + digestOf(script) +
           "; base-uri 'none'; form-action 'none'\">\n<title>Captures</title>\n<style>" + style +
           "</style>\n</head>\n<body>\n";
}

QByteArray title(Report const& report, Statistics const& statistics)
{
    int const passed = statistics.captures[Outcome::Passed];
    QString text = QStringLiteral("<h1>%1 of %2 captures passed</h1>\n<p class=\"soft\">")
                       .arg(passed)
                       .arg(statistics.captures.all());
    if (!report.runs.isEmpty()) {
        qint64 first = report.runs.first().started;
        qint64 last = first;
        for (ReportRun const& run : report.runs) {
            first = std::min(first, run.started);
            last = std::max(last, run.started);
        }
        text += QStringLiteral("Begun from %1 to %2. ").arg(timeText(first), timeText(last));
    }
    text += QStringLiteral("Made %1 by vek " VEK_VERSION ". Times are in UTC.</p>\n")
                .arg(timeText(QDateTime::currentMSecsSinceEpoch()));
    return text.toUtf8();
}

/// Within a script's element: its end, and that of comments, must not come up.
QByteArray dataJson(QJsonArray const& array)
{
    QByteArray text = QJsonDocument(array).toJson(QJsonDocument::Compact);
    return text.replace('<', "\\u003c").replace('>', "\\u003e").replace('&', "\\u0026");
}

QJsonArray texts(QVector<QByteArray> const& all)
{
    QJsonArray json;
    for (QByteArray const& text : all)
        json.append(printable(text));
    return json;
}

/// In the order that the script knows.
QJsonArray runData(ReportRun const& run)
{
    bool const isGood = run.outcome == Outcome::Passed;
    return {printable(run.label),
            int(run.outcome),
            run.configuration,
            run.board,
            double(run.started),
            run.duration,
            run.attempt,
            run.isLast ? 1 : 0,
            printable(run.message),
            isGood ? QString() : printable(run.path)}; // which nobody looks for
}

bool writeData(Report const& report, QIODevice& out)
{
    QJsonArray words;
    QJsonArray titles;
    for (OutcomeRow const& row : OutcomeTable) {
        words.append(QLatin1String(row.word));
        titles.append(QLatin1String(row.title));
    }
    QByteArray text =
        "<script id=\"runs\" type=\"application/json\">{\"outcomes\":" + dataJson(words) +
        ",\"titles\":" + dataJson(titles) +
        ",\"configurations\":" + dataJson(texts(report.configurationTitles())) +
        ",\"boards\":" + dataJson(texts(report.boards.texts())) + ",\"runs\":[";
    for (int i = 0; i < report.runs.size(); ++i) {
        text += (i > 0 ? ",\n" : "\n") + dataJson(runData(report.runs.at(i)));
        if (out.write(text) != text.size())
            return false;
        text.clear();
    }
    text += "]}</script>\n";
    return out.write(text) == text.size();
}

} // namespace

bool writeHtml(Report const& report, Statistics const& statistics,
               QVector<Difference> const& differences, QIODevice& out)
{
    QByteArray const style = resource("report.css");
    QByteArray const script = resource("report.js");
    QByteArray const filter = resource("report.html");
    auto const write = [&](QByteArray const& bytes) { return out.write(bytes) == bytes.size(); };
    return write(head(style, script) + title(report, statistics) + tiles(report, statistics) +
                 failingBoards(report, statistics) + losses(report) + timeChart(statistics) +
                 filter) &&
           write(differenceHead(statistics, differences.size())) &&
           std::all_of(
               differences.begin(), differences.end(),
               [&](Difference const& difference) { return write(article(report, difference)); }) &&
           write(groups(report, statistics)) && writeData(report, out) &&
           write("<script>" + script + "</script>\n</body>\n</html>\n");
}

} // namespace VEK::Cli
