#include "cli/reporttext.h"

#include <algorithm>

namespace VEK::Cli {
namespace {

constexpr int LongestList = 20;
constexpr int LongestTitle = 60;

QString titleOf(QByteArray const& utf8)
{
    QString const text = printable(utf8);
    return text.size() <= LongestTitle
               ? text
               : QStringLiteral("…") + text.right(LongestTitle - 1); // ends tell more than folders
}

/// The first column to the left, the others to the right.
QStringList aligned(QList<QStringList> const& rows)
{
    QVector<int> widths;
    for (QStringList const& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (int i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths.at(i), row.at(i).size());
    }
    QStringList lines;
    for (QStringList const& row : rows) {
        QString line = QStringLiteral("  ") + row.first().leftJustified(widths.first());
        for (int i = 1; i < row.size(); ++i)
            line += QStringLiteral("  ") + row.at(i).rightJustified(widths.at(i));
        lines << line;
    }
    return lines;
}

/// A list with a head, or nothing when it is empty; `line` gives that of a place.
template <typename Line>
QStringList section(QString const& head, int count, Line const& line)
{
    QStringList lines;
    if (count == 0)
        return lines;
    lines << QString() << head;
    for (int i = 0; i < std::min(count, LongestList); ++i)
        lines << QStringLiteral("  ") + line(i);
    if (count > LongestList)
        lines << QStringLiteral("  and %1 more").arg(count - LongestList);
    return lines;
}

/// Outcomes that no run has don't get a column.
QVector<Outcome> columnsOf(QVector<Tally> const& tallies)
{
    QVector<Outcome> columns;
    for (std::size_t i = 0; i < OutcomeTable.size(); ++i) {
        auto const outcome = Outcome(i);
        bool const isUsed = std::any_of(tallies.begin(), tallies.end(),
                                        [&](Tally const& tally) { return tally[outcome] > 0; });
        if (isUsed || outcome == Outcome::Passed)
            columns << outcome;
    }
    return columns;
}

QStringList tallyTable(QString const& head, QStringList const& titles,
                       QVector<Tally> const& tallies)
{
    if (tallies.isEmpty())
        return {};
    QVector<Outcome> const columns = columnsOf(tallies);
    QList<QStringList> rows{{head, QStringLiteral("runs")}};
    for (Outcome const outcome : columns)
        rows.first() << QLatin1String(rowOf(outcome).title);
    for (int i = 0; i < std::min(tallies.size(), LongestList); ++i) {
        rows << QStringList{titles.at(i), QString::number(tallies.at(i).all())};
        for (Outcome const outcome : columns)
            rows.last() << QString::number(tallies.at(i)[outcome]);
    }
    QStringList lines = aligned(rows);
    lines.first() = lines.first().mid(2); // heads stand out
    lines.first().insert(head.size(), QStringLiteral("  "));
    lines.prepend(QString());
    if (tallies.size() > LongestList)
        lines << QStringLiteral("  and %1 more").arg(tallies.size() - LongestList);
    return lines;
}

QStringList groupTable(QString const& head, QVector<QByteArray> const& titles,
                       QVector<Tally> const& tallies)
{
    QStringList ordered;
    QVector<Tally> rows;
    for (int const at : worstFirst(tallies)) {
        ordered << titleOf(titles.at(at));
        rows << tallies.at(at);
    }
    return tallyTable(head, ordered, rows);
}

QStringList timeTable(Statistics const& statistics)
{
    QStringList titles;
    QVector<Tally> rows;
    int const first = std::max(0, statistics.time.size() - LongestList); // the last are of interest
    for (TimeRow const& row : statistics.time.mid(first)) {
        titles << rowText(row.from, statistics.isByDay);
        rows << row.tally;
    }
    QString const head = statistics.isByDay ? QStringLiteral("by day, attempts, UTC")
                                            : QStringLiteral("by hour, attempts, UTC");
    return tallyTable(head, titles, rows);
}

QStringList summary(Report const& report, Statistics const& statistics)
{
    QList<QStringList> rows{
        {QStringLiteral("captures"), QString::number(statistics.captures.all())}};
    for (std::size_t i = 0; i < OutcomeTable.size(); ++i) {
        int const count = statistics.captures.counts[i];
        if (count > 0 || Outcome(i) == Outcome::Passed)
            rows << QStringList{QLatin1String("  ") + QLatin1String(OutcomeTable[i].title),
                                QString::number(count)};
    }
    auto const add = [&](char const* title, int count) {
        if (count > 0)
            rows << QStringList{QLatin1String(title), QString::number(count)};
    };
    add("missing", report.missing.size());
    add("broken manifests", report.broken.size());
    add("earlier attempts", statistics.earlier);
    add("passed without a golden capture", statistics.notCompared);
    add("labels that were not expected", report.unexpected);
    add("copies of manifests, left out", report.copies);
    add("other documents, left out", report.others);
    QStringList lines = aligned(rows);
    for (QString& line : lines)
        line = line.mid(2);
    return lines;
}

QVector<int> notPassed(Report const& report)
{
    QVector<int> places;
    for (int i = 0; i < report.runs.size(); ++i) {
        ReportRun const& run = report.runs.at(i);
        if (run.isLast && run.outcome != Outcome::Passed)
            places << i;
    }
    return places;
}

} // namespace

QStringList tableOf(Report const& report, Statistics const& statistics)
{
    QVector<QByteArray> const configurations = report.configurationTitles();
    QVector<int> const bad = notPassed(report);
    QVector<int> const again = retried(report);
    auto const label = [&](int at) { return titleOf(report.runs.at(at).label); };
    QStringList lines = summary(report, statistics);
    lines += section(QStringLiteral("not passed"), bad.size(), [&](int i) {
        ReportRun const& run = report.runs.at(bad.at(i));
        return QStringLiteral("%1: %2: %3")
            .arg(label(bad.at(i)), QLatin1String(rowOf(run.outcome).title), printable(run.message));
    });
    lines += section(QStringLiteral("missing"), report.missing.size(),
                     [&](int i) { return titleOf(report.missing.at(i)); });
    lines += section(QStringLiteral("broken manifests"), report.broken.size(), [&](int i) {
        return QStringLiteral("%1: %2").arg(printable(report.broken.at(i).path),
                                            printable(report.broken.at(i).reason));
    });
    lines += section(QStringLiteral("several attempts"), again.size(), [&](int i) {
        return label(again.at(i)) + QStringLiteral(": ") + attemptsText(report, again.at(i));
    });
    lines +=
        groupTable(QStringLiteral("by configuration"), configurations, statistics.configurations);
    lines +=
        groupTable(QStringLiteral("by board, attempts"), report.boards.texts(), statistics.boards);
    lines += timeTable(statistics);
    lines += section(QStringLiteral("boards that fail more than others"), statistics.failing.size(),
                     [&](int i) {
                         FailingBoard const& board = statistics.failing.at(i);
                         return sentence(board, titleOf(report.boards.at(board.board)));
                     });
    lines += section(QStringLiteral("configurations that come out differently"),
                     statistics.flaky.size(), [&](int i) {
                         int const at = statistics.flaky.at(i);
                         return titleOf(configurations.at(at)) + QStringLiteral(": ") +
                                flakyText(statistics.attempts.at(at));
                     });
    lines += section(QStringLiteral("slowest"), statistics.slowest.size(), [&](int i) {
        int const at = statistics.slowest.at(i);
        return secondsText(report.runs.at(at).duration) + QStringLiteral("  ") + label(at);
    });
    return lines;
}

} // namespace VEK::Cli
