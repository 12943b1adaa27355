#include "desk.h"
#include "setup.h"

#include <QtTest>

#include <memory>

namespace {

constexpr int Width = 9;
QString const Entries = Setup::entry("data", Width) + Setup::entry("flag");
QByteArray const Started = "Start running VEK Lite analyzer.\n";
QByteArray const Ended = "Running VEK analyzer complete.\n";

/// A bus that counts, and a signal that changes with every third sample.
Waves stimulus(int count)
{
    Waves waves = Stimulus::counter("data", Width, count);
    for (int i = 0; i < count; ++i)
        waves["flag"] += char('0' + i / 3 % 2);
    return waves;
}

/// The result file whose rows are these samples of the stimulus.
QByteArray csv(QVector<int> const& samples)
{
    QByteArray members;
    for (int bit = Width - 1; bit >= 0; --bit)
        members += "data[" + QByteArray::number(bit) + "], ";
    QByteArray text = "Groups:\ndata =, " + members + ",\n\nData:\ntime unit: us, data, " +
                      members + "flag,\n0" + QByteArray(", X").repeated(Width + 2) + ",\n";
    for (int i = 0; i < samples.size(); ++i) {
        int const value = samples[i] % (1 << Width);
        text += QByteArray::number(i + 1) + ", " +
                QByteArray::number(value, 16).toUpper().rightJustified(3, '0');
        for (int bit = Width - 1; bit >= 0; --bit)
            text += value >> bit & 1 ? ", 1" : ", 0";
        text += samples[i] / 3 % 2 ? ", 1,\n" : ", 0,\n";
    }
    return text;
}

} // namespace

/// Lite captures from the command line to the file.
class TestLite : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_desk = std::make_unique<Desk>(); }

    void captures_data()
    {
        QTest::addColumn<int>("amount");
        QTest::addColumn<QString>("onDesk");
        QTest::addColumn<QString>("option");
        QTest::addColumn<int>("implemention");
        QTest::addColumn<bool>("initial");
        QTest::addColumn<int>("first"); ///< The sample in row 1; the others follow, round the ring.
        QTest::addColumn<QString>("fault");
        for (int amount : {1, 127, 128, 129, 1000})
            QTest::addRow("%d", amount) << amount << "TK-501"
                                        << "" << 0 << (amount == 129) << 0 << "";
        QTest::newRow("65536") << 65536 << "TK-501"
                               << "" << 1 << true << 0 << "";
        QTest::newRow("turned") << 40 << "TK-102"
                                << "TK-102" << 0 << false << 0 << "";
        QTest::newRow("turned, unknown to the host") << 40 << "TK-107"
                                                     << "" << 0 << true << 39 << "";
        QTest::newRow("another device") << 40 << "TK-501"
                                        << "TK-107" << 0 << false << 1 << "";
        QTest::newRow("implementation 1") << 40 << "TK-107"
                                          << "TK-107" << 1 << true << 0 << "";
        for (char const* fault : {R"("delay": 700)", R"("byte_by_byte": true)", R"("together": 2)"})
            QTest::newRow(fault) << 130 << "TK-501"
                                 << "" << 0 << false << 0 << fault;
    }

    void captures()
    {
        QFETCH(int, amount);
        QFETCH(QString, onDesk);
        QFETCH(QString, option);
        QFETCH(int, implemention);
        QFETCH(bool, initial);
        QFETCH(int, first);
        QFETCH(QString, fault);
        QVERIFY(m_desk->lay(Setup::lite(amount, implemention, initial, Entries),
                            stimulus(amount + 20)));
        QVERIFY(m_desk->write("bench.json", R"({"design": "setup.vek", "device": ")" +
                                                onDesk.toLatin1() +
                                                R"(", "stimulus": {"vcd": "stimulus.vcd"},
                                                "faults": {)" +
                                                fault.toLatin1() + "}}"));
        QVector<int> samples;
        for (int i = 0; i < amount; ++i)
            samples += (first + i) % amount;
        Outcome expected;
        expected.out = Started + "Export lite.csv\n" + Ended;
        expected.files["lite.csv"] = csv(samples);
        QCOMPARE(
            m_desk->problem({"-vek", "setup.vek", "-out", "lite", "-device", option}, expected),
            QString());
    }

    void failedOpen()
    {
        QVERIFY(m_desk->lay(Setup::lite(20, 0, true, Entries), stimulus(20),
                            R"(, "open_result": -20)"));
        Outcome expected;
        expected.out = Started + Ended + "Error: No fs file downloaded.\n";
        QCOMPARE(m_desk->problem({"-vek", "setup.vek"}, expected), QString());
    }

private:
    std::unique_ptr<Desk> m_desk;
};

QTEST_GUILESS_MAIN(TestLite)
#include "tst_lite.moc"
