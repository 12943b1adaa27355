#include "desk.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

Outcome captured(QVector<ExpectedWindow> const& captures, QString const& prefix)
{
    Outcome outcome{0, "Start running VEK analyzer.\n", {}};
    for (ExpectedWindow const& capture : captures) {
        QString const name =
            prefix + QString("_core%1_window%2.csv").arg(capture.core).arg(capture.window);
        outcome.files[name] = capture.csv;
        outcome.out += "Export " + name.toUtf8() + '\n';
    }
    outcome.out += "Running VEK analyzer complete.\n";
    return outcome;
}

namespace {

/// The first line in which two texts differ.
QString difference(QString const& what, QByteArray const& actual, QByteArray const& expected)
{
    QList<QByteArray> const got = actual.split('\n');
    QList<QByteArray> const want = expected.split('\n');
    for (int line = 0; line < qMax(got.size(), want.size()); ++line)
        if (got.value(line, "end") != want.value(line, "end"))
            return what + ", line " + QString::number(line + 1) + ": " + got.value(line, "end") +
                   " instead of " + want.value(line, "end") + '\n';
    return QString();
}

} // namespace

Desk::Desk()
{
    for (char const* folder : {"Analyzer/bin", "Programmer/bin", "run", "tmp"})
        QDir(m_folder.path()).mkpath(folder);
    for (QString const name : {"Analyzer/bin/veksh", "Analyzer/bin/vek",
                               "Programmer/bin/scanbridge", "Programmer/bin/scanbridge_lpt"}) {
        // A link where the file system allows it: the program under a sanitizer is large. Never a
        // symbolic one, since a program finds its siblings from where it really lies.
        QString const built = VEK_BUILD_ROOT "/" + name;
        if (::link(QFile::encodeName(built), QFile::encodeName(program(name))) != 0)
            QFile::copy(built, program(name));
    }
}

QMap<QString, QByteArray> Desk::results() const
{
    QMap<QString, QByteArray> results;
    QDir const folder(m_folder.path("run"));
    for (QString const& name : folder.entryList({"*.csv"}, QDir::Files | QDir::NoSymLinks)) {
        results[name] = TempFolder::content(folder.filePath(name));
    }
    return results;
}

void Desk::lay(QByteArray const& vek, Waves const& waves, QByteArray const& more,
               QByteArray const& device)
{
    bench = m_folder.path("run/bench.json");
    write("setup.vek", vek);
    write("stimulus.vcd", Stimulus::toVcd(waves));
    write("bench.json", R"({"design": "setup.vek", "stimulus": {"vcd": "stimulus.vcd"},
        "cables": [{"kind": "FT2CH", "location": 7}, {"kind": "LPT"}], "device": ")" +
                            device + '"' + more + "}");
}

void Desk::start(QProcess& process, QStringList const& arguments, QString const& name) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", m_folder.path("tmp"));
    environment.insert("VEK_BENCH", bench);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_folder.path("run"));
    process.start(program(name), arguments);
}

QString Desk::problem(QStringList const& arguments, Outcome const& expected) const
{
    QProcess process;
    start(process, arguments);
    return problem(process, expected);
}

QString Desk::problem(QProcess& process, Outcome const& expected) const
{
    if (!process.waitForFinished(30000))
        return "did not end; printed " + QString(process.readAllStandardOutput());
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != expected.status)
        return QString("status %1").arg(process.exitCode());
    QString const left = processes().join(", ");
    if (!left.isEmpty())
        return "still running: " + left;
    QString text = difference("standard error", process.readAllStandardError(), QByteArray()) +
                   difference("standard output", process.readAllStandardOutput(), expected.out);
    auto const files = results();
    for (QString const& name : files.keys() + expected.files.keys())
        text += difference(name, files[name], expected.files[name]);
    return text;
}

QString Desk::problemOfVek(QStringList const& options) const
{
    auto const expected = results();
    QProcess process;
    start(process, QStringList{"run", "setup.vek", "-o", "../vek"} + options, "Analyzer/bin/vek");
    if (!process.waitForFinished(30000) || process.exitCode() != 0)
        return "vek: " + process.readAllStandardError();
    QString const written = process.readAllStandardOutput();
    QString text;
    for (QString const& path : written.split('\n', Qt::SkipEmptyParts)) {
        QString const suffix = path.mid(QString("../vek").size());
        bool const isOnly = expected.size() == 1 && !expected.contains("setup" + suffix);
        text += difference(path, TempFolder::content(m_folder.path("run/" + path)),
                           isOnly ? expected.first() : expected["setup" + suffix]);
    }
    return written.count('\n') == expected.size() ? text : "vek wrote " + written;
}

QStringList Desk::processes() const
{
    QStringList result;
    for (QString const& id : QDir("/proc").entryList(QDir::Dirs)) {
        QString const running = QFile::symLinkTarget("/proc/" + id + "/exe");
        if (running.startsWith(m_folder.path() + '/'))
            result += id + ' ' + running;
    }
    return result;
}
