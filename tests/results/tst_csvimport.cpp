#include "results/csvexport.h"
#include "results/csvimport.h"

#include "model/bits.h"

#include "windows.h"

#include <QTemporaryFile>
#include <QtTest>

using namespace VEK;

namespace {

/// What is read from a file with that text: the items, and the bits of each column.
QString csvRead(QByteArray const& text)
{
    QTemporaryFile file;
    QList<SignalItem> items;
    QList<QBitArray> data;
    if (!file.open() || file.write(text) != text.size() || !file.flush())
        return "not written";
    if (!readCsv(file.fileName(), items, data))
        return items.isEmpty() && data.isEmpty() ? "refused" : "half read";
    QStringList words;
    for (SignalItem const& item : qAsConst(items)) {
        QStringList members;
        for (SignalItem const& member : item.signalList)
            members.append(member.name);
        words.append(item.isBus() ? item.name + '(' + members.join(' ') + ')' : item.name);
    }
    QString result = words.join('|') + " =";
    for (QBitArray const& bits : qAsConst(data))
        result += ' ' + bit2str(bits);
    return result;
}

} // namespace

class TestCsvImport : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts() { compareTexts(); }
    void roundTrips();
    void longLines();
    void badPaths();
};

void TestCsvImport::texts_data()
{
    addTextColumns();
    row("empty", csvRead(""), " =");
    row("no columns", csvRead("Data:\ntime unit: us,\n0,\n"), " =");
    row("a bus, its members and a signal; the format text is no member",
        csvRead("Groups:\nb =, m, n, f,\n\nData:\ntime unit: us, b, m, n, s,\n0, X, X, X, X,\n"
                "1, 2, 1, 0, 1,\n2, 0, 0, 0, 0,\n3, 3, 1, 1, 0,\n"),
        "b(m n)|s = 0101 0101 0001 0100");
    row("the bus goes by another name",
        csvRead("Groups:\nb =, m, ,\n\nData:\ntime unit: us, B, m,\n0, X, X,\n"), "b(m)|B = 0 0");
    row("a bus without members", csvRead("Groups:\nb =, , ,\ntime unit: us, b,\n0, X,\n"), "b = 0");
    row("names without text, blanks in front, UTF-8",
        csvRead("Groups:\n =, m, , ,\n  б =,  é, ,\n\ntime unit: µs, , m, ,   б,  é, 水,\n1,\n"),
        "(m )|  б( é)|水 = 0 0 0 0 0 0");
    row("equal names", csvRead("time unit: us, a, a,\n0, X, X,\n1, 1, 0,\n"), "a|a = 01 00");
    row("lines of no known kind", csvRead("hello\nx, y\nb=, m, ,\n\ntime unit: us, a,\n0, X,\n"),
        "a = 0");
    row("skipped lines keep their place; others than 0 and X are set",
        csvRead("time unit: us, a, b,\n0, X, X,\n\n1\n2, 1, 00,\n   \n3, x,\n4, 1, , 1, 1,\n"),
        "a|b = 0001011 0001001");
    row("carriage returns, no closing commas, no last line end",
        csvRead("Data:\r\ntime unit: us, a, b\r\n0, X, X\r\n1, 1, 0"), "a|b = 01 00");
    row("ASCII values with separators",
        csvRead("b =, 1, 2, 3, 4, 5, 6, 7, 8, 9, ,\ntime unit: us, b, s, q,\n"
                "1, \", \", 1, 0,\n2, \"ab\", 0, 1,\n3, \"\",\", 1, 1,\n"),
        "b(1 2 3 4 5 6 7 8 9)|s|q = 111 101 011");
    row("ASCII values of a bus of another name",
        csvRead("time unit: us, b, s,\n1, \"x, y\", 0,\n2, \", \", 1,\n3, \", 1,\n4, \"a, 0,\n"),
        "b|s = 1111 0110");
    row("the older layout", csvRead("Group: b, m\ntime unit: us, a,\n0, X,\n"), "refused");
    row("bits that would fill gigabytes, of lines without values",
        csvRead("time unit: us" + QByteArray(", a").repeated(20000) +
                QByteArray("\n").repeated(20000)),
        "refused");
    row("an endless line", csvRead(QByteArray(17 * 1024 * 1024, 'x')), "refused");
}

/// Signals before, in and behind a bus that is wide enough for every character.
void TestCsvImport::roundTrips()
{
    constexpr int Last = 26;
    QTemporaryDir const folder;
    QString const path = folder.filePath("out.csv");
    std::mt19937 random{1};
    for (char const* format : {"hex", "binary", "ASCII", "signed decimal", "Real"}) {
        for (int rows : {1, 62, 63, 64, 20000}) {
            QStringList samples;
            QString signalElements;
            QString members;
            for (int i = 0; i <= Last; ++i) {
                samples.append(randomSamples(random, rows));
                signalElements += signalXml(QString::number(i), "s", "", samples.last());
                members += i > 0 && i < Last ? nodeXml(QString::number(i)) : "";
            }
            Window const window(windowXml(
                signalElements, nodeXml("0") + busXml("b", "", format, members) + nodeXml("26")));
            QList<SignalItem> items;
            QList<QBitArray> data;
            QVERIFY(exportCSV(path, "us", 1, window.element) && readCsv(path, items, data));
            QCOMPARE(data.size(), Last + 2);
            data.removeAt(1); // The bus itself.
            for (int i = 0; i <= Last; ++i)
                QCOMPARE(bit2str(data.at(i)), "0" + samples.at(i));
        }
    }
}

/// Lines beyond the size of a read, and quotes that close nothing.
void TestCsvImport::longLines()
{
    constexpr int Columns = 200000;
    QString const text = csvRead("time unit: us" + QByteArray(", abcdef").repeated(Columns) +
                                 ",\n1" + QByteArray(", \"a").repeated(Columns) + ",\n2" +
                                 QByteArray(", 0").repeated(Columns));
    QCOMPARE(text.section(" = ", 1), QString("10 ").repeated(Columns).chopped(1));
}

void TestCsvImport::badPaths()
{
    QList<SignalItem> items;
    QList<QBitArray> data;
    for (QString const& path : BadPaths)
        QVERIFY(!readCsv(path, items, data));
}

QTEST_GUILESS_MAIN(TestCsvImport)
#include "tst_csvimport.moc"
