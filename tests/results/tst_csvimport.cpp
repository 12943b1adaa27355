#include "results/csvexport.h"
#include "results/csvimport.h"

#include "model/bits.h"
#include "windows.h"

#include <QTemporaryDir>
#include <QtTest>

#include <random>

using namespace VEK;

namespace {

QString itemText(SignalItem const& item)
{
    QStringList members;
    for (SignalItem const& member : item.signalList)
        members.append(itemText(member));
    return item.isBus() ? QStringLiteral("%1(%2)").arg(item.name, members.join(' ')) : item.name;
}

} // namespace

class TestCsvImport : public QObject
{
    Q_OBJECT

private slots:
    void files_data();
    void files();
    void roundTrips_data();
    void roundTrips();
    void broken_data();
    void broken();
    void longLines();
    void cannotOpen();

private:
    bool write(QByteArray const& text)
    {
        QFile file(m_path);
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    }

    QTemporaryDir m_folder;
    QString const m_path = m_folder.filePath("in.csv");
};

void TestCsvImport::files_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("items");
    QTest::addColumn<QString>("bits");
    auto const row = [](char const* name, char const* text, char const* items, char const* bits) {
        QTest::newRow(name) << QByteArray(text) << QString::fromUtf8(items) << QString(bits);
    };
    row("empty", "", "", "");
    row("no columns", "Data:\ntime unit: us,\n0,\n", "", "");
    row("a signal", "Data:\ntime unit: us, a,\n0, X,\n1, 1,\n2, 0,\n3, 1,\n", "a", "0101");
    row("a bus, its members and a signal",
        "Groups:\nb =, m, n, ,\n\nData:\ntime unit: us, b, m, n, s,\n0, X, X, X, X,\n"
        "1, 2, 1, 0, 1,\n2, 0, 0, 0, 0,\n3, 3, 1, 1, 0,\n",
        "b(m n)|s", "0101 0101 0001 0100");
    row("the format text is no member",
        "Groups:\nb =, m, n, f,\n\nData:\ntime unit: us, b, m, n,\n", "b(m n)", "  ");
    row("the bus goes by another name",
        "Groups:\nb =, m, ,\n\nData:\ntime unit: us, B, m,\n0, X, X,\n", "b(m)|B", "0 0");
    row("a bus without members", "Groups:\nb =, , ,\n\nData:\ntime unit: us, b,\n0, X,\n", "b",
        "0");
    row("names without text, blanks in front",
        "Groups:\n =, m, , ,\n  b =,  c, ,\n\nData:\ntime unit: us, , m, ,   b,  c,\n",
        "(m )|  b( c)", "    ");
    row("equal names", "Data:\ntime unit: us, a, a,\n0, X, X,\n1, 1, 0,\n", "a|a", "01 00");
    row("lines of no known kind", "hello\nx, y\nb=, m, ,\n\nData:\ntime unit: us, a,\n0, X,\n", "a",
        "0");
    row("skipped lines keep their place",
        "time unit: us, a, b,\n0, X, X,\n\n1\n2, 1, 1,\n   \n3, 1,\n4, 1, 1, 1, 1,\n", "a|b",
        "0001011 0001001");
    row("other values are set", "time unit: us, a, b, c, d,\n1, x, 00, , 0,\n", "a|b|c|d",
        "1 1 1 0");
    row("carriage returns, no last line end", "Data:\r\ntime unit: us, a,\r\n0, X,\r\n1, 1,", "a",
        "01");
    row("without closing commas", "time unit: us, a, b\n0, X, X\n1, 0, 1\n2, 1, 0", "a|b",
        "001 010");
    row("UTF-8", "Groups:\nб =, é, ,\nData:\ntime unit: µs, б, é, 水,\n", "б(é)|水", "  ");
    row("ASCII values with separators",
        "Groups:\nb =, 1, 2, 3, 4, 5, 6, 7, 8, 9, ,\nData:\ntime unit: us, b, s, q,\n0, X, X, X,\n"
        "1, \", \", 1, 0,\n2, \"ab\", 0, 1,\n3, \"\",\", 1, 1,\n",
        "b(1 2 3 4 5 6 7 8 9)|s|q", "0111 0101 0011");
    row("ASCII values of a bus of another name",
        "time unit: us, b, s,\n1, \"x, y\", 0,\n2, \", \", 1,\n3, \", 1,\n4, \"a, 0,\n", "b|s",
        "1111 0110");
}

void TestCsvImport::files()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, items);
    QFETCH(QString, bits);
    QVERIFY(write(text));
    QList<SignalItem> signalList;
    QList<QBitArray> dataList;
    QVERIFY(readCsv(m_path, signalList, dataList));
    QStringList itemTexts;
    for (SignalItem const& item : qAsConst(signalList)) {
        QVERIFY(item.captureEnable);
        itemTexts.append(itemText(item));
    }
    QStringList bitTexts;
    for (QBitArray const& data : qAsConst(dataList))
        bitTexts.append(bit2str(data));
    QCOMPARE(itemTexts.join('|'), items);
    QCOMPARE(bitTexts.join(' '), bits);
}

void TestCsvImport::roundTrips_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("rows");
    for (char const* format : {"hex", "binary", "ASCII", "signed decimal", "Real"}) {
        for (int rows : {1, 62, 63, 64, 1000, 70000})
            QTest::addRow("%s/%d", format, rows) << format << rows;
    }
}

/// Signals before, in and behind a bus that is wide enough for every character.
void TestCsvImport::roundTrips()
{
    QFETCH(QString, format);
    QFETCH(int, rows);
    constexpr int Count = 27;
    std::mt19937 random{unsigned(rows)};
    QStringList samples;
    QString signalElements;
    QString members;
    for (int i = 0; i < Count; ++i) {
        QString text(rows, QLatin1Char('0'));
        for (QChar& sample : text)
            sample = QLatin1Char(random() % 2 ? '1' : '0');
        samples.append(text);
        QString const id = QString::number(i);
        signalElements += signalXml(id, "s" + id, "", text);
        if (i > 0 && i < Count - 1)
            members += nodeXml(id);
    }
    Window const window(windowXml(signalElements, nodeXml("0") + busXml("b", "", format, members) +
                                                      nodeXml(QString::number(Count - 1))));
    QVERIFY(exportCSV(m_path, "us", 1, window.element));

    QList<SignalItem> signalList;
    QList<QBitArray> dataList;
    QVERIFY(readCsv(m_path, signalList, dataList));
    QCOMPARE(signalList.size(), 3);
    QCOMPARE(signalList.first().signalList.size(), Count - 2);
    QCOMPARE(dataList.size(), Count + 1);
    dataList.removeAt(1); // The bus itself.
    for (int i = 0; i < Count; ++i)
        QCOMPARE(bit2str(dataList.at(i)), "0" + samples.at(i));
}

void TestCsvImport::broken_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("the older layout")
        << QByteArray("Group: b, m\nData:\ntime unit: us, a,\n0, X,\n");
    // 20,000 columns and as many lines without values: the bits would fill gigabytes.
    QTest::newRow("lines without values") << "time unit: us" + QByteArray(", a").repeated(20000) +
                                                 "\n" + QByteArray("\n").repeated(20000);
    QTest::newRow("an endless line") << QByteArray(17 * 1024 * 1024, 'x');
}

void TestCsvImport::broken()
{
    QFETCH(QByteArray, text);
    QVERIFY(write(text));
    QList<SignalItem> signalList;
    QList<QBitArray> dataList;
    QVERIFY(!readCsv(m_path, signalList, dataList));
    QVERIFY(signalList.isEmpty() && dataList.isEmpty());
}

/// Lines beyond the size of a read, and quotes that close nothing.
void TestCsvImport::longLines()
{
    constexpr int Columns = 200000;
    QVERIFY(write("time unit: us" + QByteArray(", abcdef").repeated(Columns) + ",\n1" +
                  QByteArray(", \"a").repeated(Columns) + ",\n2" +
                  QByteArray(", 0").repeated(Columns) + ",\n3" +
                  QByteArray(", 1").repeated(Columns)));
    QList<SignalItem> signalList;
    QList<QBitArray> dataList;
    QVERIFY(readCsv(m_path, signalList, dataList));
    QCOMPARE(dataList.size(), Columns);
    QCOMPARE(bit2str(dataList.last()), QStringLiteral("101"));
}

void TestCsvImport::cannotOpen()
{
    QList<SignalItem> signalList;
    QList<QBitArray> dataList;
    for (QString const& path : {QString(), m_folder.path(), m_folder.filePath("missing.csv")})
        QVERIFY(!readCsv(path, signalList, dataList));
}

QTEST_GUILESS_MAIN(TestCsvImport)
#include "tst_csvimport.moc"
