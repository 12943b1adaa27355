#include "results/windowreader.h"

#include "windows.h"

#include <QtTest>

using namespace VEK;

namespace {

QString const Records = signalXml("1", "top.a", "", "0101") + signalXml("2", "top.b", "B", "0011") +
                        signalXml("1", "top.c", "C", "1111");

/// One word a column: the label, ":" and the samples; a bus has its values in brackets.
QString columns(QString const& nodes, bool expand)
{
    Window const window(windowXml(Records, nodes));
    QStringList words;
    QList<SignalData*> const list = signalDataFromDom(window.element, expand);
    for (SignalData const* column : list) {
        QStringList values;
        for (int i = 0; i < column->dataSize(); ++i)
            values.append(column->data(i));
        words.append(column->label() + ':' +
                     (column->isBus() ? "[" + values.join('|') + "]" : values.join("")));
    }
    qDeleteAll(list);
    return words.join(' ');
}

QString records(QList<Signal> const& list)
{
    QStringList words;
    for (Signal const& record : list)
        words.append(record.label + ':' + record.id + ':' + record.data);
    return words.join(' ');
}

} // namespace

class TestWindowReader : public QObject
{
    Q_OBJECT

private slots:
    void layouts_data();
    void layouts() { compareTexts(); }
    void recordLists();
    void cells();
    void texts();
    void largeDocuments();
};

void TestWindowReader::layouts_data()
{
    addTextColumns();
    auto const both = [](char const* name, QString const& nodes, QString const& folded,
                         QString const& members = "") {
        row(name, columns(nodes + nodeXml("1", "z"), false) + ' ' + columns(nodes, true),
            folded + " z:0101 " + folded + members);
    };
    both("labels", nodeXml("1") + nodeXml("2") + nodeXml("2", "x"), "top.a:0101 B:0011 x:0011");
    both("unknown ids", nodeXml("9") + nodeXml("", "lost"), ": lost:");
    both("real ignores its attributes",
         "<Node type='bus' name='b' format='Real' realtype='unsigned' realpoint='1'>" +
             nodeXml("1") + nodeXml("2") + "</Node>",
         "b:[0.0|0.0|1.0|-1.0]", " top.a:0101 B:0011");
    both("format of the batch run, nodes of other types",
         "<Node type='divider' text='d'/><Node/><Node type='Sig' id='1'/><Other/>" +
             busXml("b", "", "4",
                    nodeXml("1") + "<Node type='divider' id='2'/><Node type='bus' id='2'/>"),
         "b:[0|2|1|3]", " top.a:0101 B:0011");
    both("lost first member", busXml("b", "", "", nodeXml("9") + nodeXml("1")), "b:[]",
         " : top.a:0101");
    both("lost last member", busXml("b", "", "", nodeXml("1") + nodeXml("9")), "b:[|||]",
         " top.a:0101 :");
}

void TestWindowReader::recordLists()
{
    Window const window(windowXml(
        Records, nodeXml("2", "two") + "<Node type='divider' id='1' text='d'/>" +
                     busXml("n", "", "", nodeXml("1", "one") + nodeXml("2") + nodeXml("9", "x")) +
                     busXml("n", "text", "", "")));
    QCOMPARE(records(baseSignalListFromDom(window.element)), "top.a:1:0101 B:2:0011 C:1:1111");
    QCOMPARE(records(signalListFromDom(window.element)), "one:1:0101 two:2:0011 C:1:1111");
    QCOMPARE(getBusNames(window.element), QStringList({"n", "text"}));
    for (char const* xml : {"", "<Signals/><Layout/>", "<Layout><Node type='bus'/></Layout>"})
        QVERIFY(signalListFromDom(Window(xml).element).isEmpty());
    QVERIFY(signalDataFromDom(QDomElement(), true).isEmpty());
}

void TestWindowReader::cells()
{
    _Signal const plain("s", "0x1");
    QCOMPARE(plain.data(1), "x");
    QCOMPARE(plain.data(-1) + plain.data(3), "");
    _Bus const ragged("b", {"01x", "1z"});
    QCOMPARE(ragged.dataSize(), 3);
    QCOMPARE(ragged.data(0) + ragged.data(1), "12"); // Only "1" sets a bit.
    QCOMPARE(ragged.data(2) + ragged.data(-1), "");
}

void TestWindowReader::texts()
{
    Window const window("<e>01<i>1<j/><j>0</j></i><!-- 9 --><![CDATA[11]]></e><e>101</e><e/>");
    QDomElement element = window.element.firstChildElement();
    QCOMPARE(elementText(element), "011011");
    element = element.nextSiblingElement();
    // Millions of samples are not copied.
    QCOMPARE(elementText(element).constData(), element.firstChild().nodeValue().constData());
    QCOMPARE(elementText(element.nextSiblingElement()) + elementText(QDomElement()), "");
}

void TestWindowReader::largeDocuments()
{
    constexpr int Depth = 5000;
    Window const deep(windowXml(
        signalXml("1", "a", "",
                  QString("<x>").repeated(Depth) + "01" + QString("</x>").repeated(Depth)),
        QString("<Node type='bus' name='b'>").repeated(Depth) +
            QString("</Node>").repeated(Depth)));
    QCOMPARE(records(baseSignalListFromDom(deep.element)), "a:1:01");
    QCOMPARE(getBusNames(deep.element), QStringList("b"));

    // A search through the list for every node would take minutes.
    constexpr int Count = 50000;
    QString signalElements;
    QString nodes;
    for (int i = 0; i < Count; ++i) {
        signalElements += signalXml(QString::number(i), "s", "", "1");
        nodes += nodeXml(QString::number(Count - 1 - i), QString::number(i));
    }
    Window const wide(windowXml(signalElements, nodes));
    QCOMPARE(signalListFromDom(wide.element).first().label, QString::number(Count - 1));
    QCOMPARE(getBusNames(wide.element), QStringList());
}

QTEST_GUILESS_MAIN(TestWindowReader)
#include "tst_windowreader.moc"
