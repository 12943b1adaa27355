#include "desk.h"
#include "setup.h"

#include <QFile>
#include <QtTest>

#include <signal.h>

/// What the batch tool prints and returns when the server, the device or the file is not as it
/// should be, and that a capture doesn't depend on how its replies come.
class TestServer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void captures_data();
    void captures();
    void messages_data();
    void messages();
    void waitsForEver_data();
    void waitsForEver();
    void needsNoGui();

private:
    bool lay(Desk& desk);

    QByteArray m_vek;
    Waves m_waves = Stimulus::counter("count", 10, 1024);
};

/// Two cores with two windows each, the first of them in two sections: many replies.
void TestServer::initTestCase()
{
    Setup::Core core;
    core.amount = 256;
    core.position = 20;
    core.windows = 2;
    core.entries = core.ports[0] = Setup::entry("count", 10);
    core.units = Setup::unit(0, 0, "XXX1000000");
    Setup::Core other = core;
    other.amount = 64;
    other.dynamic = true;
    m_vek = Setup::vek({core, other});
}

/// The bench that the row tells, and the setup under other names and with changes.
bool TestServer::lay(Desk& desk)
{
    QFETCH(QString, bench);
    QByteArray text = m_vek;
    return desk.lay(m_vek, m_waves, bench.toUtf8()) && desk.write("setup.VEK", text) &&
           desk.write("v31.vek", QByteArray(text).replace("3.0", "3.1")) &&
           desk.write("othermode.vek", QByteArray(text).replace("Standard", "standard")) &&
           desk.write("top.v2.rsx", text.replace("<Mode>Standard</Mode>", "")) &&
           desk.write("nocore.vek", "<VEK_CONFIG><Version>3.0</Version></VEK_CONFIG>") &&
           desk.write("noxml.vek", "not <XML") && desk.write("empty.vek", "\n");
}

void TestServer::captures_data()
{
    QTest::addColumn<QString>("bench");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("prefix");

    QString const plain = "-vek setup.vek ";
    QTest::newRow("at once") << "" << plain << "setup";
    QTest::newRow("late") << R"(, "faults": {"delay": 180})" << plain << "setup";
    QTest::newRow("byte by byte") << R"(, "faults": {"byte_by_byte": true})" << plain << "setup";
    QTest::newRow("several at once") << R"(, "faults": {"together": 2})" << plain << "setup";
    QTest::newRow("other path, no mode") << "" << plain + "-vek ../run/top.v2.rsx"
                                         << "top";
    QTest::newRow("place markers") << "" << plain + "-x -out a -out %1_%2.csv"
                                   << "%1_%2.csv";
    QTest::newRow("cable") << "" << plain + "-cable LPT-ft2ch -location 7 -out -cable"
                           << "-cable";
    QTest::newRow("parallel port") << "" << plain + "-cable lpt -location 8 -out d"
                                   << "d";
}

void TestServer::captures()
{
    QFETCH(QString, arguments);
    QFETCH(QString, prefix);
    Desk desk;
    QVERIFY(lay(desk));
    auto const captures = expectedCaptures(m_vek, {{"clk", m_waves}});
    QCOMPARE(captures.size(), 4);
    QCOMPARE(desk.problem(arguments.split(' ', Qt::SkipEmptyParts), captured(captures, prefix)),
             QString());
}

void TestServer::messages_data()
{
    QTest::addColumn<QString>("bench");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");

    QString const plain = "-vek setup.vek ";
    QString const started = "Start running VEK analyzer.\n";
    // The stop that a failed open brings about says "complete" before the error is told.
    QString const stopped = started + "Running VEK analyzer complete.\n";
    QTest::newRow("no bitstream") << R"(, "open_result": -20)" << plain << 0
                                  << stopped + "Error: No fs file downloaded.\n";
    QTest::newRow("late") << R"(, "open_result": -20, "faults": {"delay": 1200})" << plain << 0
                          << stopped + "Error: No fs file downloaded.\n";
    QTest::newRow("no device") << R"(, "open_result": -1)" << plain << 0
                               << stopped + "Error: Open device failed.\n";
    QTest::newRow("no cable there") << "" << plain + "-cable FT2CH -location 8" << 0
                                    << stopped + "Error: Open device failed.\n";
    QTest::newRow("another value")
        << R"(, "open_result": 7)" << plain << 0 << stopped + "Error: Unknown device error.\n";
    // A result file that can't be made is not told, and doesn't end the run.
    QTest::newRow("unwritable") << "" << plain + "-out no/x" << 0
                                << started + "Export no/x_core0_window0.csv\n"
                                             "Export no/x_core0_window1.csv\n"
                                             "Export no/x_core1_window0.csv\n"
                                             "Export no/x_core1_window1.csv\n"
                                             "Running VEK analyzer complete.\n";
    // Nothing is said about a file when there is no server, even if it isn't there either.
    QTest::newRow("no server") << ""
                               << "-vek nowhere.vek" << 1 << "Error: Can not lanuch JTAG server.\n";
    QTest::newRow("never listens") << R"(, "faults": {"never_listen": true})" << plain << 2
                                   << "Error: Can not connect to JTAG server.\n";
    for (char const* arguments : {"", "-vek", "-vek nowhere.vek", "-vek .", "-vek noxml.vek",
                                  "-cable x -vek othermode.vek", "-vek empty.vek -out o"})
        QTest::addRow("invalid: %s", arguments)
            << "" << arguments << 255 << "Error: invalid vek file.\n";
}

void TestServer::messages()
{
    QFETCH(QString, arguments);
    QFETCH(int, status);
    QFETCH(QString, out);
    Desk desk;
    QVERIFY(lay(desk));
    QVERIFY(status != 1 || QFile::remove(desk.program("Programmer/bin/scanbridge")));
    QCOMPARE(desk.problem(arguments.split(' ', Qt::SkipEmptyParts), {status, out.toUtf8(), {}}),
             QString());
}

void TestServer::waitsForEver_data()
{
    QTest::addColumn<QString>("bench");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("error");

    // Request 26 is the first look at a start register, 28 and 30 read the first window.
    QTest::newRow("silent inside a window") << R"(, "faults": {"silent_from": 30})"
                                            << "setup.vek"
                                            << "";
    QTest::newRow("dies before") << R"(, "faults": {"die_after": 10})"
                                 << "setup.vek"
                                 << "";
    QTest::newRow("dies inside") << R"(, "faults": {"die_after": 29})"
                                 << "setup.vek"
                                 << "";
    QTest::newRow("hangs up") << R"(, "faults": {"close_after": 10})"
                              << "setup.vek"
                              << "";
    QTest::newRow("wrong ending") << ""
                                  << "setup.VEK"
                                  << "";
    QTest::newRow("version too high") << ""
                                      << "./v31.vek"
                                      << "Error: Invalid VEK file ./v31.vek.\n";
    QTest::newRow("no core") << ""
                             << "nocore.vek"
                             << "Error: Invalid VEK file nocore.vek.\n";
}

/// The run neither ends nor says anything more, and leaves no server behind when it is ended.
void TestServer::waitsForEver()
{
    QFETCH(QString, file);
    QFETCH(QString, error);
    Desk desk;
    QVERIFY(lay(desk));
    QByteArray const out = error.toUtf8() + "Start running VEK analyzer.\n";
    QProcess process;
    desk.start(process, {"-vek", file});
    QTRY_COMPARE_WITH_TIMEOUT(process.bytesAvailable(), qint64(out.size()), 10000);
    QVERIFY(!process.waitForFinished(1500)); // three ticks of the poll
    ::kill(pid_t(process.processId()), SIGKILL);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardOutput(), out);
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QVERIFY(desk.results().isEmpty());
    QTRY_COMPARE(desk.processes(), QStringList());
}

/// The batch tool runs where there is no screen.
void TestServer::needsNoGui()
{
    QProcess ldd;
    ldd.start("ldd", {VEK_BUILD_ROOT "/Analyzer/bin/veksh"});
    QVERIFY(ldd.waitForFinished());
    QByteArray const libraries = ldd.readAllStandardOutput();
    QVERIFY(libraries.contains("libQt5Core"));
    QVERIFY(!libraries.contains("libQt5Gui") && !libraries.contains("libQt5Widgets"));
}

QTEST_GUILESS_MAIN(TestServer)
#include "tst_server.moc"
