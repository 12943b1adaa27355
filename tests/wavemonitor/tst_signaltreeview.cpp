#include "monitorrig.h"

#include "tests/support/widgettools.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/tree/rowheightsetting.h"
#include "wavemonitor/tree/treecontextmenu.h"
#include "wavemonitor/waves/transitions.h"
#include "wavemonitor/waves/waveitem.h"
#include "widgets/realdialog.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMenu>
#include <QRandomGenerator>
#include <QSpinBox>
#include <QToolTip>

using namespace WaveMonitor;
using widgettools::inDialog;

namespace {

int const Clk = 1;
int const Divider = 3;
int const Idle = 4;

/// Opens the context menu as a right click does and goes through the named entries.
bool choose(MonitorRig const& rig, QStringList const& path)
{
    widgettools::rightClick(rig.tree()->viewport(), QPoint(5, 5));
    MonitorRig::settle();
    if (!widgettools::pick(qobject_cast<QMenu*>(QApplication::activePopupWidget()), path))
        return false;
    MonitorRig::settle();
    return !QApplication::activePopupWidget();
}

QStringList texts(QList<QAction*> const& actions, bool (QAction::*wanted)() const)
{
    QStringList list;
    for (QAction* action : actions) {
        if ((action->*wanted)() && !action->isSeparator())
            list.append(action->text());
    }
    return list;
}

/// Presses Return in the editor; what it does then is queued.
void finish(QLineEdit* editor)
{
    QTest::keyClick(editor, Qt::Key_Return);
    MonitorRig::settle();
}

QLineEdit* editorOf(SignalTreeView* tree)
{
    return tree->viewport()->findChild<QLineEdit*>();
}

} // namespace

class TestSignalTreeView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menu()
    {
        std::pair<QList<QPoint>, QString> const cases[] = {
            // row, member or -1; what is enabled below in this order, names are three entries
            {{}, "New Divider, Format"},
            {{{Clk, -1}}, "Rename, names, New Divider, Format, Color"},
            {{{0, -1}},
             "Ungroup, Rename, Restore Original Name, Reverse, Long Name, Short Name, New Divider, "
             "Format, Color"},
            {{{0, 1}, {0, 2}}, "names, New Divider, Format, Color"},
            {{{Clk, -1}, {Idle, -1}}, "Group, names, New Divider, Format, Color"},
            {{{Clk, -1}, {Divider, -1}}, "names, New Divider, Delete Divider, Format, Color"},
            {{{0, -1}, {Divider, -1}},
             "Ungroup, Group, names, New Divider, Delete Divider, Format, Color"},
            {{{Divider, -1}}, "Rename, New Divider, Delete Divider, Color"},
        };
        for (auto const& [selected, enabled] : cases) {
            MonitorRig rig;
            QList<QModelIndex> rows;
            for (QPoint const& place : selected)
                rows.append(rig.row(place.x(), place.y()));
            rig.select(rows);

            QList<QAction*> const actions = rig.tree()->contextMenuDelegate()->actions();
            QCOMPARE(
                texts(actions, &QAction::isEnabled).join(", "),
                QString(enabled).replace("names", "Restore Original Name, Long Name, Short Name"));
            QList<QAction*> const formats = actions.at(10)->menu()->actions();
            QCOMPARE(formats.size(), 14);
            QVERIFY(formats.at(8)->isSeparator());
            for (int i = 9; i < 14; ++i) // charts and the row height
                QCOMPARE(formats.at(i)->isEnabled(), rows.contains(rig.row(0)));
        }
    }

    void checksWhatRowsAgreeOn()
    {
        MonitorRig rig;
        rig.select({rig.row(0), rig.row(Clk)});
        QVERIFY(choose(rig, {"Color", "Orange"}));
        QVERIFY(choose(rig, {"Format", "Signed Decimal"}));
        QVERIFY(choose(rig, {"Short Name"}));
        auto const wave = [&](QModelIndex const& row) {
            return static_cast<WaveItem*>(rig.model()->getItem(SignalTreeView::nodeAt(row)));
        };
        QCOMPARE(wave(rig.row(Clk))->color(), QColor(0xffa500));
        QCOMPARE(wave(rig.row(0, 1))->color(), QColor(0, 255, 0));
        rig.select({rig.row(0, 1)});
        QVERIFY(choose(rig, {"Color", "Orange"}));
        QCOMPARE(wave(rig.row(0, 1))->color(), QColor(0xffa500));
        rig.select({rig.row(0), rig.row(Clk)});
        QVERIFY(wave(rig.row(Clk))->waveSelected() && !wave(rig.row(0, 1))->waveSelected());

        auto const checked = [&] {
            QStringList all;
            QList<QAction*> const actions = rig.tree()->contextMenuDelegate()->actions();
            all += texts(actions, &QAction::isChecked);
            all += texts(actions.at(10)->menu()->actions(), &QAction::isChecked);
            return all + texts(actions.at(11)->menu()->actions(), &QAction::isChecked);
        };
        QCOMPARE(checked(), (QStringList{"Short Name", "Signed Decimal", "Orange"}));
        rig.select({rig.row(Clk), rig.row(Idle)}); // signals have no format, the rest differs
        QCOMPARE(checked(), QStringList());
    }

    void groupsAndTakesApart()
    {
        MonitorRig rig;
        rig.select({rig.row(Idle), rig.row(Clk)});
        QVERIFY(choose(rig, {"Group"}));
        QCOMPARE(rig.rows(), QString("data[3:0](top/data[3] top/data[2] top/data[1] top/data[0]) "
                                     "group_0[1:0](top/clk top/idle) top/ready New Divider"));
        rig.select({rig.row(0), rig.row(1)});
        QVERIFY(choose(rig, {"Ungroup"}));
        QCOMPARE(rig.rows(), QString("top/data[3] top/data[2] top/data[1] top/data[0] "
                                     "top/clk top/idle top/ready New Divider"));
        rig.select({rig.row(0), rig.row(1)});
        QVERIFY(choose(rig, {"Group"}));
        rig.select({rig.row(0)});
        QVERIFY(choose(rig, {"Reverse"}));
        QVERIFY(rig.rows().startsWith("top/data[3:2](top/data[2] top/data[3]) "));
    }

    void renames()
    {
        MonitorRig rig;
        auto const rename = [&](int row) {
            rig.select({rig.row(row)});
            return choose(rig, {"Rename"}) ? editorOf(rig.tree()) : nullptr;
        };
        QPointer<QLineEdit> editor = rename(Divider);
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, "a b/c[1:0]-"); // what the filter refuses does not even appear
        QCOMPARE(editor->text(), QString("abc[1:0]"));
        QVERIFY(QToolTip::text().contains("letters, digits"));
        finish(editor);
        QCOMPARE(rig.text(rig.row(Divider)), QString("abc[1:0]"));

        editor = rename(Divider);
        QVERIFY(editor);
        editor->clear();
        finish(editor); // no name is no new name
        QCOMPARE(rig.text(rig.row(Divider)), QString("abc[1:0]"));

        editor = rename(Clk);
        QVERIFY(editor);
        QCOMPARE(editor->text(), QString("top/clk"));
        finish(editor); // as it came, "/" or not
        QTRY_VERIFY(!editor);
        QVERIFY(!rig.row(Clk).data(Qt::FontRole).value<QFont>().italic());

        editor = rename(Clk);
        QTest::keyClick(editor, Qt::Key_End);
        QTest::keyClick(editor, Qt::Key_2);
        QToolTip::hideText();
        QTRY_VERIFY(QToolTip::text().isEmpty());
        finish(editor); // the filter refuses it for its "/", and says so
        MonitorRig::settle();
        QVERIFY(editor && editor->isVisible());
        QVERIFY(QToolTip::text().contains("letters, digits"));
        QTest::keyClick(editor, Qt::Key_Escape);
        QTRY_VERIFY(!editor);
        QCOMPARE(rig.text(rig.row(Clk)), QString("top/clk"));
    }

    void changesNames()
    {
        MonitorRig rig;
        rig.select({rig.row(0), rig.row(Clk), rig.row(Divider)});
        QVERIFY(choose(rig, {"Short Name"}));
        QVERIFY(rig.rows().startsWith("data[3:0](data[3] data[2] data[1] data[0]) clk top/ready "));
        QVERIFY(choose(rig, {"Restore Original Name"})); // the form rules the name
        QCOMPARE(rig.text(rig.row(Clk)), QString("clk"));
        QVERIFY(choose(rig, {"Long Name"}));
        QCOMPARE(rig.text(rig.row(Clk)), QString("top/clk"));
        QCOMPARE(SignalTreeView::nodeAt(rig.row(Clk))->nameType, 0);
    }

    void dividers()
    {
        MonitorRig rig;
        rig.tree()->expand(rig.row(0));
        rig.select({rig.row(0, 2), rig.row(Idle)});
        QVERIFY(choose(rig, {"New Divider"})); // above the bus that the topmost row lies in
        QVERIFY(rig.rows().startsWith("New Divider data[3:0]("));
        QVERIFY(editorOf(rig.tree()));
        QTest::keyClicks(editorOf(rig.tree()), "head");
        finish(editorOf(rig.tree()));
        MonitorRig::settle();
        rig.select({});
        QVERIFY(choose(rig, {"New Divider"}));
        finish(editorOf(rig.tree()));
        QVERIFY(rig.rows().startsWith("head data[3:0]("));
        QVERIFY(rig.rows().endsWith("top/idle New Divider"));

        rig.select({rig.row(0), rig.row(2), rig.row(4), rig.row(6)});
        QVERIFY(choose(rig, {"Delete Divider"}));
        QCOMPARE(rig.rows(), QString("data[3:0](top/data[3] top/data[2] top/data[1] top/data[0]) "
                                     "top/clk top/ready top/idle"));

        rig.model()->addRawDivider(0, rig.row(0));
        rig.model()->append2Parent({rig.row(0)}, rig.row(1));
        rig.model()->append2Parent({rig.row(0, 0), rig.row(0, 1), rig.row(0, 2), rig.row(0, 3)},
                                   {});
        rig.select({rig.row(0), rig.row(0, 0), rig.row(1)}); // a bus and all that it holds
        QVERIFY(choose(rig, {"Delete Divider"}));
        QVERIFY(rig.rows().startsWith("top/clk top/ready top/idle top/data[3]"));
    }

    void rowHeight()
    {
        MonitorRig rig;
        rig.select({rig.row(0)});
        QVERIFY(choose(rig, {"Format", "Unsigned Line Chart"}));
        auto const set = [&](int offered, int wanted, bool accept) {
            inDialog<RowHeightSetting>([=](RowHeightSetting* dialog) {
                QCOMPARE(dialog->windowTitle(), QString("Row Height Setting"));
                auto* box = dialog->findChild<QSpinBox*>();
                QCOMPARE(box->value(), offered);
                box->setValue(wanted);
                QTest::keyClick(dialog, accept ? Qt::Key_Return : Qt::Key_Escape);
            });
            return choose(rig, {"Format", "Row Height Setting"});
        };
        DataFormatter const* format = SignalTreeView::nodeAt(rig.row(0))->formatter;
        QVERIFY(set(90, 200, false));
        QCOMPARE(format->rowHeight(), 90);
        QVERIFY(set(90, 200, true));
        QCOMPARE(format->rowHeight(), 200);
        QCOMPARE(rig.tree()->visualRect(rig.row(0)).height(), 200);

        rig.select({rig.row(Clk), rig.row(Idle)});
        QVERIFY(choose(rig, {"Group"}));
        rig.select({rig.row(0), rig.row(Clk)}); // 200 and 90
        QVERIFY(set(90, 2000, true));
        QCOMPARE(format->rowHeight(), 1000);
    }

    void realFormat()
    {
        MonitorRig rig;
        DataFormatter const* format = SignalTreeView::nodeAt(rig.row(0))->formatter;
        auto const open = [&](QDialogButtonBox::StandardButton first) {
            rig.select({rig.row(0), rig.row(Clk)});
            inDialog<VEK::RealDialog>([=](VEK::RealDialog* dialog) {
                auto* box = dialog->findChild<QDialogButtonBox*>();
                dialog->findChild<QSpinBox*>()->setValue(2);
                QTest::mouseClick(box->button(first), Qt::LeftButton);
                if (first == QDialogButtonBox::Apply) {
                    QCOMPARE(format->formatType(), DataFormat::Real);
                    QTest::mouseClick(box->button(QDialogButtonBox::Cancel), Qt::LeftButton);
                }
            });
            return choose(rig, {"Format", "Real"});
        };
        QVERIFY(open(QDialogButtonBox::Cancel));
        QCOMPARE(format->formatType(), DataFormat::Hexadecimal);
        QVERIFY(open(QDialogButtonBox::Apply)); // and then Cancel: what was applied stays
        QCOMPARE(format->formatType(), DataFormat::Real);
        QCOMPARE(format->realType().binaryPoint, 2);
    }

    /// In letters that stand out from the divider's colour.
    void dividerNamesAreReadable()
    {
        MonitorRig rig;
        for (auto const& [rgb, blackLetters] :
             {std::pair(0x00FF00, true), std::pair(0xFFA500, true), std::pair(0x00008B, false),
              std::pair(0xCE0000, false)}) {
            rig.select({rig.row(3)});
            rig.tree()->onWaveColorSetted(rgb);
            rig.tree()->clearSelection();
            MonitorRig::settle();
            QRect const name = rig.tree()->visualRect(rig.row(3));
            QImage const image = rig.tree()->viewport()->grab(name).toImage();
            QSet<QRgb> shades;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    shades.insert(image.pixel(x, y));
            }
            bool const seen = widgettools::textIsSeen();
            QCOMPARE(shades.contains(qRgb(0, 0, 0)), seen && blackLetters);
            QCOMPARE(shades.contains(qRgb(255, 255, 255)), seen && !blackLetters);
        }
    }

    void rowsStandAtTheirWaves()
    {
        QPalette const before = QApplication::palette();
        for (auto const& [height, dark] : // a low monitor has to scroll
             {std::pair(800, false), std::pair(260, false), std::pair(260, true)}) {
            QApplication::setPalette(dark ? QPalette(QColor(40, 40, 40)) : before);
            MonitorRig rig;
            rig.widget->resize(1000, height);

            auto const verify = [&](char const* after) {
                MonitorRig::settle();
                QScrollBar* const bars[] = {rig.tree()->verticalScrollBar(),
                                            rig.waves()->verticalScrollBar()};
                QVERIFY2(bars[0]->maximum() == bars[1]->maximum(), after);
                QVERIFY2(bars[0]->value() == bars[1]->value(), after);
                for (QModelIndex index = rig.row(0); index.isValid();
                     index = rig.tree()->indexBelow(index)) {
                    QGraphicsItem* item = rig.model()->getItem(SignalTreeView::nodeAt(index));
                    QVERIFY2(item && item->isVisible(), after);
                    int const waveTop = rig.waves()->mapFromScene(item->scenePos()).y();
                    QRect const row = rig.tree()->visualRect(index);
                    QPoint const inTree =
                        rig.tree()->viewport()->mapTo(rig.widget.get(), row.topLeft());
                    QPoint const inWaves =
                        rig.waves()->viewport()->mapTo(rig.widget.get(), QPoint(0, waveTop));
                    QVERIFY2(inTree.y() == inWaves.y(), after);
                    QVERIFY2(row.height() == int(item->boundingRect().height()), after);
                }
            };
            verify("the start");
            rig.tree()->expand(rig.row(0));
            verify("expanding");
            rig.select({rig.row(0)});
            QVERIFY(choose(rig, {"Format", "Signed Bar Chart"}));
            verify("a chart");
            rig.tree()->verticalScrollBar()->setValue(37);
            verify("scrolling the tree");
            rig.waves()->verticalScrollBar()->setValue(1000);
            verify("scrolling the waves");
            rig.tree()->collapse(rig.row(0));
            verify("collapsing");
            SignalTreeView::nodeAt(rig.row(0))->formatter->setRowHeight(333);
            QVERIFY(choose(rig, {"Format", "Unsigend Bar Chart"}));
            verify("a higher row");
            rig.select({rig.row(0), rig.row(Clk)});
            QVERIFY(choose(rig, {"Group"}));
            verify("grouping");
            rig.waves()->zoomOut();
            verify("zooming");
            rig.select({});
            rig.tree()->onNewDivider();
            verify("a divider at the end");
            for (int id = 10; id < 15; ++id)
                rig.widget->addData(MonitorRig::signal(id, "more", [](int) { return true; }));
            rig.tree()->scrollToBottom();
            QCOMPARE(rig.waves()->verticalScrollBar()->value(),
                     rig.tree()->verticalScrollBar()->value());
            verify("rows that are added and scrolled to");
            rig.tree()->collapse(rig.row(0));
            MonitorRig::settle();
            rig.model()->append2Parent({rig.row(0, 0), rig.row(0, 1)}, {});
            verify("rows that leave a closed bus");
            rig.widget->addData(BusData{"empty", "", {}});
            rig.model()->layout()->root()->children.last()->formatter->setFormatType(
                DataFormat::SignedBarChart);
            rig.tree()->doItemsLayout();
            verify("a bus without members");
        }
        QApplication::setPalette(before);
    }

    void nearestTransitionOfAllRows()
    {
        MonitorRig rig;
        SignalTreeView const* tree = rig.tree();
        QCOMPARE(tree->getNextTransition(3), 3); // nothing selected
        rig.select({rig.row(2), rig.row(0), rig.row(Idle), rig.row(Divider)});
        QCOMPARE(tree->getNextTransition(101), 105);
        QCOMPARE(tree->getNextTransition(105), 110);
        QCOMPARE(tree->getPreviousTransition(119), 110);
    }

    void transitionsOfRandomRows()
    {
        QRandomGenerator random(4);
        for (int round = 0; round < 40; ++round) {
            RowSamples row;
            row.length = 1 + int(random.bounded(300u));
            for (int k = 0; k < 3; ++k) {
                QBitArray bits(row.length - (k == 2 ? int(random.bounded(row.length)) : 0));
                int const sparse = 1 + int(random.bounded(120u));
                for (int t = 1; t < bits.size(); ++t)
                    bits.setBit(t, bits.testBit(t - 1) != (random.bounded(sparse) == 0));
                row.arrays.append(bits);
            }
            auto const value = [&](int t) {
                int bits = 0;
                for (QBitArray const& array : qAsConst(row.arrays))
                    bits = bits * 2 + int(t < array.size() && array.testBit(t));
                return bits;
            };
            for (int time = -1; time <= row.length; ++time) {
                int next = time < 0 ? row.length : time + 1;
                while (next < row.length && value(next) == value(time))
                    ++next;
                QCOMPARE(nextChange(row, time), next < row.length ? next : -1);
                int before = time > 0 && time < row.length ? time - 2 : -1;
                while (before >= 0 && value(before) == value(time - 1))
                    --before;
                QCOMPARE(previousChange(row, time), before < 0 ? -1 : before + 1);
            }
        }
    }
};

QTEST_MAIN(TestSignalTreeView)
#include "tst_signaltreeview.moc"
