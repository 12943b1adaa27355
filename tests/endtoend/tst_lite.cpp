#include "desk.h"
#include "setup.h"

#include <QtTest>

namespace {

struct Row
{
    int amount;
    QByteArray onDesk; ///< The device there.
    QString option;    ///< The device that the host is told.
    int implemention;
    bool initial;
    int first; ///< The sample in row 1; the others follow, round the ring.
};

QString const Entries = Setup::entry("data", 9) + Setup::entry("flag");
QByteArray const Started = "Start running VEK Lite analyzer.\n";
QByteArray const Ended = "Running VEK analyzer complete.\n";

/// A bus that counts, and a signal that changes with every third sample.
Waves stimulus(int count)
{
    Waves waves = Stimulus::counter("data", 9, count);
    for (int i = 0; i < count; ++i)
        waves["flag"] += char('0' + i / 3 % 2);
    return waves;
}

} // namespace

Q_DECLARE_METATYPE(Row)

/// Lite captures from the command line to the file.
class TestLite : public QObject
{
    Q_OBJECT

private slots:
    void captures_data()
    {
        QTest::addColumn<Row>("row");
        for (int amount : {1, 127, 128, 129, 1000})
            QTest::addRow("%d", amount) << Row{amount, "TK-501", "", 0, amount == 129, 0};
        QTest::newRow("65536") << Row{65536, "TK-501", "", 1, true, 0};
        QTest::newRow("turned") << Row{40, "TK-102", "TK-102", 0, false, 0};
        QTest::newRow("turned, unknown to the host") << Row{40, "TK-107", "", 0, true, 39};
        QTest::newRow("another device") << Row{40, "TK-501", "TK-107", 0, false, 1};
        QTest::newRow("implementation 1") << Row{40, "TK-107", "TK-107", 1, true, 0};
    }

    void captures()
    {
        QFETCH(Row, row);
        Desk desk;
        QByteArray const vek = Setup::lite(row.amount, row.implemention, row.initial, Entries);
        Waves const waves = stimulus(row.amount + 20);
        desk.lay(vek, waves, "", row.onDesk);
        QVector<int> samples;
        for (int i = 0; i < row.amount; ++i)
            samples += (row.first + i) % row.amount;
        Outcome const expected{
            0, Started + "Export lite.csv\n" + Ended, {{"lite.csv", csvOf(vek, waves, samples)}}};
        QCOMPARE(
            desk.problem({"-vek", "setup.vek", "-out", "lite", "-device", row.option}, expected),
            QString());
        QCOMPARE(desk.problemOfVek({"--device", row.option}), QString());
    }
};

QTEST_GUILESS_MAIN(TestLite)
#include "tst_lite.moc"
