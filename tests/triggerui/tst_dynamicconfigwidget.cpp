#include "tests/support/widgettools.h"
#include "triggerui/dynamicconfigwidget.h"
#include "triggerui/matchunitmodel.h"

#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QListWidget>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>

#include <limits>

using namespace VEK;
using namespace widgettools;

namespace {

/// What a row of the table shows.
QStringList row(QAbstractItemModel const& model, int number)
{
    QStringList texts;
    for (int column = 0; column < model.columnCount(); ++column)
        texts << model.index(number, column).data().toString();
    return texts;
}

/// A dynamic core with two expressions; units 0 and 5 are enabled, unit 5 bound to port 3.
struct Core : SxCore
{
    Core() : SxCore(0)
    {
        storageDepth = 64;
        captureAmount = 16;
        windowNum = 2;
        triggerPos = 5;
        expressionType = ExpressionDynamic;
        expressions = QStringList{"M0", "M0&M5"};
        getTrigger(3)->signalList = {SignalItem{"a", "", {}}, SignalItem{"b", "", {}}};
        matchUnit(0)->enabled = true;
        matchUnit(0)->value0 = "1";
        MatchUnit* const range = matchUnit(5);
        range->enabled = true;
        range->trigger = getTrigger(3);
        range->matchType = MatchRange;
        range->func = FuncInRange;
        range->counterEnable = true;
        range->counter = 7;
        range->value0 = "01";
        range->value1 = "10";
    }
};

struct Panel : DynamicConfigWidget
{
    Panel() { setEnabled(true); }

    QComboBox* const window = findChild<QComboBox*>("comboBoxWindow");
    QComboBox* const amount = findChild<QComboBox*>("comboBoxAmount");
    QSpinBox* const position = findChild<QSpinBox*>("spinBoxTrPos");
    QListWidget* const list = findChild<QListWidget*>("listExpressions");
    QTableView* const table = findChild<QTableView*>("tableUnit");
};

} // namespace

class DynamicConfigWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void unitTable()
    {
        Core core;
        MatchUnitModel model;
        QAbstractItemModelTester const tester(&model);
        model.setMatcherList({core.matchUnit(0), core.matchUnit(5)});
        QCOMPARE(row(model, 0),
                 (QStringList{"M0", "M0", "NONE", type2string(MatchBasic), "==", "Disabled", "1"}));
        QCOMPARE(row(model, 1), (QStringList{"M5", "M5", "Trigger 3", type2string(MatchRange),
                                             func2string(FuncInRange), "7", "01 : 10"}));
        QCOMPARE(model.headerData(6, Qt::Horizontal).toString(), QString("Value"));
        QVERIFY(model.flags(model.index(0, 0)) & Qt::ItemIsUserCheckable);

        QSignalSpy modified(&model, &MatchUnitModel::modified);
        QVERIFY(!model.setData(model.index(0, 1), Qt::Unchecked, Qt::CheckStateRole));
        QVERIFY(!model.setData(model.index(0, 0), "M7"));
        QVERIFY(model.setData(model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(modified.count(), 1);
        QVERIFY(!core.matchUnit(0)->enabled);
        QCOMPARE(model.index(0, 4).data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::gray));
        QVERIFY(!model.index(1, 4).data(Qt::ForegroundRole).isValid());
        model.reset();
        QCOMPARE(model.rowCount(), 0);
    }

    void amounts()
    {
        std::tuple<int, int, QString> const cases[] = {
            // depth, windows
            {16, 1, "4,8,16"},    {16, 3, "4"},                           // so four parts
            {60, 1, "4,8,16,32"}, {3, 1, ""},   {-8, 1, ""}, {16, 5, ""}, // more windows than fit
            {16, 0, ""},
        };
        for (auto const& [depth, windows, amounts] : cases) {
            Core core;
            core.storageDepth = depth;
            core.windowNum = windows;
            core.captureAmount = 4;
            Panel panel;
            panel.setSxCore(&core);
            QCOMPARE(items(panel.amount).join(','), amounts);
            QCOMPARE(panel.position->maximum(), 0);
            panel.save();
            QCOMPARE(core.windowNum, windows);
            QCOMPARE(core.captureAmount, 4);
        }
    }

    void chooseAndSave()
    {
        Core core;
        Panel panel;
        panel.show();
        panel.setSxCore(&core);
        QCOMPARE(panel.findChild<QLineEdit*>("lineEditStorage")->text(), QString("64"));
        QCOMPARE(panel.window->count(), 16);
        QCOMPARE(panel.windowNum(), 2);
        QCOMPARE(panel.window->currentData().toInt(), 2);
        QCOMPARE(panel.amount->currentText(), QString("16"));
        QCOMPARE(panel.position->value(), 5);
        QCOMPARE(panel.position->maximum(), 12);

        QSignalSpy changed(&panel, &DynamicConfigWidget::windowNumChanged);
        panel.window->setFocus();
        QTest::keyClick(panel.window, Qt::Key_Down);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(panel.windowNum(), 3);
        QCOMPARE(panel.amount->currentText(), QString("16"));
        panel.window->setCurrentIndex(15); // 16 segments of 4
        QCOMPARE(panel.amount->currentText(), QString("4"));
        QCOMPARE(panel.position->value(), 0);
        panel.window->setCurrentIndex(0);
        panel.amount->setCurrentIndex(4); // 64
        panel.position->setValue(99);
        panel.list->item(1)->setCheckState(Qt::Unchecked);
        QCOMPARE(core.windowNum, 2);
        panel.save();
        QCOMPARE(core.windowNum, 1);
        QCOMPARE(core.captureAmount, 64);
        QCOMPARE(core.triggerPos, 60);
        QCOMPARE(core.expressionEnabled, (QList<bool>{true, false}));

        panel.resetUI();
        panel.save(); // an emptied panel has no core
        QCOMPARE(core.triggerPos, 60);
        panel.setSxCore(&core);
        panel.setSxCore(nullptr);
        QCOMPARE(panel.window->count() + panel.amount->count() + panel.list->count(), 0);
        QCOMPARE(panel.position->maximum(), std::numeric_limits<int>::max());
        panel.save();
        QCOMPARE(core.captureAmount, 64);
    }

    void hugeDepth()
    {
        Core core;
        core.storageDepth = 2000000000;
        core.windowNum = 300000000;
        Panel panel;
        panel.show();
        panel.setSxCore(&core);
        QCOMPARE(panel.windowNum(), 300000000);
        QCOMPARE(panel.amount->count(), 0); // 536,870,912 parts
        QAbstractItemView* const list = panel.window->view();
        auto const shown = [&](int y) { return list->indexAt(QPoint(1, y)).data().toInt(); };
        QVERIFY(QTest::qWaitForWindowActive(&panel));
        panel.window->showPopup();
        QTRY_VERIFY(shown(0) > 299999980 && shown(0) <= 300000000);
        QTest::keyClick(list, Qt::Key_PageUp);
        QCOMPARE(list->currentIndex().data().toInt(), 300000000 - 15);
        QTest::keyClick(list, Qt::Key_End);
        QCOMPARE(shown(list->viewport()->height() - 1), 500000000);
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(panel.windowNum(), 500000000);

        QTest::keyClicks(panel.window, "77"); // beginning with these, behind the one before
        QCOMPARE(panel.windowNum(), 77);
        QCOMPARE(panel.window->findText("400000000"), 399999999);
        QCOMPARE(panel.amount->count(), 22); // 4 to 8388608, in 128 parts
        panel.window->showPopup();
        QRect const below = list->visualRect(list->model()->index(77, 0));
        QTest::mouseMove(list->viewport(), below.center());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, below.center());
        QCOMPARE(panel.windowNum(), 78);
    }

    void expressions()
    {
        Core core;
        core.expressions = QStringList{"match[0]&match[12]", "M0", "M5"};
        core.expressionEnabled = QList<bool>{false};
        Panel panel;
        panel.show();
        panel.setSxCore(&core);
        QCOMPARE(panel.list->item(0)->text(), QString("exp0:  M0&M12"));
        QCOMPARE(panel.list->item(2)->text(), QString("exp2:  M5"));
        QCOMPARE(panel.list->item(0)->checkState(), Qt::Unchecked);
        QCOMPARE(panel.list->item(2)->checkState(), Qt::Checked);

        auto const compose = [](QStringList const& captions) {
            inDialog([captions](QWidget* dialog) { press(*dialog, captions); });
        };
        compose({"M5", "M7", "OK"}); // unit 7 is not enabled
        doubleClick(panel.list, panel.list->model()->index(1, 0));
        QCOMPARE(core.expressions.at(1), QString("M5"));
        QCOMPARE(panel.list->item(1)->text(), QString("exp1:  M5"));
        compose({"M0", "Cancel"});
        doubleClick(panel.list, panel.list->model()->index(2, 0));
        QCOMPARE(core.expressions.at(2), QString("M5"));

        core.expressionType = ExpressionStatic;
        panel.setSxCore(&core);
        QVERIFY(!panel.list->item(0)->data(Qt::CheckStateRole).isValid());
        panel.editExpression(panel.list->item(0));
        panel.editExpression(nullptr);
        panel.save();
        QCOMPARE(core.expressionEnabled, (QList<bool>{false, true, true}));
    }

    void editUnit()
    {
        Core core;
        Panel panel;
        panel.show();
        panel.setSxCore(&core);
        QVERIFY(panel.table->isColumnHidden(0));
        panel.editMu(); // without a selection
        inDialog([](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), QString("Match Unit Config"));
            dialog->findChild<QSpinBox*>("spinBoxCounter")->setValue(3);
            press(*dialog, {"OK"});
        });
        QModelIndex const index = panel.matchUnitModel()->index(1, 5);
        doubleClick(panel.table, index);
        QCOMPARE(core.matchUnit(5)->counter, 3);
        QCOMPARE(index.data().toString(), QString("3"));
    }

    void tableByEyeAndKeyboard()
    {
        Core core;
        core.matchUnit(5)->value0 = QString(200, '0');
        for (double const scale : {1.0, 2.0}) {
            Panel panel;
            QFont font = panel.font();
            font.setPointSizeF(scale * font.pointSizeF());
            panel.setFont(font);
            panel.setSxCore(&core);
            panel.resize(panel.sizeHint());
            panel.show();
            QVERIFY(QTest::qWaitForWindowActive(&panel));
            QTRY_VERIFY(panel.table->columnWidth(6) >= 300);
            QTRY_VERIFY(!panel.table->horizontalScrollBar()->isVisible());
            for (int column = 1; column < 6; ++column)
                for (int row = 0; row < 2; ++row)
                    QVERIFY(
                        panel.table->columnWidth(column) >=
                        panel.table->sizeHintForIndex(panel.matchUnitModel()->index(row, column))
                            .width());
        }
        Panel panel;
        panel.setSxCore(&core);
        panel.show();
        QVERIFY(QTest::qWaitForWindowActive(&panel));
        auto const tip = [&](int column) {
            return panel.matchUnitModel()->index(1, column).data(Qt::ToolTipRole).toString();
        };
        QCOMPARE(tip(2), QString("a\nb"));
        QCOMPARE(tip(6).remove('\n'), QString(200, '0') + " : 10");

        QCOMPARE(QApplication::focusWidget(), panel.window);
        panel.list->setFocus();
        for (Qt::Key const key : {Qt::Key_Return, Qt::Key_F2}) {
            QStringList titles;
            for (QWidget* const view :
                 {static_cast<QWidget*>(panel.list), static_cast<QWidget*>(panel.table)}) {
                panel.activateWindow();
                QTRY_COMPARE(QApplication::focusWidget(), view);
                inDialog([&](QWidget* dialog) {
                    titles << dialog->windowTitle();
                    QTest::keyClick(dialog, Qt::Key_Escape);
                });
                QTest::keyClick(view, key);
                QTest::keyClick(view, Qt::Key_Tab,
                                view == panel.table ? Qt::ShiftModifier : Qt::NoModifier);
            }
            QCOMPARE(titles, (QStringList{"Expression", "Match Unit Config"}));
        }
    }

    void goneDuringADialog()
    {
        Core core;
        QPointer<Panel> panel;
        QStringList left;
        auto const leave = [&](QWidget* dialog) {
            left << dialog->windowTitle();
            delete panel.data();
        };
        auto const edit = [&](bool expression) {
            panel = new Panel;
            panel->show();
            panel->setSxCore(&core);
            if (expression)
                doubleClick(panel->list, panel->list->model()->index(0, 0));
            else
                doubleClick(panel->table, panel->matchUnitModel()->index(0, 1));
            QVERIFY(!panel);
        };
        inDialog(leave);
        edit(false);
        inDialog(leave);
        edit(true);
        inDialog([&](QWidget* dialog) {
            inDialog<QMessageBox>(leave);
            press(*dialog, {"OK"}); // an empty expression is refused
        });
        edit(true);
        QCOMPARE(left, (QStringList{"Match Unit Config", "Expression", "Error"}));
    }

    void emptiedDuringADialog()
    {
        auto core = std::make_unique<Core>();
        Panel panel;
        panel.show();
        panel.setSxCore(core.get());
        inDialog([&](QWidget*) {
            panel.resetUI();
            core.reset();
        });
        doubleClick(panel.table, panel.matchUnitModel()->index(0, 1));
        QVERIFY(!core);
    }
};

QTEST_MAIN(DynamicConfigWidgetTest)
#include "tst_dynamicconfigwidget.moc"
