#include "desk.h"
#include "setup.h"

#include <QFile>
#include <QtTest>

#include <functional>
#include <memory>
#include <vector>

#include <sys/stat.h>

namespace {

constexpr int IdleTicks = 5; // of 10 ms in its second half; one that spins has its share of them

QByteArray const Started = "Start running VEK analyzer.\n";
QByteArray const StartedLite = "Start running VEK Lite analyzer.\n";

/// User and system time of a process, in ticks.
int cpuTime(QProcess const& process)
{
    QFile stat(QString("/proc/%1/stat").arg(process.processId()));
    stat.open(QIODevice::ReadOnly);
    QByteArrayList const fields = stat.readAll().split(' ');
    return fields.value(13).toInt() + fields.value(14).toInt();
}

/// A run of the batch tool on a desk of its own.
struct Run
{
    /// Waits until it has printed as much as is expected of it.
    bool hasPrinted()
    {
        return QTest::qWaitFor([this] { return tool.bytesAvailable() >= expected.out.size(); },
                               20000);
    }

    /// What is wrong with a run that should wait, idle, and end at once when it is told to.
    QString problem()
    {
        if (tool.waitForFinished(0) || tool.state() == QProcess::NotRunning)
            return "ended, printed " + tool.readAll();
        if (cpuTime(tool) - cpuBefore > IdleTicks)
            return QString("used %1 ticks").arg(cpuTime(tool) - cpuBefore);
        tool.terminate();
        if (!tool.waitForFinished(1000))
            return "goes on after the signal to end";
        if (!QTest::qWaitFor([this] { return desk.processes().isEmpty(); }))
            return "left " + desk.processes().join(", ");
        QByteArray const out = tool.readAllStandardOutput() + tool.readAllStandardError();
        if (out != expected.out)
            return "printed " + out;
        return desk.results() == expected.files ? QString() : "result files differ";
    }

    QString name;
    Desk desk;
    QProcess tool;
    Outcome expected;
    int cpuBefore = 0;
};

/// Runs that go on side by side.
class Runs
{
public:
    /// A new one, on a desk with this setup.
    Run& add(QString const& name, QByteArray const& vek, QString const& fault = QString())
    {
        m_runs.push_back(std::make_unique<Run>());
        Run& run = last();
        run.name = name;
        QString const faults = fault.isEmpty() ? "" : ", \"faults\": {" + fault + "}";
        run.desk.lay(vek, Stimulus::counter("count", 10, 1024), faults.toLatin1());
        return run;
    }

    Run& last() { return *m_runs.back(); }
    void start(QString const& file = "setup.vek")
    {
        last().desk.start(last().tool, {"-vek", file});
    }

    /// What is wrong with runs that should all wait.
    QString problems()
    {
        for (auto const& run : m_runs)
            if (!run->hasPrinted())
                return run->name + ": printed " + run->tool.readAll();
        // They are watched for as long as two captures take, which is four ticks of the poll.
        Run capture;
        Setup::Core core;
        core.entries = Setup::entry("count", 10);
        core.expressions.clear(); // fires at once
        capture.desk.lay(Setup::vek({core}), Stimulus::counter("count", 10, 1024));
        for (int half = 0; half < 2; ++half) {
            for (auto const& run : m_runs)
                run->cpuBefore = cpuTime(run->tool);
            capture.desk.start(capture.tool, {"-vek", "setup.vek"});
            capture.tool.waitForFinished();
        }
        if (capture.desk.results().size() != 1)
            return "the capture beside them failed";
        QString all;
        for (auto const& run : m_runs)
            if (QString const one = run->problem(); !one.isEmpty())
                all += run->name + ": " + one + '\n';
        return all;
    }

private:
    std::vector<std::unique_ptr<Run>> m_runs;
};

} // namespace

/// Servers that break at each step of a run, and files that leave nothing to do. Such a run waits
/// for ever, which is what it is meant to do; it must do so quietly.
class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_vek[false] = Setup::twoCores();
        m_vek[true] = Setup::lite(200, 0, false, Setup::entry("count", 10));
        for (bool lite : {false, true}) {
            Runs runs;
            Run& run = runs.add("undisturbed", m_vek[lite]);
            runs.start();
            QVERIFY(run.tool.waitForFinished());
            m_whole[lite] = {0, run.tool.readAllStandardOutput(), run.desk.results()};
            QCOMPARE(m_whole[lite].files.size(), lite ? 1 : 3);
        }
    }

    void breaksAt_data()
    {
        QTest::addColumn<bool>("lite");
        QTest::addColumn<QString>("request");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("files"); ///< Exported before.
        auto const row = [](bool lite, char const* request, int count, int files) {
            QTest::addRow("%s %s %d", lite ? "lite" : "standard", request, count)
                << lite << request << count << files;
        };
        row(false, "OPEN", 1, 0);
        row(false, "WRITE_REGISTOR", 3, 0);
        row(false, "READ_START_REG", 1, 0);
        row(false, "READ_RAM", 1, 0);
        row(false, "READ_RAM", 3, 1);
        row(false, "READ_START_REG", 2, 2);
        row(false, "READ_RAM", 5, 2);
        row(true, "OPEN", 1, 0);
        row(true, "OP_READ_CAPTURE_INIT", 1, 0);
        row(true, "READ_RAM", 1, 0);
    }

    /// The server breaks in every way at this request, each way on a desk of its own.
    void breaksAt()
    {
        QFETCH(bool, lite);
        QFETCH(QString, request);
        QFETCH(int, count);
        QFETCH(int, files);
        Outcome expected;
        for (QByteArray const& line : m_whole[lite].out.split('\n').mid(0, 1 + files)) {
            expected.out += line + '\n';
            QString const name = line.mid(qstrlen("Export "));
            if (line.startsWith("Export "))
                expected.files[name] = m_whole[lite].files[name];
        }
        Runs runs;
        for (QString const& way : Ways) {
            Run& run = runs.add(way, m_vek[lite], fault(way, request, count));
            run.expected = expected;
            runs.start();
        }
        QCOMPARE(runs.problems(), QString());
    }

    /// A run that closes the device is over, whatever becomes of that request.
    void breaksAtTheEnd()
    {
        for (bool lite : {false, true}) {
            for (QString const& way : Ways) {
                Runs runs;
                Run& run = runs.add(way, m_vek[lite], fault(way, "CLOSE", 1));
                runs.start();
                QCOMPARE(run.desk.problem(run.tool, m_whole[lite]), QString());
            }
        }
    }

    /// A second run on the machine keeps off the server of the first. When that is ended the next
    /// run comes upon its socket file, and perhaps upon the server that is about to end.
    void twoRuns()
    {
        Runs runs;
        Run& first = runs.add("first", m_vek[false], R"("of": "READ_RAM", "silent_from": 1)");
        first.expected.out = Started;
        runs.start();
        QVERIFY(first.hasPrinted());
        QStringList const arguments{"-vek", "setup.vek", "-out", "second"};
        QProcess second;
        first.desk.start(second, arguments);
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.readAllStandardOutput(),
                 QByteArray("Error: Can not connect to JTAG server.\n"));
        QCOMPARE(second.exitCode(), 2);
        first.desk.write("bench.json", R"({"design": "setup.vek", "device": "TK-501",
                                           "stimulus": {"vcd": "stimulus.vcd"}})");
        first.tool.terminate();
        QVERIFY(first.tool.waitForFinished());
        QCOMPARE(first.desk.problem({"-vek", "setup.vek"}, m_whole[false]), QString());
        QCOMPARE(QDir(first.desk.program("tmp"))
                     .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                 QStringList{"vek1"});
    }

    /// A run that is killed at any of its steps takes its server along, while that starts, waits
    /// for a dump that never comes or serves. The next run comes upon nothing of it.
    void killedRuns()
    {
        Runs runs;
        Desk& desk = runs.add("killed", m_vek[false]).desk;
        QString const sound = desk.bench, endless = desk.program("run/pipe.json");
        desk.write("pipe.json", R"({"design": "setup.vek", "device": "TK-501",
                                    "stimulus": {"vcd": "pipe.vcd"}})");
        QCOMPARE(::mkfifo(qPrintable(desk.program("run/pipe.vcd")), 0600), 0);
        QStringList const arguments{"-vek", "setup.vek"};
        auto const forks = [&](QProcess&) { return desk.processes().size() > 1; };
        auto const serves = [&](QProcess&) { return desk.processes().join(' ').contains("scanb"); };
        auto const listens = [&](QProcess&) { return QFile::exists(desk.program("tmp/vek1")); };
        auto const prints = [](QProcess& run) { return run.waitForReadyRead(1000); };
        auto const starts = [](QProcess& run) { return run.waitForStarted(); };
        using Step = std::function<bool(QProcess&)>;
        for (Step const& step : QVector<Step>{starts, forks, serves, listens, prints}) {
            for (bool hasNext : {false, true}) {
                QFile::remove(desk.program("tmp/vek1"));
                desk.bench = endless;
                QProcess run;
                desk.start(run, arguments);
                for (QDeadlineTimer end(5000); !step(run);) // not a moment later
                    QVERIFY(!end.hasExpired());
                run.kill();
                QVERIFY(run.waitForFinished());
                desk.bench = sound;
                if (hasNext)
                    QCOMPARE(desk.problem(arguments, m_whole[false]), QString());
                QTRY_VERIFY_WITH_TIMEOUT(desk.processes().isEmpty(), 1000);
            }
        }
    }

    /// Files that hold no core for the run, and one whose windows never come.
    void nothingToDo()
    {
        QByteArray const standard = m_vek[false], lite = m_vek[true];
        int const core = lite.indexOf("<SxCore");
        int const end = lite.indexOf("</VEK_CONFIG");
        Runs runs;
        auto const add = [&](QString const& file, QByteArray const& vek, QByteArray const& out) {
            Run& run = runs.add(file, standard);
            run.expected.out = out;
            run.desk.write(file, vek);
            runs.start(file);
        };
        QByteArray const error = "Error: Invalid VEK file ";
        add("ending.VEK", standard, Started);
        add("./v31.vek", QByteArray(standard).replace("3.0", "3.1"),
            error + "./v31.vek.\n" + Started);
        add("nocore.vek", "<VEK_CONFIG><Version>3.0</Version></VEK_CONFIG>",
            error + "nocore.vek.\n" + Started);
        add("noneoflite.vek", lite.left(core) + lite.mid(end),
            error + "noneoflite.vek.\n" + StartedLite);
        add("twolite.vek", lite.left(end) + lite.mid(core), error + "twolite.vek.\n" + StartedLite);
        add("windows0.vek", QByteArray(standard).replace("window_num='2'", "window_num='0'"),
            Started);
        add("amount0.vek",
            QByteArray(standard).replace("capture_amount='256'", "capture_amount='0'"), Started);
        QCOMPARE(runs.problems(), QString());
    }

private:
    static QString fault(QString const& way, QString const& request, int count)
    {
        return QString(R"("of": "%1", "%2": %3)").arg(request, way).arg(count);
    }

    QStringList const Ways{"die_after", "close_after", "silent_from", "garbled_from"};
    QByteArray m_vek[2]; ///< By whether it is lite.
    Outcome m_whole[2];  ///< Of an undisturbed run.
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
