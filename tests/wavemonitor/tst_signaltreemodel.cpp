#include "model/capturecore.h"
#include "treerig.h"
#include "wavemonitor/waves/buswaveitem.h"
#include "wavemonitor/waves/signalwaveitem.h"

using namespace WaveMonitor;

namespace {

constexpr char Initial[] = "bus[1:0](t/b[1] t/b[0]) t/s[1] t/s[0] t/x New Divider";

QString xml(QDomElement const& element)
{
    QDomDocument document;
    document.appendChild(document.importNode(element, true));
    return document.toString();
}

} // namespace

class tst_SignalTreeModel : public QObject
{
    Q_OBJECT

private slots:
    void values()
    {
        TreeRig rig;
        QCOMPARE(rig.outline(), Initial);
        rig.model.setCurrentTime(2);
        QCOMPARE(rig.value(rig.at(0)), "2");
        QCOMPARE(rig.value(rig.at(0, 0)), "1");
        QCOMPARE(rig.value(rig.at(4)), "");
        for (int time : {-1, 4}) {
            rig.model.setCurrentTime(time);
            QCOMPARE(rig.value(rig.at(0)), "null");
            QCOMPARE(rig.value(rig.at(1)), "null");
        }
        // a divider is no bit, a shorter member gives 0
        rig.model.setCurrentTime(3);
        rig.model.append2Parent({rig.at(4)}, rig.at(0));
        rig.model.prepend2Parent({rig.at(0, 2)}, rig.at(0));
        QCOMPARE(rig.value(rig.at(0)), "3");
        rig.model.addRawSignal(signal(1, "t/b[0]", "01"));
        QCOMPARE(rig.value(rig.at(0)), "2");
        rig.model.addRawSignal(signal(0, "t/b[1]", "0"));
        QCOMPARE(rig.value(rig.at(0)), "null");
        QCOMPARE(rig.model.timeLength(), 4);
        QCOMPARE(rig.model.oneWindowSize(), 1);
    }

    void roles()
    {
        TreeRig rig;
        LayoutNode* const bus = rig.node(rig.at(0));
        QCOMPARE(rig.at(0).data(Qt::SizeHintRole).toSize(), QSize(0, 30));
        bus->formatter->setFormatType(DataFormat::SignedLineChart);
        QCOMPARE(rig.at(0).data(Qt::SizeHintRole).toSize(), QSize(0, 90));
        QVERIFY(!rig.at(1).data(Qt::SizeHintRole).isValid());
        QCOMPARE(rig.at(0).data(Qt::BackgroundRole).value<QColor>(), QColor(Qt::white));
        QCOMPARE(rig.at(0, 1).data(Qt::BackgroundRole).value<QColor>(), QColor(0xdd, 0xdd, 0xdd));
        QCOMPARE(rig.at(4).data(Qt::BackgroundRole).value<QColor>(), QColor(0, 255, 0));
        QVERIFY(!(rig.model.flags(rig.at(0).sibling(0, 1)) & Qt::ItemIsEditable));
        QCOMPARE(rig.model.rowCount(rig.at(0).sibling(0, 1)), 0);
    }

    void renaming()
    {
        TreeRig rig;
        auto const italic = [](QModelIndex const& index) {
            return index.data(Qt::FontRole).value<QFont>().italic();
        };
        QVERIFY(!rig.model.setData(rig.at(1), ""));
        QVERIFY(!rig.model.setData(rig.at(1).sibling(1, 1), "no"));
        QVERIFY(rig.model.setData(rig.at(1), "sig"));
        QVERIFY(rig.model.setData(rig.at(0), "data"));
        QVERIFY(rig.model.setData(rig.at(4), "break"));
        QCOMPARE(rig.outline(), "data(t/b[1] t/b[0]) sig t/s[0] t/x break");
        QVERIFY(italic(rig.at(0)) && italic(rig.at(1)) && !italic(rig.at(4)));
        QVERIFY(rig.model.setData(rig.at(0), "bus[1:0]"));
        QVERIFY(!italic(rig.at(0)));

        rig.model.ChangeShortName(rig.at(0));
        rig.model.ChangeShortName(rig.at(1));
        rig.node(rig.at(1))->nameType = LayoutNode::ShortName; // the view does this
        QCOMPARE(rig.outline(), "bus[1:0](b[1] b[0]) s[1] t/s[0] t/x break");
        QVERIFY(!italic(rig.at(1)) && !italic(rig.at(0, 0)));
        QCOMPARE(rig.model.signalElementByID(2)->text, "s[1]");
        rig.model.restoreOrgName(rig.at(1));
        QCOMPARE(rig.outline(), "bus[1:0](b[1] b[0]) s[1] t/s[0] t/x break");
        rig.model.ChangeLongName(rig.at(0));
        rig.model.ChangeLongName(rig.at(1));
        QCOMPARE(rig.outline(), "bus[1:0](t/b[1] t/b[0]) t/s[1] t/s[0] t/x break");
        rig.model.setData(rig.at(3), "mine");
        rig.model.restoreOrgName(rig.at(3));
        rig.model.restoreOrgName(rig.at(4));
        QCOMPARE(rig.outline(), "bus[1:0](t/b[1] t/b[0]) t/s[1] t/s[0] t/x break");
    }

    void grouping()
    {
        std::pair<QList<int>, QString> const cases[] = {
            {{1, 2}, "bus[1:0](t/b[1] t/b[0]) t/s[1:0](t/s[1] t/s[0]) t/x New Divider"},
            {{1, 3}, "bus[1:0](t/b[1] t/b[0]) group_0[1:0](t/s[1] t/x) t/s[0] New Divider"},
            {{3, 4}, "bus[1:0](t/b[1] t/b[0]) t/s[1] t/s[0] group_0[0:0](t/x New Divider)"},
            {{0, 4}, "bus[1:0](t/b[1] t/b[0] New Divider) t/s[1] t/s[0] t/x"},
            {{2, 0}, "group_0[2:0](t/b[1] t/b[0] t/s[0]) t/s[1] t/x New Divider"},
            {{4}, Initial}, // dividers only
        };
        for (auto const& [rows, outline] : cases) {
            TreeRig rig;
            rig.group(rows);
            QCOMPARE(rig.outline(), outline);
            QCoreApplication::processEvents();
            QCOMPARE(rig.listener.layouts, outline == Initial ? 0 : 1);
            for (QGraphicsItem* item : rig.model.waveItems())
                QVERIFY(item->boundingRect().isValid());
        }

        TreeRig numbered;
        numbered.group({1, 3});
        numbered.group({2});
        numbered.model.ungroupBus(numbered.at(1));
        QCOMPARE(numbered.outline(),
                 "bus[1:0](t/b[1] t/b[0]) t/s[1] t/x group_1[0:0](t/s[0]) New Divider");

        TreeRig refused;
        refused.model.addRawSignal(signal(5, "long", "01010"));
        refused.group({0, 5});
        refused.model.groupBus({refused.at(0, 0), refused.at(0, 1)});
        refused.model.groupBus({QModelIndex()});
        QCOMPARE(refused.outline(), QString(Initial) + " long");
    }

    void reversing()
    {
        TreeRig rig;
        QPersistentModelIndex const member = rig.at(0, 0);
        rig.model.reverse(rig.at(0));
        rig.model.reverse(rig.at(1));
        QCOMPARE(rig.outline(), "bus[1:0](t/b[0] t/b[1]) t/s[1] t/s[0] t/x New Divider");
        QCOMPARE(member, rig.at(0, 1));
        QCoreApplication::processEvents();
        QCOMPARE(rig.listener.layouts, 1);
        rig.model.ungroupBus(rig.at(0));
        QCOMPARE(rig.outline(), "t/b[0] t/b[1] t/s[1] t/s[0] t/x New Divider");
    }

    /// A signal has no members, and a bus takes no bus.
    void moving()
    {
        TreeRig rig;
        rig.model.append2Parent(rig.rows({2}), rig.at(1));
        rig.model.insertIndexesForward(QModelIndex(), rig.rows({2}));
        rig.model.append2Parent({rig.at(0, 0), rig.at(1)}, QModelIndex());
        rig.group({1, 2});
        rig.model.prepend2Parent(rig.rows({2, 1}), rig.at(0));
        QCOMPARE(rig.outline(), "bus[1:0](t/b[1] t/b[0]) t/s[1:0](t/s[1] t/s[0]) t/x New Divider");
        rig.model.DeleteDivider(QModelIndex(), rig.at(2));
        rig.model.prepend2Parent(rig.rows({3, 3}), QModelIndex());
        rig.model.addRawDivider(-3, QModelIndex());
        QCOMPARE(rig.outline(), "New Divider New Divider bus[1:0](t/b[1] t/b[0]) "
                                "t/s[1:0](t/s[1] t/s[0]) t/x");
        rig.model.DeleteDivider(QModelIndex(), rig.at(0));
        rig.settle();
        QList<QModelIndex> const moved = rig.model.append2Parent(rig.rows({0, 1}), QModelIndex());
        QCOMPARE(moved, rig.rows({2, 3}));
        QCoreApplication::processEvents();
        QCOMPARE(rig.listener.selections, 1);
        QCOMPARE(rig.listener.layouts, 0);
    }

    void selection()
    {
        TreeRig rig;
        auto* const wave = static_cast<WaveItem*>(rig.model.getItem(rig.node(rig.at(2))));
        rig.model.updateSelection({rig.at(2), rig.at(3)}, {rig.at(3)});
        QVERIFY(wave->waveSelected());
        rig.model.updateSignalWaveChart();
        QVERIFY(!wave->waveSelected());
        rig.model.selectOutView(rig.rows({0, 1}));
        rig.model.highlightItem(wave);
        QCOMPARE(rig.view.selectionModel()->selectedIndexes(), rig.rows({2}));
        rig.model.highlightItem(nullptr);
        QVERIFY(!rig.view.selectionModel()->hasSelection());
        QCOMPARE(rig.model.getItem(nullptr), nullptr);
    }

    void sharesSamples()
    {
        TreeRig rig;
        auto const bus = [&] {
            return static_cast<BusWaveItem*>(rig.model.getItem(rig.node(rig.at(0))));
        };
        QVector<int> const runs = bus()->samples().changes(0, 100);
        for (int id = 10; id < 46; ++id)
            rig.model.addRawSignal(signal(id, "further"));
        rig.node(rig.at(0))->formatter->setFormatType(DataFormat::Binary);
        rig.model.updateItems();
        QCOMPARE(bus()->samples().changes(0, 100), runs);
        auto const* const member =
            static_cast<SignalWaveItem*>(rig.model.getItem(rig.node(rig.at(0, 0))));
        QVERIFY(member->waveData().bits() == rig.model.signalElementByID(0)->data.bits());
    }

    void newSamples()
    {
        TreeRig rig;
        auto const* const bus = static_cast<BusWaveItem*>(rig.model.getItem(rig.node(rig.at(0))));
        QBitArray const ones(7, true);
        rig.model.updataSingalDatas({ones, ones, ones, ones}); // one short of the signals
        QCOMPARE(rig.model.timeLength(), 4);
        rig.model.updataSingalDatas({ones, ones, ones, ones, ones});
        QCOMPARE(bus->samples().changes(-5, 100), QVector<int>{0});
        QCOMPARE(bus->boundingRect().width(), 350.0);
    }

    void savedAndRestored()
    {
        TreeRig rig;
        rig.model.setTriggerPosition(3);
        rig.model.setWindowsNum(2);
        rig.model.setData(rig.at(1), "a \"b\" <c>");
        rig.node(rig.at(0))->color = 0x123456;
        rig.node(rig.at(0))->nameType = LayoutNode::LongName;
        rig.group({2, 3});
        DataFormatter* const chart = rig.node(rig.at(2))->formatter;
        chart->setFormatType(DataFormat::UnsignedBarChart);
        chart->setRowHeight(123);
        DataFormatter* const real = rig.node(rig.at(0))->formatter;
        real->setFormatType(DataFormat::Real);
        real->setRealType({0, VEK::FixedUnsigned, 1, 8, 24});

        QDomDocument document;
        QDomElement window = rig.model.save(document);
        QVERIFY(!window.hasAttribute("index"));
        QCOMPARE(window.firstChildElement().attribute("segments"), "2");
        QCOMPARE(window.firstChildElement().text(), "3");
        QString const saved = xml(window);
        window.setAttribute("index", 0);
        document.appendChild(window);
        QDomDocument reread;
        QVERIFY(reread.setContent(document.toString(-1)));

        TreeRig other;
        other.model.setWindowsNum(2);
        other.model.restore(reread.documentElement());
        QCOMPARE(other.outline(), rig.outline());
        QCOMPARE(xml(other.model.save(document)), saved);
        QCOMPARE(other.model.currentTime(), 3);
        QCOMPARE(other.value(other.at(0)), rig.value(rig.at(0)));
    }

    void layoutAttributes()
    {
        QString const chart = DataFormat::stringFromType(DataFormat::SignedBarChart);
        std::pair<QString, QString> const cases[] = {
            // saved attributes in the order of their names
            {"<Node type='sig'/>", "color=65280 id=0 nametype=2 text= type=sig"},
            {"<Node type='divider' text='d' color='1' nametype='1' id='7'/>",
             "color=1 nametype=1 text=d type=divider"},
            {"<Node type='bus' name='n' format='?' nametype='9' color='x'/>",
             "color=0 format=hex name=n nametype=2 text= type=bus"},
            {"<Node type='bus' format='" + chart + "' rowheight='2147483647'/>",
             "color=65280 format=" + chart + " name= nametype=2 rowheight=1000 text= type=bus"},
            {"<Node type='port'/>", ""},
        };
        for (auto const& [node, saved] : cases) {
            QDomDocument document;
            QVERIFY(document.setContent("<Layout>" + node + "</Layout>"));
            TreeRig rig;
            rig.model.restoreLayout(document.documentElement());
            QDomNamedNodeMap const attributes =
                rig.model.saveLayout(document).firstChildElement().attributes();
            QStringList texts;
            for (int i = 0; i < attributes.size(); ++i)
                texts.append(attributes.item(i).nodeName() + "=" + attributes.item(i).nodeValue());
            texts.sort();
            QCOMPARE(texts.join(' '), saved);
            QCoreApplication::processEvents();
            QCOMPARE(rig.listener.layouts, 1);
            QCOMPARE(rig.listener.selections, 1);
        }
    }

    void oddDocuments()
    {
        TreeRig rig;
        rig.model.restoreLayout(QDomElement());
        rig.model.restoreData(QDomElement());
        QDomDocument document;
        QVERIFY(document.setContent(QStringLiteral(
            "<Window index='0'><Signals><Signal id='3' name='c'>1x10</Signal><Signal id='3'/>"
            "</Signals><Layout><Node type='bus' name='e'/><Node type='bus' name='b'>"
            "<Node type='bus'/><Node type='sig' id='8'/></Node></Layout></Window>")));
        QCOMPARE(bits2String(string2Bits("1x10")), "1010");
        rig.model.restoreData(document.documentElement());
        QCOMPARE(rig.outline(), QString(Initial).replace("t/s[0]", "") + "  ");
        rig.model.restore(document.documentElement());
        QCOMPARE(rig.outline(), "e b()");
        QCOMPARE(rig.value(rig.at(1)), "null");
        QCOMPARE(rig.value(rig.at(1, 0)), "");
        QCOMPARE(rig.model.oneWindowSize(), 0);
        QCOMPARE(rig.model.signalElements().keys(), QList<int>{3});
        rig.model.NewDivider(QModelIndex());
        QCOMPARE(rig.outline(), "e b() New Divider");
    }

    void namesGoBackToTheCore()
    {
        VEK::SxCore core(0);
        VEK::SXCore_Lite lite;
        VEK::SignalItem bus;
        bus.signalList = {VEK::SignalItem(), VEK::SignalItem()};
        core.dataSignalList = lite.dataSignalList = {bus, VEK::SignalItem()};
        TreeRig rig;
        QMap<int, SignalElement*> elements = rig.model.signalElements();
        QVERIFY(!VEK::writeSignalItemFromSignalElements(&core, elements));
        QVERIFY(core.dataSignals().at(0).name.isEmpty());
        elements.remove(3);
        elements.remove(4);
        elements.value(2)->text = "two";
        QVERIFY(VEK::writeSignalItemFromSignalElements(&core, elements));
        QVERIFY(VEK::writeSignalItemFromSignalElements(&lite, elements));
        QCOMPARE(core.dataSignals().at(1).name, "t/b[0]");
        QCOMPARE(core.dataSignals().at(2).text, "two");
        QCOMPARE(lite.dataSignals(), QStringList({"t/b[1]", "t/b[0]", "t/s[1]"}));
    }
};

QTEST_MAIN(tst_SignalTreeModel)
#include "tst_signaltreemodel.moc"
