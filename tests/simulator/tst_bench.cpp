#include "deskfiles.h"

#include "simulator/bridge.h"
#include "simulator/patterns.h"

#include <QJsonDocument>

using namespace VEK;
using namespace VEK::Simulator;

namespace {

QStringList const Usb{"FT2CH", "TR7QZ", "WINUSB"};

/// A bridge over a bench with d.vek and, from `more`, further members.
struct Desk
{
    explicit Desk(QByteArray const& more = "", QByteArray const& vek = DeskFiles::vek())
    {
        QByteArray const text = R"({"device": "D", "design": "d.vek")" + more + "}";
        design = files.write("d.vek", vek);
        files.write("s.vcd", DeskFiles::vcd(40));
        Bench bench;
        if (!parseBench(text, files.path(""), bench, error))
            qFatal("%s", qPrintable(error));
        bridge.reset(new Bridge(bench, Usb));
        isSound = bridge->load(error);
    }
    bool serve(CmdPack const& request) { return bridge->serve(request, reply); }

    DeskFiles files;
    QString design;
    QScopedPointer<Bridge> bridge;
    bool isSound = false;
    QString error;
    CmdPack reply;
};

} // namespace

class TestBench : public QObject
{
    Q_OBJECT

private slots:
    void paths();
    void errors_data();
    void errors();
    void find();
    void open_data();
    void open();
    void cables();
    void unusable_data();
    void unusable();
    void stimulus_data();
    void stimulus();
    void requests();
    void patterns();
};

void TestBench::paths()
{
    Bench bench;
    QString error;
    QVERIFY(parseBench(R"({"design": "a/d.vek", "stimulus": {"vcd": "/v/s.vcd"}})", "/home", bench,
                       error));
    QCOMPARE(bench.design, QString("/home/a/d.vek"));
    QCOMPARE(bench.vcd, QString("/v/s.vcd"));
}

void TestBench::errors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    auto const add = [](char const* text, char const* expected) {
        QTest::newRow(text) << QByteArray(text) << QString(expected);
    };
    add("", "line 1: illegal value");
    add("{\n\"device\": }", "line 2: object is missing after a comma");
    add("[]", "a bench is a JSON object");
    add(R"({"desing": "x"})", R"(there is no "desing" here)");
    add(R"({"design": 1})", R"("design" must be a text)");
    add(R"({"cables": ["FT2CH"]})", R"("cables" must hold objects only)");
    add(R"({"cables": [{}]})", R"(cables[0]: "kind" must be one of: FT2CH, TR7QZ, WINUSB, LPT)");
    add(R"({"cables": [{"kind": "LPT", "serial": "a/b"}]})",
        R"(cables[0]: "serial" must not hold any of ; : / ()");
    add(R"({"stimulus": {}})", R"(stimulus: either "vcd" or "pattern" is needed)");
    add(R"({"stimulus": {"vcd": "a", "seed": 1}})", R"(stimulus: there is no "seed" here)");
    add(R"({"stimulus": {"vcd": "a", "signals": {"a": 1}}})",
        R"(stimulus: "signals" must hold texts only)");
    add(R"({"stimulus": {"pattern": "lfsr", "seed": 0}})",
        R"(stimulus: "seed" must be a whole number from 1 to 2147483647)");
    add(R"({"stimulus": {"pattern": "lfsr", "samples": 1.5}})",
        R"(stimulus: "samples" must be a whole number from 1 to 16777216)");
    add(R"({"faults": {"byte_by_byte": 1}})", R"(faults: "byte_by_byte" must be true or false)");
}

void TestBench::errors()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    Bench bench;
    QString error;
    QVERIFY(!parseBench(text, "/", bench, error));
    QCOMPARE(error, expected);
}

void TestBench::find()
{
    DeskFiles files;
    qunsetenv("VEK_BENCH");
    QCOMPARE(findBench(files.path("")), QString());
    QString const beside = files.write("bench.json", "{}");
    QCOMPARE(QDir::cleanPath(findBench(files.path(""))), beside);
    qputenv("VEK_BENCH", "/elsewhere.json");
    QCOMPARE(findBench(files.path("")), QString("/elsewhere.json"));
    qunsetenv("VEK_BENCH");
    Bench bench;
    QString error;
    QVERIFY(!readBench("/elsewhere.json", bench, error));
    QCOMPARE(error, QString("/elsewhere.json: No such file or directory"));
}

void TestBench::open_data()
{
    QTest::addColumn<QByteArray>("bench"); // empty: there is none
    QTest::addColumn<int>("index");        // -1: no location is asked for
    QTest::addColumn<int>("location");
    QTest::addColumn<int>("result");

    auto const add = [](QByteArray const& bench, int index, int location, int result) {
        QTest::addRow("%s, cable %d at %d", bench.constData(), index, location)
            << bench << index << location << result;
    };
    QByteArray const whole = R"("device": "D", "design": "d.vek")";
    QByteArray const cables = whole + R"(, "cables": [{"kind": "TR7QZ", "location": 4}])";
    add("", -1, 0, -20);
    add("{}", -1, 0, -1);
    add(R"({"design": "d.vek"})", -1, 0, -1);
    add(R"({"device": "D"})", -1, 0, -20);
    add("{" + whole + "}", -1, 0, 0);
    add("{" + whole + "}", 0, 7, 0);
    add("{" + cables + "}", 1, 4, 0);
    add("{" + cables + "}", 1, 5, -1);
    add("{" + cables + "}", 0, 4, -1);
    add("{" + whole + R"(, "cables": []})", -1, 0, -1);
    add("{" + whole + R"(, "open_result": 7})", -1, 0, 7);
    add(R"({"open_result": -20})", -1, 0, -20);
}

void TestBench::open()
{
    QFETCH(QByteArray, bench);
    QFETCH(int, index);
    QFETCH(int, location);
    QFETCH(int, result);
    DeskFiles files;
    files.write("d.vek", DeskFiles::vek());
    Bench parsed;
    QString error;
    QVERIFY(bench.isEmpty() || parseBench(bench, files.path(""), parsed, error));
    Bridge bridge(parsed, Usb);
    QVERIFY2(bridge.load(error), qPrintable(error));
    CmdPack request = DeskFiles::request("OPEN");
    request.insert("request_id", 3u);
    if (index >= 0) {
        request.insert("cable_index", index);
        request.insert("cable_location", location);
    }
    CmdPack reply;
    QVERIFY(bridge.serve(request, reply));
    QCOMPARE(reply, (CmdPack{{"RES", result}, {"request_id", 3u}}));
}

void TestBench::cables()
{
    Bench bench;
    QString error;
    QVERIFY(parseBench(R"({"cables": [{"kind": "FT2CH", "location": 2, "serial": "A1"},
                                      {"kind": "LPT"}, {"kind": "WINUSB", "location": 9}]})",
                       "/", bench, error));
    CmdPack reply;
    QVERIFY(Bridge(bench, Usb).serve(DeskFiles::request("QUERY"), reply));
    QCOMPARE(reply.value("RES").toInt(), 0);
    // Taken apart as a host does.
    QStringList rows;
    for (QString const& part : reply.value("CABLES").toString().split(";", Qt::SkipEmptyParts)) {
        QVERIFY(part.contains("Cable found:"));
        QStringList const fields =
            part.split(":").at(1).simplified().split("/", Qt::SkipEmptyParts);
        QVERIFY(fields.size() > 3);
        rows += fields.at(0) + "|" + fields.at(1) + "|" + fields.at(2) + "|" +
                fields.at(3).split("(").first().simplified();
    }
    QCOMPARE(rows, QStringList(
                       {"FT2CH|Kavro USB Cable(FT2CH)|2|A1", "WINUSB|Kavro USB Cable(WINUSB)|9|"}));
    QVERIFY(Bridge(Bench(), Usb).serve(DeskFiles::request("QUERY"), reply));
    QCOMPARE(reply.value("CABLES").toString(), QString());
}

void TestBench::unusable_data()
{
    QTest::addColumn<QByteArray>("vek");
    QTest::addColumn<QString>("expected"); // behind the path

    QByteArray const depth = "storage_depth=\"16\"";
    QTest::newRow("no XML") << QByteArray("hello")
                            << "this is no configuration file that can be read";
    QTest::newRow("version") << DeskFiles::vek().replace("3.0", "9.0")
                             << "The version of Vek config file is too high.";
    QTest::newRow("no core") << DeskFiles::vek().replace("SxCore", "Core")
                             << "there is no core in it";
    QTest::newRow("no depth") << DeskFiles::vek("")
                              << "core 0: the storage depth 0 is not between 1 and 4194304";
    QTest::newRow("expression") << DeskFiles::vek(depth, "<Expression>M0&amp;</Expression>")
                                << "core 0: expression \"M0&\": an operand is missing at its end";
    QTest::newRow("unit") << DeskFiles::vek(depth, "<Expression>M5</Expression>")
                          << "core 0: expression \"M5\": unit M5 watches no port";
}

void TestBench::unusable()
{
    QFETCH(QByteArray, vek);
    QFETCH(QString, expected);
    Desk desk("", vek);
    QVERIFY(!desk.isSound);
    QCOMPARE(desk.error, desk.design + ": " + expected);
    QVERIFY(desk.serve(DeskFiles::request("OPEN")));
    QCOMPARE(desk.reply.value("RES").toInt(), -100);
    QVERIFY(!desk.serve(DeskFiles::request("READ", "READ_START_REG", "", 16)));
}

void TestBench::stimulus_data()
{
    QTest::addColumn<QString>("expected"); // values from the trigger on, or the error

    auto const add = [](char const* stimulus, char const* expected) {
        QTest::newRow(stimulus) << QString(expected);
    };
    add(R"("vcd": "s.vcd")", "30123012");
    add(R"("vcd": "s.vcd", "scope": "tb")", "30123012");
    add(R"("vcd": "s.vcd", "scope": "dut")", "it has no dut.clk, dut.d[1], dut.d[0]");
    add(R"("vcd": "s.vcd", "scope": "tb", "clock": "clk")", "30123012");
    add(R"("vcd": "s.vcd", "clock": "c")", "it has no c");
    add(R"("vcd": "s.vcd", "signals": {"d": "tb.other"})", "32103210");
    add(R"("vcd": "s.vcd", "signals": {"d[0]": "other[1]"})", "32013201");
    add(R"("vcd": "s.vcd", "signals": {"clk": "x"})", "it has no x");
    add(R"("vcd": ".")", "file to open is a directory");
    add(R"("pattern": "counter")", "30123012");
    add(R"("pattern": "counter", "samples": 6)", "30111111");
}

void TestBench::stimulus()
{
    QFETCH(QString, expected);
    Desk desk(QByteArray(R"(, "stimulus": {)") + QTest::currentDataTag() + "}");
    if (!desk.isSound) {
        QVERIFY2(desk.error.endsWith(": " + expected), qPrintable(desk.error));
        return;
    }
    QVERIFY(desk.serve(DeskFiles::request("OPEN")));
    for (CmdPack const& request : DeskFiles::capture())
        desk.serve(request);
    QCOMPARE(DeskFiles::values(desk.reply), expected.toLatin1());
}

/// What is answered, with what, and when nothing is.
void TestBench::requests()
{
    Desk desk;
    CmdPack read = DeskFiles::request("READ", "READ_START_REG", "", 5);
    QVERIFY(!desk.serve(read)); // the chain is not open
    for (CmdPack const& request : DeskFiles::capture())
        QVERIFY(!desk.serve(request));
    QVERIFY(desk.serve(DeskFiles::request("OPEN")));
    QVERIFY(desk.serve(read));
    QCOMPARE(desk.reply, (CmdPack{{"DATA", QBitArray(5, true)}})); // the words were lost: no core
    for (CmdPack const& request : DeskFiles::capture())
        QCOMPARE(desk.serve(request), request.value("CMD") == "READ");
    QCOMPARE(desk.reply.keys(),
             QStringList({"DATA", "SECTION_COUNT", "WINDOW", "data_request_id"}));
    QCOMPARE(desk.reply.value("SECTION_COUNT").toInt(), 1);
    QCOMPARE(desk.reply.value("data_request_id").toUInt(), 5u);
    for (int size : {-1, 1 << 30}) {
        read.insert("SIZE", size);
        QVERIFY(desk.serve(read));
        QCOMPARE(desk.reply.value("DATA").toBitArray(), QBitArray());
    }
    for (char const* command : {"WRITE_INFOR", "NONSENSE", "", "CLOSE", "READ"})
        QVERIFY(!desk.serve(DeskFiles::request(command)));
}

void TestBench::patterns()
{
    auto const text = [](Pattern const& pattern, int signalCount) {
        SampleTable const table = samplePattern(pattern, signalCount);
        QByteArray rows;
        for (qint64 k = 0; k < table.rowCount(); ++k)
            for (int i = 0; i < signalCount; ++i)
                rows += char('0' + table.bit(k, i));
        return rows;
    };
    QCOMPARE(text({Pattern::Counter, 1, 6}, 2), QByteArray("000110110001"));
    QCOMPARE(text({Pattern::Counter, 1, 3}, 66).right(66), QByteArray(64, '0') + "10");
    QCOMPARE(text({Pattern::WalkingOne, 1, 4}, 3), QByteArray("100010001100"));
    QCOMPARE(text({Pattern::Lfsr, 1, 3}, 0), QByteArray());
    // A bit of the noise is the sum of four earlier ones.
    QByteArray const noise = text({Pattern::Lfsr, 0x12345678, 100}, 7);
    for (int i = 32; i < noise.size(); ++i)
        QCOMPARE(noise.at(i) & 1,
                 (noise.at(i - 32) ^ noise.at(i - 22) ^ noise.at(i - 2) ^ noise.at(i - 1)) & 1);
    QVERIFY(noise != text({Pattern::Lfsr, 0x12345679, 100}, 7));
}

QTEST_GUILESS_MAIN(TestBench)
#include "tst_bench.moc"
