#include "tests/support/widgettools.h"
#include "triggerui/matchunitdialog.h"

#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QSpinBox>
#include <QTreeWidget>

#include <ctime>
#include <limits>

using namespace VEK;
using namespace widgettools;

namespace {

SignalItem makeBus(QString const& name, int width)
{
    SignalItem bus{name, QString(), {}};
    for (int bit = width - 1; bit >= 0; --bit)
        bus.signalList << SignalItem{QString("%1[%2]").arg(name).arg(bit), QString(), {}};
    return bus;
}

/// Port 2 has the signal "valid", the bus "data" of 8 bits and the signal "go"; port 5 the bus
/// "nibble" of 4 bits. The unit watches port 2.
struct Core : SxCore
{
    Core() : SxCore(0)
    {
        getTrigger(2)->signalList << SignalItem{"top/valid", "valid", {}} << makeBus("data", 8)
                                  << SignalItem{"go", QString(), {}};
        getTrigger(5)->signalList << makeBus("nibble", 4);
        unit->trigger = getTrigger(2);
        unit->matchType = MatchRangeEdges;
        unit->value0 = "0000000000";
    }

    MatchUnit* const unit = matchUnit(3);
};

struct Dialog : MatchUnitDialog
{
    explicit Dialog(MatchUnit* unit, bool fixedStructure = false)
        : MatchUnitDialog(unit, fixedStructure, nullptr)
    {
        show();
        activateWindow();
        [[maybe_unused]] bool const active = QTest::qWaitForWindowActive(this);
    }

    TreeLineEdit* row(int number, QTreeWidget* tree) const
    {
        return TreeLineEdit::ofItem(tree->topLevelItem(number));
    }
    TreeLineEdit* row(int number) const { return row(number, values0); }

    /// What the rows of a tree show, and behind each bus its bits.
    QString shown(QTreeWidget* tree) const
    {
        QStringList texts;
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            QString text = row(i, tree)->displayText();
            for (TreeLineEdit const* bit : row(i, tree)->subEdits)
                text += (bit->index ? "" : ":") + bit->displayText();
            texts << text;
        }
        return texts.join(' ');
    }
    QString shown() const { return shown(values0); }

    void type(TreeLineEdit* edit, QString const& text, Qt::Key last = Qt::Key_Tab)
    {
        QTest::mouseClick(edit, Qt::LeftButton);
        QTest::keyClick(edit, Qt::Key_Home);
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, last);
    }

    void choose(QComboBox* box, QString const& text)
    {
        box->showPopup();
        box->view()->setCurrentIndex(box->model()->index(box->findText(text), 0));
        QTest::keyClick(box->view(), Qt::Key_Return);
        QCOMPARE(box->currentText(), text);
    }

    void press(QString const& caption) { widgettools::press(*this, {caption}); }

    /// Opens an editor's menu; gives the enabled letters and takes an entry by its letter.
    QString menu(TreeLineEdit* edit, QChar letter)
    {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, edit->rect().center());
        QApplication::sendEvent(edit, &event);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QString enabled;
        for (QAction* const action : menu ? menu->actions() : QList<QAction*>()) {
            if (action->isEnabled())
                enabled += action->text()[0];
            if (action->text()[0] == letter)
                menu->setActiveAction(action);
        }
        if (menu)
            QTest::keyClick(menu, Qt::Key_Return);
        if (menu && menu->isVisible()) // a disabled entry
            QTest::keyClick(menu, Qt::Key_Escape);
        return enabled;
    }

    QComboBox* const trigger = findChild<QComboBox*>("comboBoxTrigger");
    QComboBox* const matchTypes = findChild<QComboBox*>("comboBoxType");
    QComboBox* const functions = findChild<QComboBox*>("comboBoxFunc");
    QGroupBox* const valueGroup = findChild<QGroupBox*>("groupBoxValue0");
    QGroupBox* const counterGroup = findChild<QGroupBox*>("groupBoxCounter");
    QSpinBox* const counterWidth = findChild<QSpinBox*>("spinBoxCounterWidth");
    QSpinBox* const count = findChild<QSpinBox*>("spinBoxCounter");
    QTreeWidget* const signalTree = findChild<QTreeWidget*>("treeSignals");
    QTreeWidget* const values0 = findChild<QTreeWidget*>("treeSignals0");
    QTreeWidget* const values1 = findChild<QTreeWidget*>("treeSignals1");
};

} // namespace

class MatchUnitDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void showsUnitAndCancelChangesNothing()
    {
        Core core;
        core.unit->value0 = "R0011XXFB1";
        core.unit->counterEnable = true;
        Dialog dialog(core.unit);
        QCOMPARE(dialog.findChild<QLabel*>("lbTitle")->text(), QString("Match Unit 3"));
        QCOMPARE(items(dialog.trigger), (QStringList{"Trigger Port 2", "Trigger Port 5"}));
        QCOMPARE(dialog.matchTypes->currentText(), QString("Range w/edges"));
        QCOMPARE(items(dialog.functions).size(), 8);
        QCOMPARE(dialog.signalTree->topLevelItem(0)->text(0), QString("valid"));
        QCOMPARE(dialog.signalTree->topLevelItem(1)->child(7)->toolTip(0), QString("data[0]"));
        QCOMPARE(dialog.shown(), QString("R 0011XXFB:0011XXFB 1"));
        QVERIFY(!dialog.values1->isVisible());
        QVERIFY(dialog.counterGroup->isChecked());

        dialog.type(dialog.row(1), "1111");
        dialog.choose(dialog.matchTypes, "Basic");
        dialog.choose(dialog.trigger, "Trigger Port 5");
        dialog.count->setValue(1);
        dialog.press("Cancel");
        QCOMPARE(core.unit->value0, QString("R0011XXFB1"));
        QCOMPARE(core.unit->matchType, MatchRangeEdges);
        QCOMPARE(core.unit->trigger, core.getTrigger(2));
        QCOMPARE(core.unit->counter, 2);
    }

    void busAndBitsFollowEachOther()
    {
        struct
        {
            QString radix;
            QString range;
            QString typed;
            QString afterBus;
            QString typedBit; // into the fourth
            QString afterBit;
        } const cases[] = {
            {"BIN", "00000000~11111111", "1x0rfb21", "0 1X0RFB10:1X0RFB10 0", "n",
             "0 1X0NFB10:1X0NFB10 0"},
            {"OCT", "000~377", "789", "0 300:11000000 0", "1", "0 320:11010000 0"},
            {"DEC", "000~255", "999", "0 231:11100111 0", "7", "0 247:11110111 0"},
            {"HEX", "00~FF", "a5", "0 A5:10100101 0", "f", "0 B5:10110101 0"},
        };
        for (auto const& row : cases) {
            Core core;
            Dialog dialog(core.unit);
            dialog.press(row.radix);
            QCOMPARE(dialog.row(1)->toolTip(), row.range);
            dialog.type(dialog.row(1), row.typed);
            QCOMPARE(dialog.shown(), row.afterBus);
            dialog.values0->expandAll();
            QApplication::processEvents();
            dialog.type(dialog.row(1)->subEdits[3], row.typedBit);
            QCOMPARE(dialog.shown(), row.afterBit);
            QVERIFY(dialog.row(1)->subEdits[4]->hasFocus()); // the tab key goes down the rows
        }
    }

    void unfoldsByKeyboard()
    {
        Core core;
        Dialog dialog(core.unit);
        QTreeWidgetItem* const bus = dialog.values0->topLevelItem(1);
        dialog.row(1)->setFocus();
        QTest::keyClicks(dialog.row(1), "1+");
        QVERIFY(bus->isExpanded());
        QTest::keyClick(dialog.row(1), Qt::Key_Tab);
        QTest::keyClicks(dialog.row(1)->subEdits[0], "0-");
        QVERIFY(!bus->isExpanded() && dialog.row(1)->hasFocus());
        QCOMPARE(dialog.shown(), QString("0 00000000:00000000 0"));

        dialog.row(0)->setFocus();
        QTest::keyClick(dialog.row(0), Qt::Key_Backtab);
        QVERIFY(dialog.values0->hasFocus());
        QTest::keyClick(dialog.values0, Qt::Key_Down);
        QTest::keyClick(dialog.values0, Qt::Key_Right);
        QVERIFY(bus->isExpanded());
    }

    /// Return in an editor takes what was typed and ends the dialog; an edge never comes of a
    /// digit.
    void returnAccepts()
    {
        Core core;
        {
            Dialog dialog(core.unit);
            dialog.press("HEX");
            dialog.type(dialog.row(0), "F");
            QCOMPARE(dialog.shown(), QString("1 00:00000000 0"));
            dialog.type(dialog.row(2), "B", Qt::Key_Shift); // left while it is being typed
            dialog.accept();
        }
        QCOMPARE(core.unit->value0, QString("1000000001"));
        Dialog dialog(core.unit);
        dialog.type(dialog.row(1), "RFBNX101", Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(core.unit->value0, QString("1RFBNX1011"));
        QCOMPARE(core.unit->value1, QString("0000000000"));
    }

    void lettersByRadixFunctionAndType()
    {
        struct
        {
            QString radix;
            QString function;
            QString type;
            QString typed;
            QString menu;
            QString afterX;
        } const cases[] = {
            {"BIN", "!=", "Basic w/edges", "XRFBN100", "X01RFBN", "XXXXXXXX"},
            {"BIN", "==", "Extended", "X1000000", "X01", "XXXXXXXX"},
            {"BIN", ">", "Extended w/edges", "10000000", "01", "10000000"},
            {"HEX", "==", "Basic w/edges", "FB", "01", "FB"},
        };
        for (auto const& row : cases) {
            Core core;
            Dialog dialog(core.unit);
            dialog.choose(dialog.matchTypes, row.type);
            dialog.choose(dialog.functions, row.function);
            dialog.press(row.radix);
            dialog.type(dialog.row(1), "xrzfbn1");
            QCOMPARE(dialog.row(1)->displayText(), row.typed);
            QCOMPARE(dialog.menu(dialog.row(1), 'X'), row.menu);
            QCOMPARE(dialog.row(1)->displayText(), row.afterX);
        }
    }

    void menuFillsBusAndBits()
    {
        Core core;
        Dialog dialog(core.unit);
        for (QChar const letter : QString("XRFBN10")) {
            dialog.menu(dialog.row(1), letter);
            QCOMPARE(dialog.shown(), QString("0 %1:%1 0").arg(QString(8, letter)));
        }
        dialog.press("DEC");
        dialog.menu(dialog.row(1), '1');
        QCOMPARE(dialog.shown(), QString("0 255:11111111 0"));
        dialog.values0->expandAll();
        dialog.menu(dialog.row(1)->subEdits[0], '0');
        QCOMPARE(dialog.shown(), QString("0 127:01111111 0"));
        dialog.menu(dialog.row(2), '1');
        QCOMPARE(dialog.shown(), QString("0 127:01111111 1"));
    }

    void lettersFallAway()
    {
        Core core;
        core.unit->value0 = "X0011RRRR1";
        core.unit->value1 = "X000000001";
        Dialog dialog(core.unit);
        dialog.choose(dialog.functions, ">"); // row by row
        QCOMPARE(dialog.shown(), QString("0 00000000:00000000 1"));

        core.unit->value0 = "10011XXXX1";
        Dialog second(core.unit);
        second.choose(second.matchTypes, "Basic"); // X stays
        QCOMPARE(second.shown(), QString("1 0011XXXX:0011XXXX 1"));
        second.press("HEX");
        QCOMPARE(second.shown(), QString("1 00:00000000 1"));
        second.press("HEX");
        second.press("BIN");
        QCOMPARE(second.shown(), QString("1 00000000:00000000 1"));

        core.unit->value0 = "10011R0001";
        Dialog third(core.unit);
        third.choose(third.matchTypes, "Basic"); // the whole value goes, the other one stays
        QCOMPARE(third.shown(), QString("0 00000000:00000000 0"));
        QCOMPARE(third.shown(third.values1), QString("X 00000000:00000000 1"));
        QTest::keyClicks(third.row(0), "r");
        QCOMPARE(third.row(0)->displayText(), QString("0"));
    }

    void functionsFollowType()
    {
        Core core;
        core.unit->func = FuncInRange;
        Dialog dialog(core.unit);
        QVERIFY(dialog.values1->isVisible());
        QVERIFY(dialog.findChild<QLabel*>("lbValue0")->isVisible());
        dialog.choose(dialog.functions, ">=");
        QVERIFY(!dialog.values1->isVisible());
        dialog.choose(dialog.matchTypes, "Extended");
        QCOMPARE(dialog.functions->currentText(), QString(">="));
        dialog.choose(dialog.matchTypes, "Basic w/edges");
        QCOMPARE(items(dialog.functions), (QStringList{"==", "!="}));
        dialog.press("OK");
        QCOMPARE(core.unit->func, FuncEqual);
        QCOMPARE(core.unit->matchType, MatchBasicEdges);

        core.unit->matchType = MatchType(9);
        core.unit->func = FuncLess;
        Dialog unknown(core.unit);
        QCOMPARE(unknown.functions->count(), 0);
        unknown.press("OK");
        QCOMPARE(int(core.unit->matchType), 9);
        QCOMPARE(core.unit->func, FuncLess);
    }

    void portChanges()
    {
        Core core;
        core.unit->value0 = "1111111XR1";
        Dialog dialog(core.unit);
        dialog.row(0)->setFocus();
        dialog.row(1)->setFocus();
        dialog.choose(dialog.trigger, "Trigger Port 5");
        QCOMPARE(dialog.shown(), QString("1XR1:1XR1"));
        QCOMPARE(dialog.signalTree->topLevelItemCount(), 1);
        QCOMPARE(dialog.row(0)->toolTip(), QString("0000~1111"));
        dialog.trigger->setCurrentIndex(-1);
        QVERIFY(!dialog.valueGroup->isEnabled());
        QCOMPARE(dialog.values0->topLevelItemCount(), 0);
        dialog.choose(dialog.trigger, "Trigger Port 2");
        QVERIFY(dialog.valueGroup->isEnabled());
        dialog.press("HEX");
        QCOMPARE(dialog.shown(), QString("0 00:00000000 0"));
        dialog.type(dialog.row(1), "3c");
        dialog.choose(dialog.trigger, "Trigger Port 5");
        QCOMPARE(dialog.shown(), QString("8:1000"));
        dialog.press("OK");
        QCOMPARE(core.unit->trigger, core.getTrigger(5));
        QCOMPARE(core.unit->value0, QString("1000"));
    }

    /// Without a port nothing is written; the chip's way of fitting a value is shown.
    void oddUnits()
    {
        Core core;
        core.unit->value0 = "1";
        QCOMPARE(Dialog(core.unit).shown(), QString("0 00000000:00000000 1"));
        core.unit->value0 = "1?xR10000011111";
        QCOMPARE(Dialog(core.unit).shown(), QString("1 00R10000:00R10000 0"));
        core.unit->trigger = nullptr;
        Dialog portless(core.unit);
        QCOMPARE(portless.trigger->currentIndex(), -1);
        QVERIFY(!portless.valueGroup->isEnabled());
        portless.choose(portless.matchTypes, "Basic");
        portless.press("OK");
        SxCore empty(1);
        Dialog dialog(empty.matchUnit(0));
        QCOMPARE(dialog.trigger->count(), 0);
        dialog.press("DEC");
        dialog.press("OK");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(core.unit->value0, QString("1?xR10000011111"));
        QCOMPARE(core.unit->matchType, MatchRangeEdges);
    }

    void refusedRangeKeepsWhatWasTyped()
    {
        Core core;
        core.unit->func = FuncNotInRange;
        core.unit->value1 = "0000000110";
        Dialog dialog(core.unit);
        dialog.press("HEX");
        dialog.type(dialog.row(1), "04");
        QStringList said;
        answerBox(said);
        dialog.press("OK");
        QCOMPARE(said, (QStringList{"Value Invalid", "Maximum value is less than minimum value."}));
        QVERIFY(dialog.isVisible());
        QCOMPARE(core.unit->value0, QString("0000000000"));
        QCOMPARE(dialog.shown(), QString("0 04:00000100 0"));

        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog.type(dialog.row(1), "03"); // equal ends pass
        dialog.press("OK");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(core.unit->value0, core.unit->value1);
    }

    void fixedStructure()
    {
        for (bool const counter : {false, true}) {
            Core core;
            core.unit->counterEnable = counter;
            core.unit->counterWidth = 3;
            Dialog dialog(core.unit, true);
            QVERIFY(!dialog.trigger->isEnabled() && !dialog.matchTypes->isEnabled());
            QVERIFY(dialog.functions->isEnabled() && dialog.row(0)->isEnabled());
            QVERIFY(!dialog.counterGroup->isCheckable() && !dialog.counterWidth->isEnabled());
            QCOMPARE(dialog.count->isEnabled(), counter);
            QCOMPARE(dialog.count->maximum(), 8);
            dialog.choose(dialog.functions, "<");
            dialog.count->setValue(8);
            dialog.press("OK");
            QCOMPARE(core.unit->func, FuncLess);
            QCOMPARE(core.unit->counter, 8);
            QCOMPARE(core.unit->counterEnable, counter);
            QCOMPARE(core.unit->counterWidth, 3);
        }
    }

    void counterIsWritten()
    {
        Core core;
        Dialog dialog(core.unit);
        QVERIFY(!dialog.counterGroup->isChecked());
        dialog.counterGroup->setChecked(true);
        QTest::keyClick(dialog.counterWidth, Qt::Key_Down);
        QCOMPARE(dialog.count->maximum(), 2);
        dialog.counterWidth->setValue(64);
        QCOMPARE(dialog.count->maximum(), std::numeric_limits<int>::max());
        dialog.counterWidth->setValue(2);
        dialog.count->setValue(0);
        QCOMPARE(dialog.count->value(), 1);
        dialog.count->setValue(99);
        dialog.press("Continuous");
        dialog.press("OK");
        QVERIFY(core.unit->counterEnable && core.unit->continuous);
        QCOMPARE(core.unit->counterWidth, 2);
        QCOMPARE(core.unit->counter, 4);
    }

    void wideBusIsExact()
    {
        Core core;
        core.getTrigger(2)->signalList = {makeBus("wide", 600)};
        Dialog dialog(core.unit);
        dialog.press("DEC");
        QString const typed = QString(161, '0') + "18446744073709551617"; // 2^64 + 1
        QCOMPARE(dialog.row(0)->displayText().size(), typed.size());
        dialog.type(dialog.row(0), typed);
        for (char const* radix : {"HEX", "OCT", "BIN", "DEC"})
            dialog.press(radix);
        QCOMPARE(dialog.row(0)->displayText(), typed);
        dialog.press("OK");
        QCOMPARE(core.unit->value0, QString(535, '0') + "1" + QString(63, '0') + "1");
    }

    /// In processor time, since tests run side by side.
    void manySignalsStayQuick()
    {
        Core core;
        core.unit->func = FuncInRange;
        core.getTrigger(2)->signalList.clear();
        for (int i = 0; i < 600; ++i)
            core.getTrigger(2)->signalList << SignalItem{QString("s%1").arg(i), QString(), {}};
        std::clock_t const start = std::clock();
        Dialog dialog(core.unit);
        dialog.press("HEX");
        QApplication::processEvents();
        [[maybe_unused]] std::clock_t const taken = std::clock() - start;
        QCOMPARE(dialog.values1->topLevelItemCount(), 600);
        dialog.row(598)->setFocus();
        QTest::keyClick(dialog.row(598), Qt::Key_Tab);
        QVERIFY(dialog.row(599)->hasFocus());
        QVERIFY(dialog.values0->viewport()->rect().intersects(dialog.row(599)->geometry()));
#if !defined(__SANITIZE_ADDRESS__)
        QVERIFY(taken < 2 * CLOCKS_PER_SEC);
#endif
    }
};

QTEST_MAIN(MatchUnitDialogTest)
#include "tst_matchunitdialog.moc"
