#include "results/csvexport.h"
#include "results/windowreader.h"

#include "windows.h"

#include <QtTest>

#include <limits>

using namespace VEK;

namespace {

QString csv(QString const& children, int step = 1, QString const& unit = "us")
{
    Window const window(children);
    return exported(
        [&](QString const& path) { return exportCSV(path, unit, step, window.element); });
}

} // namespace

class TestCsvExport : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts() { compareTexts(); }
    void fastColumns_data();
    void fastColumns();
    void badFiles();
};

void TestCsvExport::texts_data()
{
    QString const abc = signalXml("0", "top.a", "", "0101") + signalXml("1", "top.b", "B", "0011") +
                        signalXml("2", "top.c", "", "1000");

    QString const a = windowXml(signalXml("0", "a", "", "10"), nodeXml("0"));
    QString const divider = "<Node type='divider' id='1' text='d'/>";

    addTextColumns();
    row("bus and plain signal",
        csv(windowXml(abc, busXml("top.bus", "T", "4", nodeXml("0", "top.a") + nodeXml("1", "B")) +
                               nodeXml("2", "top.c"))),
        "Groups:\ntop.bus =, top.a, B, ,\n\nData:\ntime unit: us, T, top.a, B, top.c,\n"
        "0, X, X, X, X,\n1, 0, 0, 0, 1,\n2, 2, 1, 0, 0,\n3, 1, 0, 1, 0,\n4, 3, 1, 1, 0,\n");
    row("nothing", csv(""), "Data:\ntime unit: us,\n0,\n");
    row("step 5", csv(a, 5), "Data:\ntime unit: us, a,\n0, X,\n5, 1,\n10, 0,\n");
    row("smallest step", csv(a, std::numeric_limits<int>::min()),
        "Data:\ntime unit: us, a,\n0, X,\n-2147483648, 1,\n-4294967296, 0,\n");
    row("format text, names and dividers in groups",
        csv("<Format>f<i>m</i>t</Format>" +
            windowXml(abc,
                      divider + busXml("n", "T", "",
                                       nodeXml("0", "other") + divider + nodeXml("9", "lost")))),
        "Groups:\nn =, top.a, , fmt,\n\nData:\ntime unit: us, T, other, lost,\n0, X, X, X,\n"
        "1, , 0, ,\n2, , 1, ,\n3, , 0, ,\n4, , 1, ,\n");
    row("bus without members first", csv(windowXml(abc, busXml("n", "", "", "") + nodeXml("0"))),
        "Groups:\nn =, , ,\n\nData:\ntime unit: us, n, top.a,\n0, X, X,\n");
    row("equal ids: the first gives the data, the last the group's name",
        csv(windowXml(signalXml("0", "a", "", "10") + signalXml("0", "b", "", "01"),
                      busXml("n", "", "binary", nodeXml("0") + nodeXml("0")))),
        "Groups:\nn =, b, b, ,\n\nData:\ntime unit: us, n, a, a,\n0, X, X, X,\n"
        "1, 11, 1, 1,\n2, 00, 0, 0,\n");
    row("unequal lengths and other characters, which are 0 in a bus; UTF-8",
        csv(windowXml(signalXml("0", "é水", "", "1zU") + signalXml("1", "b", "", "é1") +
                          signalXml("2", "c", "", ",111"),
                      busXml("б", "", "", nodeXml("0") + nodeXml("1")) + nodeXml("2")),
            1, "µs"),
        "Groups:\nб =, é水, b, ,\n\nData:\ntime unit: µs, б, é水, b, c,\n0, X, X, X, X,\n"
        "1, 2, 1, é, ,,\n2, 1, z, 1, 1,\n3, , U, , 1,\n");
}

void TestCsvExport::fastColumns_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("width");
    for (char const* format :
         {"binary", "octal", "signed decimal", "unsigned decimal", "hex", "ASCII",
          "Signed Magnitude", "Real", "Unsigned Bar Chart", "Signed Line Chart"}) {
        for (int width : {1, 2, 3, 31, 32, 53, 54, 62, 63, 64, 65, 300})
            QTest::addRow("%s/%d", format, width) << format << width;
    }
}

/// What the columns write without the formatter, in blocks of rows and runs of columns and through
/// a buffer, against the values that the columns give one by one.
void TestCsvExport::fastColumns()
{
    QFETCH(QString, format);
    QFETCH(int, width);
    std::mt19937 random{unsigned(width)};
    QString signalElements;
    QString members;
    for (int i = 0; i < width; ++i) {
        QString samples = randomSamples(random, 400 - i % 3); // Some end early.
        if (i == 1)
            samples[100] = 'x';
        signalElements += signalXml(QString::number(i), "s", "", samples);
        members += nodeXml(QString::number(i));
    }
    QString const children = windowXml(signalElements, busXml("b", "", format, members));
    Window const window(children);
    QList<SignalData*> const columns = signalDataFromDom(window.element, true);
    QString expected = "X,\n";
    for (int i = 0; i < columns.first()->dataSize(); ++i) {
        expected += QString::number((i + 1) * 3);
        for (SignalData const* column : columns)
            expected += ", " + column->data(i);
        expected += ",\n";
    }
    qDeleteAll(columns);
    QVERIFY(csv(children, 3).endsWith(expected));
}

void TestCsvExport::badFiles()
{
    Window const window(windowXml(signalXml("0", "a", "", QString(500000, '1')), nodeXml("0")));
    for (QString const& path : BadPaths)
        QVERIFY(!exportCSV(path, "us", 1, window.element));
    if (QFile::exists("/dev/full")) // A full disk ends the export and nothing else.
        QVERIFY(exportCSV("/dev/full", "us", 1, window.element));
}

QTEST_GUILESS_MAIN(TestCsvExport)
#include "tst_csvexport.moc"
