#include "deskfiles.h"

using namespace VEK;
using namespace VEK::Simulator;

namespace {

/// A chip with a core of index 0 that watches d, which is 1, 2, 3, 0, 1 and so on. What no file
/// brings about is written to it word by word.
class ChipDesk : public Desk
{
public:
    explicit ChipDesk(int samples = 40, QByteArray const& vek = DeskFiles::vek(),
                      QByteArray const& device = "D")
        : Desk(R"("design": "d.vek", "stimulus": {"vcd": "s.vcd", "scope": "tb"}, "device": ")" +
                   device + '"',
               vek, samples)
    {
        serve(DeskFiles::request("OPEN"));
    }

    /// Writes each word, in bits or as register=number, and reads what was chosen last.
    QByteArray after(QByteArray const& words, int size = 16)
    {
        for (QByteArray word : words.split(' ')) {
            int const sign = word.indexOf('=');
            if (sign > 0)
                word = "01001" + number(word.left(sign).toUInt(), 16) +
                       number(word.mid(sign + 1).toULongLong(), width);
            serve(DeskFiles::request("WRITE", "", word));
        }
        serve(DeskFiles::request("READ", "", "", size));
        return text(reply.value("DATA").toBitArray());
    }
    bool isRunning() { return after("01101" + number(0, 16)).endsWith('1'); }

    /// The six records of a window, as values of d from the marked one on.
    QByteArray window(unsigned address = 0, int count = 6)
    {
        after("00111" + number(address, 16) + number(unsigned(count), 16), 33 + 16 * count);
        return DeskFiles::values(reply);
    }

    int width = 16; ///< Of the core's registers.
};

/// Selects the core, sets M0 to a 3 and registers 32 to 35 to six samples from the trigger on.
QByteArray const SetUp = "10000 32=0 33=5 34=3 35=0 256=3 257=3 258=0 259=0 ";

/// The same for a dynamic core.
QByteArray const Dynamic = SetUp + "34=2 ";

QByteArray dynamicVek(QByteArray const& unit = "0")
{
    return DeskFiles::vek(R"(sample_clock="clk" storage_depth="16")", "M" + unit)
        .replace("Static", "Dynamic")
        .replace("MatchUnit index=\"0\"", "MatchUnit index=\"" + unit + '"');
}

} // namespace

class TestChip : public QObject
{
    Q_OBJECT

private slots:
    void words()
    {
        ChipDesk desk;
        QByteArray const five = number(5, 16), ask = "01101" + number(33, 16);
        QCOMPARE(desk.after("10000 33=5 01101" + number(0x1234, 16)), number(0, 16));
        QCOMPARE(desk.after(ask), five);
        QCOMPARE(desk.after(ask, 2), QByteArray("01"));
        QCOMPARE(desk.after(ask, 20), "0000" + five);
        // of a wrong length; no core select, since its first bit is 0
        QByteArray const write = "01001" + number(33, 16);
        QCOMPARE(desk.after(write + QByteArray(15, '1') + ' ' + write + QByteArray(17, '1') +
                            " 01101" + number(32, 16) + "1 00011"),
                 five);
        QCOMPARE(desk.after("10011 33=9 " + ask), QByteArray(16, '1')); // no such core
        QCOMPARE(desk.after("10000 " + ask), five);
        QByteArray const burst = "00111" + number(1, 16) + number(1, 16);
        QCOMPARE(desk.after(burst, 52),
                 "000" + number(0xA5A5A5A5, 32) + QByteArray(13, '1') + "000" + '1');
    }

    /// The flag of the initial data, until the start register is written.
    void initFlag()
    {
        ChipDesk desk(40, DeskFiles::vek(R"(storage_depth="16" sample_clock="clk" )"
                                         R"(capture_init_data_enabled="true")"));
        QByteArray const ask = " 01101" + number(3, 16);
        QCOMPARE(desk.after("10000 33=5" + ask), number(1, 16));
        QCOMPARE(desk.after("0=0" + ask), number(0, 16));
    }

    /// Register 34 as hosts fill it for a device, and with more than the window has room for.
    void samplesAfterTheTrigger()
    {
        char const* const rows[][3] = {{"TK-501", "34=3", "301230"},
                                       {"TK-102", "34=3", "301230"},
                                       {"TK-107", "34=2", "301230"},
                                       {"TK-501", "34=65533", "300012"}};
        for (auto const& row : rows) {
            ChipDesk desk(40, DeskFiles::vek(), row[0]);
            for (QByteArray const& first :
                 {SetUp + row[1] + ' ', QByteArray()}) { // then armed anew
                desk.after(first + "0=1");
                QVERIFY(!desk.isRunning());
                QCOMPARE(desk.window(), QByteArray(row[2]));
            }
        }
    }

    /// A file's dynamic core has one stage, a table for it, and no units but those that were built.
    void tables()
    {
        ChipDesk desk(40, dynamicVek());
        desk.after(Dynamic + "32=1 259=0 43777=1 43793=0 0=1"); // a 3, then none
        QVERIFY(!desk.isRunning());
        QCOMPARE(desk.window(), QByteArray("123010")); // the mark is one sample behind
        desk.after("32=2 259=0 0=1");                  // there is no third table
        QVERIFY(desk.isRunning());
        ChipDesk anew(40, dynamicVek()); // M0 is in an image when its control register follows
        anew.after(Dynamic + "43777=1 32=0 0=1");
        QVERIFY(anew.isRunning());
        ChipDesk other(40, dynamicVek("3"));
        // M0 was not built, but has its bit
        other.after(Dynamic + "304=3 305=3 306=0 307=0 43777=2 0=1");
        QVERIFY(!other.isRunning());
    }

    void endOfStimulus()
    {
        ChipDesk desk(5);
        desk.after(SetUp + "35=1 0=1");
        QVERIFY(desk.isRunning()); // for the second window
        QCOMPARE(desk.window(), QByteArray("301111"));
        desk.after("0=3"); // the next sample, and not armed anew
        QVERIFY(!desk.isRunning());
        QCOMPARE(desk.window(8), QByteArray("111111"));
        QByteArray const second = "00111" + number(8, 16) + number(6, 16);
        QCOMPARE(desk.after(second, 129).count(QByteArray(14, '1') + "01"), 1); // is marked
        QCOMPARE(desk.window(), QByteArray("301111"));
        desk.after("256=1 0=1"); // a level that stands fires no more
        QVERIFY(desk.isRunning());
        desk.after("0=0");
        QVERIFY(!desk.isRunning());
    }

    /// Whatever stands in the registers, arming and forcing come to an end.
    void nonsenseRegisters()
    {
        for (QByteArray content : {"33=M 34=M 35=M", "33=M 34=4294967285 35=0", "33=0 34=0 35=M"}) {
            ChipDesk desk(40, DeskFiles::vek().replace(
                                  "enabled", R"(counter_enable="1" counter_width="40" enabled)"));
            desk.width = 40;
            desk.after("10000 32=4294967295 " + content.replace("M", "4294967295") + " 0=1 0=3");
            QCOMPARE(desk.after("00111" + QByteArray(16, '1') + number(64, 16), 2593).size(), 2593);
        }
    }
};

QTEST_GUILESS_MAIN(TestChip)
#include "tst_chip.moc"
