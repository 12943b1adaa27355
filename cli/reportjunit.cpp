#include "cli/reporttext.h"

#include <QDateTime>
#include <QIODevice>
#include <QXmlStreamWriter>

namespace VEK::Cli {
namespace {

QString const Testcase = QStringLiteral("testcase");
QString const Name = QStringLiteral("name");
QString const Message = QStringLiteral("message");

void beginSuite(QXmlStreamWriter& xml, QString const& name, int tests, int failures, int errors)
{
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(Name, name);
    xml.writeAttribute(QStringLiteral("tests"), QString::number(tests));
    xml.writeAttribute(QStringLiteral("failures"), QString::number(failures));
    xml.writeAttribute(QStringLiteral("errors"), QString::number(errors));
}

void writeCase(QXmlStreamWriter& xml, QString const& suite, ReportRun const& run)
{
    xml.writeStartElement(Testcase);
    xml.writeAttribute(QStringLiteral("classname"), suite);
    xml.writeAttribute(Name, printable(run.label));
    if (run.duration != ReportRun::Unknown)
        xml.writeAttribute(QStringLiteral("time"), QString::number(run.duration / 1000.0, 'f', 3));
    if (run.outcome != Outcome::Passed) {
        bool const isFailure =
            run.outcome == Outcome::Differed || run.outcome == Outcome::NoTrigger;
        xml.writeStartElement(isFailure ? QStringLiteral("failure") : QStringLiteral("error"));
        xml.writeAttribute(QStringLiteral("type"), QLatin1String(rowOf(run.outcome).word));
        xml.writeAttribute(Message, printable(run.message));
        xml.writeCharacters(printable(run.path));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

/// What has no run that could be told of.
void writeLosses(QXmlStreamWriter& xml, Report const& report)
{
    auto const write = [&](char const* suite, QByteArray const& name, QByteArray const& message) {
        xml.writeStartElement(Testcase);
        xml.writeAttribute(QStringLiteral("classname"), QLatin1String(suite));
        xml.writeAttribute(Name, printable(name));
        xml.writeEmptyElement(QStringLiteral("error"));
        xml.writeAttribute(QStringLiteral("type"), QLatin1String(suite));
        xml.writeAttribute(Message, printable(message));
        xml.writeEndElement();
    };
    auto const begin = [&](char const* suite, int count) {
        beginSuite(xml, QLatin1String(suite), count, 0, count);
    };
    if (!report.missing.isEmpty()) {
        begin("missing", report.missing.size());
        for (QByteArray const& label : report.missing)
            write("missing", label, "expected, and there is no run");
        xml.writeEndElement();
    }
    if (!report.broken.isEmpty()) {
        begin("broken", report.broken.size());
        for (BrokenManifest const& broken : report.broken)
            write("broken", broken.path, broken.reason);
        xml.writeEndElement();
    }
}

} // namespace

bool writeJUnit(Report const& report, Statistics const& statistics, QIODevice& out)
{
    QVector<QByteArray> const titles = report.configurationTitles();
    QVector<QVector<int>> captures(titles.size());
    for (int i = 0; i < report.runs.size(); ++i) {
        if (report.runs.at(i).isLast)
            captures[report.runs.at(i).configuration] << i;
    }
    QXmlStreamWriter xml(&out);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuites"));
    for (int i = 0; i < titles.size(); ++i) {
        if (captures.at(i).isEmpty())
            continue;
        Tally const& tally = statistics.configurations.at(i);
        int const failures = tally[Outcome::Differed] + tally[Outcome::NoTrigger];
        QString const suite = printable(titles.at(i));
        beginSuite(xml, suite, tally.all(), failures,
                   tally.all() - failures - tally[Outcome::Passed]);
        for (int const at : qAsConst(captures).at(i))
            writeCase(xml, suite, report.runs.at(at));
        xml.writeEndElement();
    }
    writeLosses(xml, report);
    xml.writeEndDocument();
    return !xml.hasError();
}

} // namespace VEK::Cli
