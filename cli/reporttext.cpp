#include "cli/reporttext.h"

#include <QDateTime>

#include <algorithm>
#include <numeric>

namespace VEK::Cli {
namespace {

QString formatted(qint64 ms, char const* format)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(QLatin1String(format));
}

double badShare(Tally const& tally)
{
    int const all = tally.all();
    return all == 0 ? 0 : double(all - tally[Outcome::Passed]) / all;
}

} // namespace

QString timeText(qint64 ms)
{
    return formatted(ms, "yyyy-MM-dd HH:mm:ss");
}

QString rowText(qint64 ms, bool isByDay)
{
    return formatted(ms, isByDay ? "yyyy-MM-dd" : "yyyy-MM-dd HH:mm");
}

QString secondsText(qint32 ms)
{
    return ms == ReportRun::Unknown ? QString()
                                    : QString::number(ms / 1000.0, 'f', 3) + QStringLiteral(" s");
}

QVector<int> worstFirst(QVector<Tally> const& tallies)
{
    QVector<int> order(tallies.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int one, int other) {
        return badShare(tallies.at(one)) > badShare(tallies.at(other));
    });
    order.erase(std::remove_if(order.begin(), order.end(),
                               [&](int at) { return tallies.at(at).all() == 0; }),
                order.end());
    return order;
}

QString sentence(FailingBoard const& board, QString const& title)
{
    QString const head =
        QStringLiteral("%1: %2 of %3 runs failed")
            .arg(title, QString::number(board.failed), QString::number(board.runs));
    QString const others =
        board.otherRuns > 0
            ? QStringLiteral(", %1 of %2 elsewhere").arg(board.otherFailed).arg(board.otherRuns)
            : QString();
    return head + others + (board.isDead ? QStringLiteral("; none got through to it") : QString());
}

QString flakyText(Tally const& attempts)
{
    QStringList parts;
    for (Outcome const outcome : {Outcome::Passed, Outcome::Differed, Outcome::NoTrigger}) {
        if (attempts[outcome] > 0)
            parts << QStringLiteral("%1 %2")
                         .arg(attempts[outcome])
                         .arg(QLatin1String(rowOf(outcome).title));
    }
    return parts.join(QStringLiteral(", "));
}

QString attemptsText(Report const& report, int last)
{
    ReportRun const& run = report.runs.at(last);
    QStringList earlier;
    for (int i = last - 1; i >= 0 && report.runs.at(i).label == run.label; --i)
        earlier.prepend(QLatin1String(rowOf(report.runs.at(i).outcome).title));
    return QStringLiteral("%1, then %2")
        .arg(earlier.join(QStringLiteral(", ")), QLatin1String(rowOf(run.outcome).title));
}

QVector<int> retried(Report const& report)
{
    QVector<int> places;
    for (int i = 1; i < report.runs.size(); ++i) {
        if (report.runs.at(i).isLast && !report.runs.at(i - 1).isLast)
            places << i;
    }
    return places;
}

} // namespace VEK::Cli
