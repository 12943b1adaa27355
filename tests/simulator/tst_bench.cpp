#include "deskfiles.h"

#include "simulator/loader.h"
#include "simulator/patterns.h"

#include <QBuffer>

using namespace VEK;
using namespace VEK::Simulator;

namespace {

QByteArray const Members = R"("device": "D", "design": "d.vek")";

} // namespace

class TestBench : public QObject
{
    Q_OBJECT

private slots:
    void errors()
    {
        char const* const rows[][2] = {
            {"{\n\"device\": }", "line 2: object is missing after a comma"},
            {R"({"desing": "x"})", R"(there is no "desing" here)"},
            {R"({"design": 1})", R"("design" must be a text)"},
            {R"({"cables": [{"kind": "LPT", "serial": "a/b"}]})",
             R"(cables[0]: "serial" must not hold any of ; : / ()"},
            {R"({"stimulus": {"vcd": "a", "signals": {"a": 1}}})",
             R"(stimulus: "signals" must hold texts only)"},
            {R"({"stimulus": {"pattern": "lfsr", "samples": 1.5}})",
             R"(stimulus: "samples" must be a whole number from 1 to 16777216)"},
            {R"({"faults": {"byte_by_byte": 1}})",
             R"(faults: "byte_by_byte" must be true or false)"}};
        for (auto const& row : rows) {
            Bench bench;
            QString error;
            QVERIFY(!parseBench(row[0], "/", bench, error));
            QCOMPARE(error, QString(row[1]));
        }
    }

    void find()
    {
        DeskFiles files;
        qunsetenv("VEK_BENCH");
        QCOMPARE(findBench(files.path("")), QString());
        QString const beside = files.write("bench.json", R"({"design": "a/d.vek"})");
        QCOMPARE(QDir::cleanPath(findBench(files.path(""))), beside);
        qputenv("VEK_BENCH", "/elsewhere.json");
        QCOMPARE(findBench(files.path("")), QString("/elsewhere.json"));
        qunsetenv("VEK_BENCH");
        Bench bench;
        QString error;
        QVERIFY(readBench(beside, bench, error));
        QCOMPARE(bench.design, files.path("a/d.vek"));
    }

    void open()
    {
        QMap<QByteArray, int> const results{{R"("design": "d.vek")", -1},
                                            {R"("device": "D")", -20},
                                            {Members, 0},
                                            {Members + R"(, "cables": [])", -1},
                                            {Members + R"(, "open_result": 7)", 7}};
        for (QByteArray const& members : results.keys()) {
            Desk desk(members);
            QVERIFY(desk.serve({{"CMD", "OPEN"}, {"request_id", 3u}, {"cable_index", 1}}));
            QCOMPARE(desk.reply, (CmdPack{{"RES", results[members]}, {"request_id", 3u}}));
        }
    }

    void cables()
    {
        Desk desk(R"("cables": [{"kind": "FT2CH", "location": 2, "serial": "A1"},
                             {"kind": "LPT"}, {"kind": "WINUSB", "location": 9}])");
        QVERIFY(desk.serve(DeskFiles::request("QUERY")));
        QCOMPARE(desk.reply.value("CABLES").toString(),
                 QString("Cable found: FT2CH/Kavro USB Cable(FT2CH)/2/A1 (simulated);"
                         "Cable found: WINUSB/Kavro USB Cable(WINUSB)/9/ (simulated);"));
    }

    /// A device that has to be loaded first opens once the programmer has been there.
    void openAfterDownload()
    {
        Desk desk(Members + R"(, "programmer": {"bitstream": "mark"})");
        auto const opened = [&] {
            desk.serve(DeskFiles::request("OPEN"));
            return desk.reply.value("RES").toInt();
        };
        Bench bench;
        bench.isEmpty = false;
        bench.loader.bitstream = desk.files.path("mark");
        auto const load = [&](QString const& file) {
            QBuffer out;
            out.open(QIODevice::ReadWrite);
            runLoader(bench, {"--device", "D", "--fsFile", file, "--cable-index", "1"}, out);
            return out.data();
        };
        QVERIFY(load("/missing.fs").contains("Error: "));
        QCOMPARE(opened(), -20);
        QVERIFY(!load(desk.files.write("a.fs", "")).contains("rror"));
        QCOMPARE(opened(), 0);
    }

    /// A design that can't be used is told, and the server answers nevertheless.
    void unusable()
    {
        QByteArray const rows[][2] = {
            {"hello", "this is no configuration file that can be read"},
            {DeskFiles::vek(""), "core 0: the storage depth 0 is not between 1 and 4194304"},
            {DeskFiles::vek(R"(storage_depth="16")", "M5"),
             "core 0: expression \"M5\": unit M5 watches no port"}};
        for (auto const& row : rows) {
            Desk desk(Members, row[0]);
            QVERIFY(!desk.isSound);
            QCOMPARE(desk.error, desk.files.path("d.vek") + ": " + row[1]);
            QVERIFY(desk.serve(DeskFiles::request("OPEN")));
            QCOMPARE(desk.reply, (CmdPack{{"RES", -100}, {"REASON", desk.error}}));
            QVERIFY(!desk.serve(DeskFiles::request("READ", "READ_START_REG", "", 16)));
        }
    }

    void badExpressions()
    {
        QStringList rows = QString(",&M0,M0&,M0 M1,M0!,(M0,M0),(),M,N0").split(',');
        rows << QString("M0|").repeated(5000) + "M0" << QString(4095, '(');
        for (QString const& text : rows) {
            Desk desk(Members,
                      DeskFiles::vek(R"(storage_depth="16")", text.toHtmlEscaped().toLatin1()));
            QVERIFY2(desk.error.contains("d.vek: core 0: expression"), qPrintable(text));
        }
    }

    void stimulus()
    {
        char const* const rows[][2] = {
            // values from the trigger on, or the error
            {R"("vcd": "s.vcd", "scope": "tb")", "30123012"},
            {R"("vcd": "s.vcd", "scope": "dut")", "it has no dut.clk, dut.d[1], dut.d[0]; nearest "
                                                  "to dut.clk: tb.clk; nearest to dut.d: tb.d"},
            {R"("vcd": "s.vcd", "signals": {"d": "tb.other"})", "32103210"},
            {R"("vcd": "s.vcd", "signals": {"d[0]": "other[1]"})", "32013201"},
            {R"("vcd": "s.vcd", "clock": "c")", "it has no c; nearest to c: tb.clk"},
            {R"("vcd": ".")", "file to open is a directory"},
            {R"("pattern": "counter", "samples": 6)", "30111111"}};
        for (auto const& row : rows) {
            Desk desk(Members + R"(, "stimulus": {)" + row[0] + "}");
            if (!desk.isSound) {
                QVERIFY2(desk.error.endsWith(": " + QString(row[1])), qPrintable(desk.error));
                continue;
            }
            QVERIFY(desk.serve(DeskFiles::request("OPEN")));
            for (CmdPack const& request : DeskFiles::capture())
                desk.serve(request);
            QCOMPARE(DeskFiles::values(desk.reply), QByteArray(row[1]));
        }
    }

    /// What is answered, with what, and when nothing is.
    void requests()
    {
        Desk desk(Members);
        CmdPack read = DeskFiles::request("READ", "READ_START_REG", "", 5);
        QVERIFY(!desk.serve(read)); // the chain is not open
        for (CmdPack const& request : DeskFiles::capture())
            QVERIFY(!desk.serve(request));
        QVERIFY(desk.serve(DeskFiles::request("OPEN")));
        QVERIFY(desk.serve(read));
        QCOMPARE(desk.reply,
                 (CmdPack{{"DATA", QBitArray(5, true)}})); // the words were lost: no core
        for (CmdPack const& request : DeskFiles::capture())
            QCOMPARE(desk.serve(request), request.value("CMD") == "READ");
        QCOMPARE(desk.reply.value("data_request_id").toUInt(), 5u);
        for (int size : {-1, 1 << 30}) {
            read.insert("SIZE", size);
            QVERIFY(desk.serve(read));
            QCOMPARE(desk.reply.value("DATA").toBitArray(), QBitArray());
        }
        for (char const* command : {"WRITE_INFOR", "", "CLOSE", "READ"})
            QVERIFY(!desk.serve(DeskFiles::request(command)));
    }

    /// A core that waits for a trigger which can't come any more says so, others do not.
    void endOfStimulus()
    {
        Desk desk(Members + R"(, "stimulus": {"pattern": "counter", "samples": 3})");
        CmdPack const start = DeskFiles::request("WRITE", "", "01101" + QByteArray(16, '0'));
        CmdPack const read = DeskFiles::request("READ", "READ_START_REG", "", 16);
        auto const reason = [&] {
            desk.serve(start);
            desk.serve(read);
            return desk.reply.value("REASON").toString();
        };
        QVERIFY(desk.serve(DeskFiles::request("OPEN")));
        QList<CmdPack> const requests = DeskFiles::capture();
        for (int i = 0; i < requests.size() - 2; ++i) { // without the read of the memory
            QCOMPARE(reason(), QString());
            desk.serve(requests.at(i));
        }
        QCOMPARE(reason(), QString("core 0: the stimulus has ended, after 3 samples, without a "
                                   "trigger (windows that have triggered: 0 of 1)"));
        desk.serve(DeskFiles::request("WRITE", "", "01001" + QByteArray(30, '0') + "11"));
        QCOMPARE(reason(), QString()); // forced
    }

    /// The only cable is taken without a number; of several the first kind is meant.
    void cableOfTheLoader()
    {
        for (bool const single : {true, false}) {
            Bench bench;
            QString error;
            QVERIFY(parseBench(QByteArray(R"({"cables": [{"kind": "FT2CH", "location": 2})") +
                                   (single ? "" : R"(, {"kind": "LPT"})") + "]}",
                               "/", bench, error));
            QBuffer out;
            out.open(QIODevice::ReadWrite);
            QCOMPARE(runLoader(bench, {"--scan", "--location", "2"}, out), single ? 0 : 1);
        }
    }

    void patterns()
    {
        auto const text = [](Pattern const& pattern, int signalCount) {
            return rowTexts(samplePattern(pattern, signalCount)).join();
        };
        QCOMPARE(text({Pattern::Counter, 1, 6}, 2), QByteArray("000110110001"));
        QCOMPARE(text({Pattern::Counter, 1, 3}, 66).right(66), QByteArray(64, '0') + "10");
        QCOMPARE(text({Pattern::WalkingOne, 1, 4}, 3), QByteArray("100010001100"));
        // A bit of the noise is the sum of four earlier ones.
        QByteArray const noise = text({Pattern::Lfsr, 0x12345678, 400}, 7);
        for (int i = 32; i < noise.size(); ++i)
            QCOMPARE(noise.at(i) & 1,
                     (noise.at(i - 32) ^ noise.at(i - 22) ^ noise.at(i - 2) ^ noise.at(i - 1)) & 1);
        QVERIFY(noise != text({Pattern::Lfsr, 0x12345679, 400}, 7));
    }
};

QTEST_GUILESS_MAIN(TestBench)
#include "tst_bench.moc"
