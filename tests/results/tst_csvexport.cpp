#include "results/csvexport.h"
#include "results/windowreader.h"

#include "windows.h"

#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <random>

using namespace VEK;

class TestCsvExport : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void fastColumns_data();
    void fastColumns();
    void manyColumns();
    void openFailures();
    void fullDisk();

private:
    /// What the export leaves in a file that held something longer before.
    QByteArray exported(QString const& children, QString const& unit = "us", int step = 1)
    {
        QFile file(m_folder.filePath("out.csv"));
        if (!file.open(QIODevice::ReadWrite) || !file.resize(100000))
            return "no file";
        Window const window(children);
        if (!exportCSV(file.fileName(), unit, step, window.element))
            return "not opened";
        return file.readAll();
    }

    QTemporaryDir m_folder;
};

void TestCsvExport::texts_data()
{
    QTest::addColumn<QString>("children");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<int>("step");
    QTest::addColumn<QString>("text");
    auto const row = [](char const* name, QString const& children, char const* text, int step = 1,
                        char const* unit = "us") {
        QTest::newRow(name) << children << unit << step << QString::fromUtf8(text);
    };
    QString const abc = signalXml("0", "top.a", "", "0101") + signalXml("1", "top.b", "B", "0011") +
                        signalXml("2", "top.c", "", "1000");

    row("bus and plain signal",
        windowXml(abc, busXml("top.bus", "T", "4", nodeXml("0", "top.a") + nodeXml("1", "B")) +
                           nodeXml("2", "top.c")),
        "Groups:\ntop.bus =, top.a, B, ,\n\nData:\ntime unit: us, T, top.a, B, top.c,\n"
        "0, X, X, X, X,\n1, 0, 0, 0, 1,\n2, 2, 1, 0, 0,\n3, 1, 0, 1, 0,\n4, 3, 1, 1, 0,\n");
    row("nothing", "", "Data:\ntime unit: us,\n0,\n");
    row("signals without layout", windowXml(abc, ""), "Data:\ntime unit: ms,\n0,\n", 1, "ms");
    row("one sample", windowXml(signalXml("0", "a", "", "1"), nodeXml("0")),
        "Data:\ntime unit: us, a,\n0, X,\n7, 1,\n", 7);
    row("step 5", windowXml(signalXml("0", "a", "", "101"), nodeXml("0")),
        "Data:\ntime unit: us, a,\n0, X,\n5, 1,\n10, 0,\n15, 1,\n", 5);
    row("largest step", windowXml(signalXml("0", "a", "", "101"), nodeXml("0")),
        "Data:\ntime unit: us, a,\n0, X,\n2147483647, 1,\n4294967294, 0,\n6442450941, 1,\n",
        std::numeric_limits<int>::max());
    row("smallest step", windowXml(signalXml("0", "a", "", "10"), nodeXml("0")),
        "Data:\ntime unit: us, a,\n0, X,\n-2147483648, 1,\n-4294967296, 0,\n",
        std::numeric_limits<int>::min());
    row("format text, names and dividers in groups",
        "<Format>f<i>m</i>t</Format>" +
            windowXml(abc, "<Node type='divider' text='d'/>" +
                               busXml("n", "T", "",
                                      nodeXml("0", "other") + "<Node type='divider' id='1'/>" +
                                          nodeXml("9", "lost"))),
        "Groups:\nn =, top.a, , fmt,\n\nData:\ntime unit: us, T, other, lost,\n0, X, X, X,\n"
        "1, , 0, ,\n2, , 1, ,\n3, , 0, ,\n4, , 1, ,\n");
    row("bus without members first", windowXml(abc, busXml("n", "", "", "") + nodeXml("0")),
        "Groups:\nn =, , ,\n\nData:\ntime unit: us, n, top.a,\n0, X, X,\n");
    row("equal ids: the first gives the data, the last the group's name",
        windowXml(signalXml("0", "a", "", "10") + signalXml("0", "b", "", "01"),
                  busXml("n", "", "binary", nodeXml("0") + nodeXml("0"))),
        "Groups:\nn =, b, b, ,\n\nData:\ntime unit: us, n, a, a,\n0, X, X, X,\n"
        "1, 11, 1, 1,\n2, 00, 0, 0,\n");
    row("unequal lengths",
        windowXml(signalXml("0", "a", "", "101") + signalXml("1", "b", "", "1") +
                      signalXml("2", "c", "", "11111"),
                  busXml("n", "", "", nodeXml("0") + nodeXml("1")) + nodeXml("2")),
        "Groups:\nn =, a, b, ,\n\nData:\ntime unit: us, n, a, b, c,\n0, X, X, X, X,\n"
        "1, 3, 1, 1, 1,\n2, , 0, , 1,\n3, , 1, , 1,\n");
    row("other characters stand in plain columns and are 0 in a bus",
        windowXml(signalXml("0", "a", "", "1zU") +
                      signalXml("1", "b", "", QString::fromUtf8("é,1")),
                  busXml("n", "", "", nodeXml("0") + nodeXml("1"))),
        "Groups:\nn =, a, b, ,\n\nData:\ntime unit: us, n, a, b,\n0, X, X, X,\n"
        "1, 2, 1, é,\n2, 0, z, ,,\n3, 1, U, 1,\n");
    row("names in UTF-8",
        windowXml(signalXml("0", "a", QString::fromUtf8("é水"), "1"),
                  busXml(QString::fromUtf8("б"), "", "", nodeXml("0"))),
        "Groups:\nб =, é水, ,\n\nData:\ntime unit: µs, б, é水,\n0, X, X,\n1, 1, 1,\n", 1, "µs");
}

void TestCsvExport::texts()
{
    QFETCH(QString, children);
    QFETCH(QString, unit);
    QFETCH(int, step);
    QFETCH(QString, text);
    QCOMPARE(QString::fromUtf8(exported(children, unit, step)), text);
}

void TestCsvExport::fastColumns_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("width");
    for (char const* format :
         {"binary", "octal", "signed decimal", "unsigned decimal", "hex", "ASCII",
          "Signed Magnitude", "Real", "Unsigned Bar Chart", "Signed Line Chart"}) {
        for (int width : {1, 2, 3, 31, 32, 53, 54, 62, 63, 64, 65, 130})
            QTest::addRow("%s/%d", format, width) << format << width;
    }
}

/// What the columns write without the formatter, a block of rows at a time, against the values that
/// the columns give one by one.
void TestCsvExport::fastColumns()
{
    QFETCH(QString, format);
    QFETCH(int, width);
    constexpr int Rows = 200;
    std::mt19937 random{unsigned(width)};
    QString signalElements;
    QString members;
    for (int i = 0; i < width; ++i) {
        QString samples(Rows - i % 3, QLatin1Char('0')); // Some end early.
        for (QChar& sample : samples)
            sample = QLatin1Char(random() % 2 ? '1' : '0');
        if (i == 1)
            samples[100] = QLatin1Char('x');
        QString const id = QString::number(i);
        signalElements += signalXml(id, "s", "", samples);
        members += nodeXml(id);
    }
    QString const children = windowXml(signalElements, busXml("b", "", format, members));
    Window const window(children);
    QList<SignalData*> const columns = signalDataFromDom(window.element, true);
    QString expected;
    for (int i = 0; i < columns.first()->dataSize(); ++i) {
        expected += QString::number((i + 1) * 3);
        for (SignalData const* column : columns)
            expected += ", " + column->data(i);
        expected += ",\n";
    }
    qDeleteAll(columns);
    QString const text = QString::fromUtf8(exported(children, "us", 3));
    QVERIFY(text.endsWith("X,\n" + expected));
}

/// More columns than are written in one go, and more bytes than the buffer holds.
void TestCsvExport::manyColumns()
{
    constexpr int Rows = 1000;
    for (int columns : {63, 64, 65, 200}) {
        QString nodes;
        QByteArray expected;
        for (int i = 0; i < columns; ++i)
            nodes += nodeXml(QString::number(i % 2));
        for (int row = 0; row < Rows; ++row) {
            expected += QByteArray::number(row + 1);
            for (int i = 0; i < columns; ++i)
                expected += (row + i) % 2 ? ", 1" : ", 0";
            expected += ",\n";
        }
        QString const ups = QString("01").repeated(Rows / 2);
        QString const downs = QString("10").repeated(Rows / 2);
        QByteArray const text =
            exported(windowXml(signalXml("0", "", "", ups) + signalXml("1", "", "", downs), nodes));
        QVERIFY(text.endsWith("X,\n" + expected));
    }
}

void TestCsvExport::openFailures()
{
    Window const window("");
    for (QString const& path : {QString(), m_folder.path(), m_folder.filePath("missing/out.csv")})
        QVERIFY(!exportCSV(path, "us", 1, window.element));
}

void TestCsvExport::fullDisk()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("no /dev/full here");
    Window const window(windowXml(signalXml("0", "a", "", QString(500000, '1')), nodeXml("0")));
    QVERIFY(exportCSV("/dev/full", "us", 1, window.element));
}

QTEST_GUILESS_MAIN(TestCsvExport)
#include "tst_csvexport.moc"
