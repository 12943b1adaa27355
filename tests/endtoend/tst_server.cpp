#include "desk.h"
#include "setup.h"

#include <QFile>
#include <QtTest>

#include <memory>

Q_DECLARE_METATYPE(Outcome)

namespace {

QString const Plain = "-vek setup.vek ";
QByteArray const Started = "Start running VEK analyzer.\n";

QString faults(QString const& members)
{
    return R"(, "faults": {)" + members + "}";
}

} // namespace

/// What the batch tool prints and returns when the server, the device or the file is not as it
/// should be, and that a capture doesn't depend on how its replies come.
class TestServer : public QObject
{
    Q_OBJECT

private slots:
    /// The bench that the row tells, and the setup under other names and with changes.
    void init()
    {
        QFETCH(QString, bench);
        m_desk = std::make_unique<Desk>();
        auto const changed = [this](char const* from, char const* to) {
            return QByteArray(m_vek).replace(from, to);
        };
        m_desk->lay(m_vek, m_waves, bench.toUtf8());
        QVERIFY(QFile::link("/dev/full", m_desk->program("run/full_core0_window0.csv")));
        m_desk->write("othermode.vek", changed("Standard", "standard"));
        m_desk->write("top.v2.rsx", changed("<Mode>Standard</Mode>", ""));
        m_desk->write("noxml.vek", "not <XML");
        m_desk->write("empty.vek", "\n");
    }

    void runs_data()
    {
        QTest::addColumn<QString>("bench");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<Outcome>("expected");

        auto const row = [](QString const& bench, QString const& arguments,
                            Outcome const& expected) {
            QTest::newRow(qPrintable(bench + arguments)) << bench << arguments << expected;
        };
        auto const captures = expectedCaptures(m_vek, {{"clk", m_waves}});
        QCOMPARE(captures.size(), 3);
        for (char const* fault : {R"("delay": 180)", R"("byte_by_byte": true)", R"("together": 2)"})
            row(faults(fault), Plain, captured(captures, "setup"));
        row("", Plain + "-vek ../run/top.v2.rsx", captured(captures, "top")); // without a mode
        row("", Plain + "-x -out a -out %1_%2.csv", captured(captures, "%1_%2.csv"));
        row("", Plain + "-cable LPT-ft2ch -location 7 -out -cable", captured(captures, "-cable"));
        row("", Plain + "-cable lpt -location 8 -out d", captured(captures, "d"));
        // A result file that can't be made is not told, and doesn't end the run.
        Outcome unwritable = captured(captures, "no/x");
        unwritable.files.clear();
        row("", Plain + "-out no/x", unwritable);
        unwritable.out.replace("Export no/x", "Export setup.vek/x");
        row("", Plain + "-out setup.vek/x", unwritable);
        Outcome full = captured(captures, "full");
        full.files.remove("full_core0_window0.csv"); // is a link to a disk that is full
        row("", Plain + "-out full", full);

        // The stop that a failed open brings about says "complete" before the error is told.
        QByteArray const stopped = Started + "Running VEK analyzer complete.\nError: ";
        row(R"(, "open_result": -20)", Plain, {0, stopped + "No fs file downloaded.\n", {}});
        row(R"(, "open_result": -1)", Plain, {0, stopped + "Open device failed.\n", {}});
        row("", Plain + "-cable FT2CH -location 8", {0, stopped + "Open device failed.\n", {}});
        row(R"(, "open_result": 7)", Plain, {0, stopped + "Unknown device error.\n", {}});

        // Nothing is said about a file when there is no server, even if it isn't there either.
        row("", "-vek noserver.vek", {1, "Error: Can not lanuch JTAG server.\n", {}});
        row(faults(R"("never_listen": true)"), Plain,
            {2, "Error: Can not connect to JTAG server.\n", {}});
        for (char const* arguments : {"", "-vek", "-vek nowhere.vek", "-vek .", "-vek noxml.vek",
                                      "-cable x -vek othermode.vek", "-vek empty.vek -out o"})
            row("", arguments, {255, "Error: invalid vek file.\n", {}});
    }

    void runs()
    {
        QFETCH(QString, arguments);
        QFETCH(Outcome, expected);
        QVERIFY(expected.status != 1 ||
                QFile::remove(m_desk->program("Programmer/bin/scanbridge")));
        QCOMPARE(m_desk->problem(arguments.split(' ', Qt::SkipEmptyParts), expected), QString());
    }

private:
    QByteArray const m_vek = Setup::twoCores();
    Waves m_waves = Stimulus::counter("count", 10, 1024);
    std::unique_ptr<Desk> m_desk;
};

QTEST_GUILESS_MAIN(TestServer)
#include "tst_server.moc"
