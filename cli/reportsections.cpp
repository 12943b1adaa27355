#include "cli/reportsections.h"

#include "cli/reporttext.h"

#include <QUrl>

#include <algorithm>

namespace VEK::Cli {
namespace {

constexpr int LongestList = 100;
constexpr int MostOpen = 12; // of a list that is not folded
constexpr int MostColumns = 120;
constexpr int ChartWidth = 960;
constexpr int ChartHeight = 120;

QString escaped(QByteArray const& utf8)
{
    return printable(utf8).toHtmlEscaped();
}

QString escaped(QString const& text)
{
    return escaped(text.toUtf8());
}

/// A link that filters; the word of the outcome or the text of the board as in the page's data.
QString filterLink(char const* key, QString const& value, QString const& content, bool isForAll)
{
    return QStringLiteral("<a href=\"#%1=%2%3\">%4</a>")
        .arg(QLatin1String(key), QString::fromLatin1(QUrl::toPercentEncoding(value)),
             isForAll ? QStringLiteral("&amp;all=1") : QString(), content);
}

QString heading(char const* text)
{
    return QStringLiteral("<h2>%1</h2>\n").arg(QLatin1String(text));
}

/// A list with a heading, which folds; `line` gives that of a place, escaped.
template <typename Line>
QByteArray list(char const* title, int count, Line const& line)
{
    if (count == 0)
        return {};
    QString html = QStringLiteral("<details%1><summary><h2>%2</h2> %3</summary>\n<ul>\n")
                       .arg(count <= MostOpen ? QStringLiteral(" open") : QString(),
                            QLatin1String(title), QString::number(count));
    for (int i = 0; i < std::min(count, LongestList); ++i)
        html += QStringLiteral("<li>") + line(i) + QStringLiteral("</li>\n");
    html += QStringLiteral("</ul>\n");
    if (count > LongestList)
        html += QStringLiteral("<p class=\"soft\">and %1 more</p>\n").arg(count - LongestList);
    return (html + QStringLiteral("</details>\n")).toUtf8();
}

QByteArray groupTable(char const* title, char const* key, QVector<QByteArray> const& titles,
                      QVector<Tally> const& tallies)
{
    QVector<int> const order = worstFirst(tallies);
    if (order.isEmpty())
        return {};
    bool const isForAll = qstrcmp(key, "board") == 0;
    QString html = heading(title) + QStringLiteral("<div class=\"scroll\"><table>\n<tr><th>%1</th>"
                                                   "<th class=\"number\">runs</th>")
                                        .arg(QLatin1String(key));
    for (OutcomeRow const& row : OutcomeTable)
        html += QStringLiteral("<th class=\"number\">%1</th>").arg(QLatin1String(row.title));
    html += QStringLiteral("</tr>\n");
    for (int const at : order.mid(0, LongestList)) {
        html +=
            QStringLiteral("<tr><td>%1</td><td class=\"number\">%2</td>")
                .arg(filterLink(key, printable(titles.at(at)), escaped(titles.at(at)), isForAll),
                     QString::number(tallies.at(at).all()));
        for (int const count : tallies.at(at).counts)
            html += QStringLiteral("<td class=\"number\">%1</td>")
                        .arg(count > 0 ? QString::number(count) : QString());
        html += QStringLiteral("</tr>\n");
    }
    html += QStringLiteral("</table></div>\n");
    if (order.size() > LongestList)
        html +=
            QStringLiteral("<p class=\"soft\">and %1 more</p>\n").arg(order.size() - LongestList);
    return html.toUtf8();
}

QString valueTable(Difference const& difference)
{
    QString html = QStringLiteral("<div class=\"scroll\"><table class=\"values\">\n<tr>"
                                  "<th>sample</th><th></th>");
    int const count = difference.rows.first().golden.size();
    for (int i = 0; i < count; ++i)
        html += QStringLiteral("<th class=\"number\">%1</th>").arg(difference.from + i);
    html += QStringLiteral("</tr>\n");
    for (Difference::Row const& row : difference.rows) {
        for (bool const isGolden : {true, false}) {
            html += QStringLiteral("<tr><td>%1</td><td>%2</td>")
                        .arg(isGolden ? escaped(row.name) : QString(),
                             isGolden ? QStringLiteral("golden") : QStringLiteral("new"));
            QStringList const& values = isGolden ? row.golden : row.made;
            for (int i = 0; i < values.size(); ++i) {
                bool const isOther = !isGolden && values.at(i) != row.golden.value(i);
                html +=
                    QStringLiteral("<td class=\"number%1\">%2</td>")
                        .arg(isOther ? QStringLiteral(" other") : QString(), escaped(values.at(i)));
            }
            html += QStringLiteral("</tr>\n");
        }
    }
    return html + QStringLiteral("</table></div>\n");
}

} // namespace

QByteArray tiles(Report const& report, Statistics const& statistics)
{
    QString html = QStringLiteral("<ul class=\"tiles\">\n");
    for (std::size_t i = 0; i < OutcomeTable.size(); ++i) {
        QString const word = QLatin1String(OutcomeTable[i].word);
        int const count = statistics.captures.counts[i];
        if (count > 0 || Outcome(i) == Outcome::Passed)
            html += QStringLiteral("<li class=\"%1\">%2</li>\n")
                        .arg(word, filterLink("outcome", word,
                                              QStringLiteral("<b>%1</b>%2")
                                                  .arg(count)
                                                  .arg(QLatin1String(OutcomeTable[i].title)),
                                              false));
    }
    auto const add = [&](char const* title, int count) {
        if (count > 0)
            html += QStringLiteral("<li><b>%1</b>%2</li>\n").arg(count).arg(QLatin1String(title));
    };
    add("missing", report.missing.size());
    add("broken manifests", report.broken.size());
    add("earlier attempts", statistics.earlier);
    add("passed without a golden capture", statistics.notCompared);
    add("labels not expected", report.unexpected);
    return (html + QStringLiteral("</ul>\n")).toUtf8();
}

QByteArray failingBoards(Report const& report, Statistics const& statistics)
{
    return list("Boards that fail more than others", statistics.failing.size(), [&](int i) {
        FailingBoard const& board = statistics.failing.at(i);
        QString const title = printable(report.boards.at(board.board));
        return filterLink("board", title, escaped(sentence(board, title)), true);
    });
}

QByteArray timeChart(Statistics const& statistics)
{
    if (statistics.time.size() < 2)
        return {};
    QVector<TimeRow> const rows =
        statistics.time.mid(std::max(0, statistics.time.size() - MostColumns));
    int most = 0;
    for (TimeRow const& row : rows)
        most = std::max(most, row.tally.all());
    int const step = std::min(ChartWidth / rows.size(), 40);
    QString html = heading(statistics.isByDay ? "Attempts by day" : "Attempts by hour") +
                   QStringLiteral("<svg class=\"chart\" viewBox=\"0 0 %1 %2\" width=\"%1\">\n")
                       .arg(ChartWidth)
                       .arg(ChartHeight + 20);
    for (int i = 0; i < rows.size(); ++i) {
        Tally const& tally = rows.at(i).tally;
        html += QStringLiteral("<g><title>%1: %2 of %3 passed</title>")
                    .arg(rowText(rows.at(i).from, statistics.isByDay))
                    .arg(tally[Outcome::Passed])
                    .arg(tally.all());
        double bottom = ChartHeight;
        for (std::size_t k = 0; k < OutcomeTable.size(); ++k) {
            double const height = double(ChartHeight) * tally.counts[k] / most;
            bottom -= height;
            if (tally.counts[k] > 0)
                html += QStringLiteral("<rect class=\"%1\" x=\"%2\" y=\"%3\" width=\"%4\" "
                                       "height=\"%5\"/>")
                            .arg(QLatin1String(OutcomeTable[k].word))
                            .arg(i * step)
                            .arg(bottom, 0, 'f', 2)
                            .arg(std::max(1, step - 2))
                            .arg(height, 0, 'f', 2);
        }
        html += QStringLiteral("</g>\n");
    }
    html += QStringLiteral("<text x=\"0\" y=\"%1\">%2 to %3; the highest is %4</text>\n</svg>\n")
                .arg(ChartHeight + 15)
                .arg(rowText(rows.first().from, statistics.isByDay),
                     rowText(rows.last().from, statistics.isByDay))
                .arg(most);
    return html.toUtf8();
}

QByteArray differenceHead(Statistics const& statistics, int shown)
{
    if (shown == 0)
        return {};
    return (heading("Differences") +
            QStringLiteral(
                "<p class=\"soft\">%1 of %2 captures that differ; samples count from the "
                "trigger.</p>\n")
                .arg(shown == 1 ? QStringLiteral("One difference")
                                : QStringLiteral("%1 differences").arg(shown))
                .arg(statistics.captures[Outcome::Differed]))
        .toUtf8();
}

QByteArray article(Report const& report, Difference const& difference)
{
    ReportRun const& run = report.runs.at(difference.run);
    QString const label = escaped(run.label);
    QByteArray html = QStringLiteral("<article data-run=\"%1\">\n<h3>%2</h3>\n<p>")
                          .arg(difference.run)
                          .arg(difference.window.isEmpty()
                                   ? label
                                   : label + QStringLiteral(", ") + escaped(difference.window))
                          .toUtf8();
    for (QString const& sentence : difference.sentences)
        html += escaped(sentence).toUtf8() + "<br>\n";
    html += "<span class=\"soft\">" + escaped(report.boards.at(run.board)).toUtf8() + ", " +
            timeText(run.started).toUtf8() + ", " + escaped(run.path).toUtf8() + "</span></p>\n";
    // as an image: what it may hold can't act, and several don't share names
    if (!difference.picture.isEmpty())
        html += "<img alt=\"Waves around sample " + QByteArray::number(difference.sample) +
                "\" src=\"data:image/svg+xml;base64," + difference.picture.toBase64() + "\">\n";
    if (!difference.rows.isEmpty())
        html += valueTable(difference).toUtf8();
    return html + "</article>\n";
}

QByteArray groups(Report const& report, Statistics const& statistics)
{
    QVector<QByteArray> const configurations = report.configurationTitles();
    QVector<int> const again = retried(report);
    auto const label = [&](int at) { return escaped(report.runs.at(at).label); };
    return groupTable("By configuration", "configuration", configurations,
                      statistics.configurations) +
           groupTable("By board, attempts", "board", report.boards.texts(), statistics.boards) +
           list("Configurations that come out differently", statistics.flaky.size(),
                [&](int i) {
                    int const at = statistics.flaky.at(i);
                    return escaped(configurations.at(at)) + QStringLiteral(": ") +
                           flakyText(statistics.attempts.at(at));
                }) +
           list("Several attempts", again.size(),
                [&](int i) {
                    return label(again.at(i)) + QStringLiteral(": ") +
                           attemptsText(report, again.at(i));
                }) +
           list("Slowest", statistics.slowest.size(), [&](int i) {
               int const at = statistics.slowest.at(i);
               return secondsText(report.runs.at(at).duration) + QStringLiteral(" ") + label(at);
           });
}

QByteArray losses(Report const& report)
{
    return list("Missing", report.missing.size(),
                [&](int i) { return escaped(report.missing.at(i)); }) +
           list("Broken manifests", report.broken.size(), [&](int i) {
               return escaped(report.broken.at(i).path) + QStringLiteral(": ") +
                      escaped(report.broken.at(i).reason);
           });
}

} // namespace VEK::Cli
