#include "results/windowreader.h"

#include "windows.h"

#include <QtTest>

#include <memory>

using namespace VEK;

namespace {

QString const Signals3 = signalXml("1", "top.a", "", "0101") +
                         signalXml("2", "top.b", "B", "0011") +
                         signalXml("1", "top.c", "C", "1111");

/// One word a column: the label, ":" and the samples; a bus has its values in brackets.
QString columns(QString const& children, bool expand)
{
    Window const window(children);
    QStringList words;
    QList<SignalData*> const list = signalDataFromDom(window.element, expand);
    for (SignalData const* column : list) {
        QStringList values;
        for (int i = 0; i < column->dataSize(); ++i)
            values.append(column->data(i));
        words.append(column->label() + QLatin1Char(':') +
                     (column->isBus() ? QStringLiteral("[%1]").arg(values.join(QLatin1Char('|')))
                                      : values.join(QString())));
    }
    qDeleteAll(list);
    return words.join(QLatin1Char(' '));
}

QString records(QList<Signal> const& list)
{
    QStringList words;
    for (Signal const& record : list)
        words.append(QStringList{record.label, record.id, record.data}.join(QLatin1Char(':')));
    return words.join(QLatin1Char(' '));
}

} // namespace

class TestWindowReader : public QObject
{
    Q_OBJECT

private slots:
    void columns_data();
    void columns();
    void recordLists();
    void busNames();
    void cells();
    void texts();
    void deepNesting();
    void manySignals();
};

void TestWindowReader::columns_data()
{
    QTest::addColumn<QString>("nodes");
    QTest::addColumn<QString>("expanded");
    QTest::addColumn<QString>("folded");
    auto const row = [](char const* name, QString const& nodes, char const* expanded,
                        char const* folded) {
        QTest::newRow(name) << nodes << QString::fromLatin1(expanded)
                            << QString::fromLatin1(folded);
    };
    row("no nodes", QString(), "", "");
    row("labels", nodeXml("1") + nodeXml("2") + nodeXml("2", "x"), "top.a:0101 B:0011 x:0011",
        "top.a:0101 B:0011 x:0011");
    row("unknown ids", nodeXml("9") + nodeXml("", "lost"), ": lost:", ": lost:");
    row("other types", "<Node type='divider' text='d'/><Node/><Node type='Sig' id='1'/><Other/>",
        "", "");
    row("bus", busXml("top.bus", "", "", nodeXml("1") + nodeXml("2", "m")) + nodeXml("2"),
        "top.bus:[0|2|1|3] top.a:0101 m:0011 B:0011", "top.bus:[0|2|1|3] B:0011");
    row("bus text and format", busXml("top.bus", "T", "binary", nodeXml("2") + nodeXml("1")),
        "T:[00|01|10|11] B:0011 top.a:0101", "T:[00|01|10|11]");
    row("format of the batch run", busXml("b", "", "4", nodeXml("1") + nodeXml("2")),
        "b:[0|2|1|3] top.a:0101 B:0011", "b:[0|2|1|3]");
    row("real ignores its attributes",
        "<Node type='bus' name='b' format='Real' realtype='unsigned' realpoint='1'>" +
            nodeXml("1") + nodeXml("2") + "</Node>",
        "b:[0.0|0.0|1.0|-1.0] top.a:0101 B:0011", "b:[0.0|0.0|1.0|-1.0]");
    row("divider among the members",
        busXml("b", "", "", nodeXml("1") + "<Node type='divider' id='2' text='d'/>" + nodeXml("2")),
        "b:[0|2|1|3] top.a:0101 B:0011", "b:[0|2|1|3]");
    row("member of another type", busXml("b", "", "", "<Node type='bus' id='2'/>"),
        "b:[0|0|1|1] B:0011", "b:[0|0|1|1]");
    row("no members", busXml("b", "", "", ""), "b:[]", "b:[]");
    row("lost first member", busXml("b", "", "", nodeXml("9") + nodeXml("1")), "b:[] : top.a:0101",
        "b:[]");
    row("lost last member", busXml("b", "", "", nodeXml("1") + nodeXml("9")),
        "b:[|||] top.a:0101 :", "b:[|||]");
}

void TestWindowReader::columns()
{
    QFETCH(QString, nodes);
    QFETCH(QString, expanded);
    QFETCH(QString, folded);
    QCOMPARE(::columns(windowXml(Signals3, nodes), true), expanded);
    QCOMPARE(::columns(windowXml(Signals3, nodes), false), folded);
}

void TestWindowReader::recordLists()
{
    Window const window(
        windowXml(Signals3, nodeXml("2", "two") + "<Node type='divider' id='1' text='d'/>" +
                                busXml("b", "ignored", "",
                                       nodeXml("1", "one") + nodeXml("2") + nodeXml("9", "lost"))));
    QCOMPARE(records(baseSignalListFromDom(window.element)),
             QStringLiteral("top.a:1:0101 B:2:0011 C:1:1111"));
    QCOMPARE(records(signalListFromDom(window.element)),
             QStringLiteral("one:1:0101 two:2:0011 C:1:1111"));
    for (char const* xml : {"", "<Signals/><Layout/>", "<Layout><Node type='bus'/></Layout>"}) {
        Window const broken(QString::fromLatin1(xml));
        QVERIFY(baseSignalListFromDom(broken.element).isEmpty());
        QVERIFY(signalListFromDom(broken.element).isEmpty());
    }
    QVERIFY(signalDataFromDom(QDomElement(), true).isEmpty());
}

void TestWindowReader::busNames()
{
    Window const window(windowXml(Signals3, nodeXml("1") + busXml("n", "", "", nodeXml("1")) +
                                                busXml("n", "text", "", "")));
    QCOMPARE(getBusNames(window.element), QStringList({"n", "text"}));
}

void TestWindowReader::cells()
{
    _Signal const plain(QStringLiteral("s"), QStringLiteral("0x1"));
    QCOMPARE(plain.data(1), QStringLiteral("x"));
    QVERIFY(plain.data(-1).isEmpty() && plain.data(3).isEmpty());
    _Bus const ragged(QStringLiteral("b"), {QStringLiteral("01x"), QStringLiteral("1z")});
    QCOMPARE(ragged.dataSize(), 3);
    QCOMPARE(ragged.data(0), QStringLiteral("1"));
    QCOMPARE(ragged.data(1), QStringLiteral("2")); // Only "1" sets a bit.
    QVERIFY(ragged.data(2).isEmpty() && ragged.data(-1).isEmpty());
}

void TestWindowReader::texts()
{
    Window const window(QStringLiteral("<e>01<i>1<j/><j>0</j></i><!-- 9 --><![CDATA[11]]></e>"
                                       "<e>101</e><e/><f>8</f>"));
    QDomElement element = window.element.firstChildElement();
    QCOMPARE(elementText(element), QStringLiteral("011011"));
    element = element.nextSiblingElement();
    // Millions of samples are not copied.
    QCOMPARE(elementText(element).constData(), element.firstChild().nodeValue().constData());
    QVERIFY(elementText(element.nextSiblingElement()).isEmpty());
    QVERIFY(elementText(QDomElement()).isEmpty());
}

void TestWindowReader::deepNesting()
{
    constexpr int Depth = 5000;
    Window const window(
        windowXml(signalXml("1", "a", "",
                            QStringLiteral("<x>").repeated(Depth) + QStringLiteral("01") +
                                QStringLiteral("</x>").repeated(Depth)),
                  QStringLiteral("<Node type='bus' name='b'>").repeated(Depth) + nodeXml("1") +
                      QStringLiteral("</Node>").repeated(Depth)));
    QCOMPARE(records(baseSignalListFromDom(window.element)), QStringLiteral("a:1:01"));
    QCOMPARE(getBusNames(window.element), QStringList({"b"}));
}

void TestWindowReader::manySignals()
{
    // A search through the list for every node would take minutes.
    constexpr int Count = 50000;
    QString signalElements;
    QString nodes;
    for (int i = 0; i < Count; ++i) {
        signalElements += signalXml(QString::number(i), QStringLiteral("s"), QString(), "1");
        nodes += nodeXml(QString::number(Count - 1 - i), QStringLiteral("t%1").arg(i));
    }
    Window const window(windowXml(signalElements, nodes));
    QCOMPARE(signalListFromDom(window.element).first().label, QStringLiteral("t%1").arg(Count - 1));
    QList<SignalData*> const list = signalDataFromDom(window.element, true);
    QCOMPARE(list.size(), Count);
    qDeleteAll(list);
}

QTEST_GUILESS_MAIN(TestWindowReader)
#include "tst_windowreader.moc"
