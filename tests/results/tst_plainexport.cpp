#include "results/plainexport.h"

#include <QBuffer>
#include <QtTest>

using namespace VEK;

namespace {

template <typename... Arguments>
QString exported(bool (*write)(QIODevice&, Arguments...),
                 std::decay_t<Arguments> const&... arguments)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    bool const ok = write(buffer, arguments...);
    return ok ? QString::fromLatin1(buffer.data(), buffer.data().size()) : "refused";
}

SampleClock clockOf(QString const& text)
{
    SampleClock clock;
    clock.parse(text);
    return clock;
}

/// A bit, a bus of two that counts, and one of 65 whose highest bit is set in the last sample.
PlainWindow window()
{
    QList<SignalItem> layout{
        {"u/a,\"b\"", "", {}, true}, {"n[4:5]", "", {}, true}, {"w x", "", {}, true}};
    layout[1].signalList = {{"n[4]", "", {}, true}, {"n[5]", "", {}, true}};
    for (int bit = 64; bit >= 0; --bit)
        layout[2].signalList << SignalItem{QString("w[%1]").arg(bit), "", {}, true};
    QList<WaveMonitor::SignalData> decoded;
    for (SignalItem const& item : flatSignals(layout))
        decoded << WaveMonitor::SignalData{decoded.size(), item.name, "", QBitArray(3)};
    decoded[0].data.setBit(1);
    decoded[1].data.setBit(2);
    decoded[2].data.setBit(1);
    decoded[3].data.setBit(2);
    decoded[67].data.setBit(2);
    return plainWindow("top", 1, layout, decoded);
}

} // namespace

class TestPlainExport : public QObject
{
    Q_OBJECT

private slots:
    void csv()
    {
        QCOMPARE(exported(exportPlainCsv, window(), SampleClock()),
                 QString("sample,\"u/a,\"\"b\"\"\",n[4:5],w x\n"
                         "0,0,0,0x00000000000000000\n"
                         "1,1,1,0x00000000000000000\n"
                         "2,0,2,0x10000000000000001\n"));
    }

    void vcd()
    {
        QString const zeros(63, '0');
        QCOMPARE(exported(exportPlainVcd, window(), clockOf("40MHz")),
                 "$version vek $end\n$timescale 1 ns $end\n$scope module top $end\n"
                 "$var event 1 $ trigger $end\n"
                 "$scope module u $end\n$var wire 1 ! a,\"b\" $end\n$upscope $end\n"
                 "$var wire 2 \" n [4:5] $end\n$var wire 65 # w_x [64:0] $end\n"
                 "$upscope $end\n$enddefinitions $end\n"
                 "#0\n$dumpvars\n0!\nb00 \"\nb00" +
                     zeros +
                     " #\n$end\n"
                     "#25\n1!\nb01 \"\n1$\n#50\n0!\nb10 \"\nb1" +
                     zeros + "1 #\n#75\n");
    }

    void raw()
    {
        QByteArray bytes(27, '\0');
        bytes[9] = 0b101;
        bytes[18] = 0b1010;
        bytes[26] = 0b1000;
        QCOMPARE(exported(exportPlainRaw, window()), QString::fromLatin1(bytes, bytes.size()));
        QVERIFY(rawChannels(window()).startsWith("0=u/a_\"b\",1=n[4],2=n[5],3=w[64],"));
    }

    void clocks_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<quint64>("millionth");
        QTest::newRow("Hz") << "1"
                            << "s" << 1000000ULL;
        QTest::newRow("kHz") << "2 kHz"
                             << "us" << 500000000ULL;
        QTest::newRow("MHz") << "50MHz"
                             << "ns" << 20000000ULL;
        QTest::newRow("GHz") << "1.6GHz"
                             << "ps" << 625000000ULL;
        QTest::newRow("rounded") << "33.333333MHz"
                                 << "ps" << 30000000300ULL;
        QTest::newRow("a third") << "3Hz"
                                 << "ps" << 333333333333333333ULL;
        for (char const* wrong : {"", "0", "-1MHz", "50MHZ", "1e6", "1THz", "2000GHz", "0.0000001"})
            QTest::newRow(wrong) << wrong << "" << 1000000ULL;
    }

    /// No error adds up.
    void clocks()
    {
        QFETCH(QString, text);
        QFETCH(QString, unit);
        QFETCH(quint64, millionth);
        SampleClock const clock = clockOf(text);
        QCOMPARE(clock.unit(), unit);
        SampleClock::Times times(clock);
        for (int i = 0; i < 1000000; ++i)
            times.next();
        QCOMPARE(times.now(), millionth);
    }
};

QTEST_GUILESS_MAIN(TestPlainExport)
#include "tst_plainexport.moc"
