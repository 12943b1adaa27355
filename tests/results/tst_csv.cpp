#include "model/bits.h"
#include "results/csvexport.h"
#include "results/csvimport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"
#include "results/windowreader.h"

#include "windows.h"

#include <QTemporaryFile>
#include <QtTest>

using namespace VEK;

namespace {

/// Paths at which no file can be opened.
QStringList const BadPaths{QString(), QStringLiteral("/"), QStringLiteral("/missing/out")};

QString csv(QString const& children, int step = 1)
{
    Window const window(children);
    return exported(
        [&](QString const& path) { return exportCSV(path, "us", step, window.element); });
}

/// What is read from a file with that text: the items, and the bits of each column.
QString csvRead(QByteArray const& text)
{
    TempFolder const folder;
    QList<SignalItem> items;
    QList<QBitArray> data;
    if (!readCsv(folder.write("in.csv", text), items, data))
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

class TestCsv : public QObject
{
    Q_OBJECT

private slots:
    void imports_data()
    {
        addTextColumns();
        row("a bus, its members and a signal; the format text is no member",
            csvRead("Groups:\nb =, m, n, f,\n\nData:\ntime unit: us, b, m, n, s,\n0, X, X, X, X,\n"
                    "1, 2, 1, 0, 1,\n2, 0, 0, 0, 0,\n3, 3, 1, 1, 0,\n"),
            "b(m n)|s = 0101 0101 0001 0100");
        row("the bus goes by another name",
            csvRead("Groups:\nb =, m, ,\n\nData:\ntime unit: us, B, m,\n0, X, X,\n"),
            "b(m)|B = 0 0");
        row("names without text, blanks in front, UTF-8",
            csvRead(
                "Groups:\n =, m, , ,\n  б =,  é, ,\n\ntime unit: µs, , m, ,   б,  é, 水,\n1,\n"),
            "(m )|  б( é)|水 = 0 0 0 0 0 0");
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
            csvRead(
                "time unit: us, b, s,\n1, \"x, y\", 0,\n2, \", \", 1,\n3, \", 1,\n4, \"a, 0,\n"),
            "b|s = 1111 0110");
        row("the older layout", csvRead("Group: b, m\ntime unit: us, a,\n0, X,\n"), "refused");
        row("bits that would fill gigabytes, of lines without values",
            csvRead("time unit: us" + QByteArray(", a").repeated(20000) +
                    QByteArray("\n").repeated(20000)),
            "refused");
        QByteArray const open = QByteArray(", \"a").repeated(200000); // More than one read holds.
        row("quotes that close nothing",
            csvRead("time unit: us" + QByteArray(", a").repeated(200000) + ",\n1" + open + ",\n")
                .section(" = ", 1),
            QString("1 ").repeated(200000).chopped(1));
        row("an endless line", csvRead(QByteArray(17 * 1024 * 1024, 'x')), "refused");
    }

    void imports() { compareTexts(); }
    /// Samples deep in an element, and more nodes than could each search the list in time.
    void largeDocuments()
    {
        constexpr int Depth = 5000;
        constexpr int Count = 50000;
        QString const samples =
            QString("<x>").repeated(Depth) + "01" + QString("</x>").repeated(Depth);
        QString signalElements = signalXml("x", "deep", "", samples);
        QString nodes = nodeXml("x");
        for (int i = 0; i < Count; ++i) {
            signalElements += signalXml(QString::number(i), "s", "", "1");
            nodes += nodeXml(QString::number(Count - 1 - i));
        }
        QString const text = csv(windowXml(signalElements, nodes));
        QVERIFY(text.startsWith("Data:\ntime unit: us, deep, s, s,"));
        QVERIFY(text.endsWith("\n2, 1, " + QString(", ").repeated(Count - 1) + ",\n"));

        QString const buses = QString("<Node type='bus' name='b'>").repeated(Depth) +
                              QString("</Node>").repeated(Depth);
        QCOMPARE(getBusNames(Window(windowXml("", buses)).element), QStringList("b"));
    }

    /// What the columns write without the formatter, in blocks of rows and runs of columns and
    /// through a buffer, against the values that the columns give one by one.
    void manyColumns()
    {
        std::mt19937 random{1};
        for (int width : {1, 3, 32, 53, 54, 63, 64, 65, 300}) {
            QString signalElements;
            QString members;
            for (int i = 0; i < width; ++i) {
                QString samples = randomSamples(random, 400 - i % 3); // Some end early.
                if (i == 1)
                    samples[100] = 'x';
                signalElements += signalXml(QString::number(i), "s", "", samples);
                members += nodeXml(QString::number(i));
            }
            QString nodes = members;
            for (char const* format : {"binary", "octal", "signed decimal", "unsigned decimal",
                                       "hex", "ASCII", "Signed Magnitude", "Real"})
                nodes += busXml("b", format, members);
            QString const children = windowXml(signalElements, nodes);
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
    }

    /// Signals before, in and behind a bus that is wide enough for every character.
    void roundTrips()
    {
        constexpr int Last = 26;
        TempFolder const folder;
        QString const path = folder.path("out.csv");
        std::mt19937 random{1};
        for (char const* format : {"hex", "binary", "ASCII", "signed decimal", "Real"}) {
            for (int rows : {1, 63, 64, 20000}) {
                QStringList samples;
                QString signalElements;
                QString members;
                for (int i = 0; i <= Last; ++i) {
                    samples.append(randomSamples(random, rows));
                    signalElements += signalXml(QString::number(i), "s", "", samples.last());
                    members += i > 0 && i < Last ? nodeXml(QString::number(i)) : "";
                }
                Window const window(windowXml(
                    signalElements, nodeXml("0") + busXml("b", format, members) + nodeXml("26")));
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

    /// All formats, at paths and on devices, with what fits into the buffers and what does not.
    void refusedWrites()
    {
        QTemporaryFile roomy;
        QVERIFY(roomy.open());
        QFile full("/dev/full");
        QList<SignalItem> items;
        QList<QBitArray> data;
        for (int samples : {1, 500000}) {
            Window const shown(
                windowXml(signalXml("0", "a", "", QString(samples, '1')), nodeXml("0")));
            QDomElement const& window = shown.element;
            auto const results = [&](auto&& target) {
                return QList<bool>{exportCSV(target, "us", 1, window),
                                   exportPRN(target, "us", 1, window, PrnAllColumns),
                                   exportPRN(target, "us", 1, window, QList<int>{0}),
                                   exportVCD(target, "m", "c", true, "us", 1, 0, window)};
            };
            QCOMPARE(results(roomy), QList<bool>({true, true, true, true}));
            for (QString const& path : BadPaths)
                QVERIFY(!results(path).contains(true) && !readCsv(path, items, data));
            if (full.isOpen() || full.open(QIODevice::WriteOnly)) {
                QCOMPARE(results(full), QList<bool>({false, false, false, false}));
                // a full disk ends the export and nothing else
                QVERIFY(exportCSV("/dev/full", "us", 1, window));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestCsv)
#include "tst_csv.moc"
