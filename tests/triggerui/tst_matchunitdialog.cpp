#include "tests/support/widgettools.h"
#include "triggerui/matchunitdialog.h"

#include <QGroupBox>
#include <QLabel>
#include <QRegularExpression>
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
        activate();
    }

    void activate()
    {
        activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(this));
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

    void type(TreeLineEdit* edit, QString const& text)
    {
        QTest::mouseClick(edit, Qt::LeftButton);
        QTest::keyClick(edit, Qt::Key_Home);
        QTest::keyClicks(edit, text);
    }

    void choose(QComboBox* box, QString const& text)
    {
        box->showPopup();
        box->view()->setCurrentIndex(box->model()->index(box->findText(text), 0));
        QTest::keyClick(box->view(), Qt::Key_Return);
        QCOMPARE(box->currentText(), text);
        activate(); // behind the popup
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

    /// Does what a line says, in steps parted by "; ": a caption is pressed, "1=01" is typed into
    /// row 1 and left by the tab key, "1.3=0" into a bit of it, "1:01" is not left, "1 X" takes
    /// that entry of the row's menu. Gives the letters that menus offered.
    QString act(QString const& line)
    {
        static QRegularExpression const form("^(port|type|func|\\d)(?:\\.(\\d))?([ =:])(.*)$");
        QString offered;
        for (QString const& step : line.split("; ", Qt::SkipEmptyParts)) {
            auto const parts = form.match(step);
            QString const verb = parts.captured(1);
            QString const text = parts.captured(4);
            if (verb.isEmpty())
                press(step);
            else if (verb == "port")
                choose(trigger, "Trigger Port " + text);
            else if (verb == "type")
                choose(matchTypes, text);
            else if (verb == "func")
                choose(functions, text);
            else if (parts.captured(3) == " ")
                offered += menu(editor(verb, parts.captured(2)), text[0]) + ' ';
            else
                fill(editor(verb, parts.captured(2)), text, parts.captured(3) == "=");
        }
        return offered;
    }

    TreeLineEdit* editor(QString const& number, QString const& bit) const
    {
        TreeLineEdit* const top = row(number.toInt());
        return bit.isEmpty() ? top : top->subEdits[bit.toInt()];
    }

    void fill(TreeLineEdit* edit, QString const& text, bool leave)
    {
        type(edit, text);
        if (leave)
            QTest::keyClick(edit, Qt::Key_Tab);
        if (leave && edit->bus) // the tab key goes down the rows
            QVERIFY(edit->bus->subEdits[edit->index + 1]->hasFocus());
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

        dialog.count->setValue(1);
        dialog.act("1=1111; type Basic; port 5; Cancel");
        QCOMPARE(core.unit->value0, QString("R0011XXFB1"));
        QCOMPARE(core.unit->matchType, MatchRangeEdges);
        QCOMPARE(core.unit->trigger, core.getTrigger(2));
        QCOMPARE(core.unit->counter, 2);
    }

    /// What the rows and their bits show after each line, behind the letters that menus offered; in
    /// the end the unit's port and values.
    void values()
    {
        struct
        {
            QString value;
            QString other;
            QStringList lines;
        } const cases[] = {
            {"0",
             "0",
             {"BIN; 1=1x0rfb21 -> 0 1X0RFB10:1X0RFB10 0", "1.3=n -> 0 1X0NFB10:1X0NFB10 0"}},
            {"0", "0", {"OCT; 1=789 -> 0 300:11000000 0", "1.3=1 -> 0 320:11010000 0"}},
            {"0", "0", {"DEC; 1=999 -> 0 231:11100111 0", "1.3=7 -> 0 247:11110111 0"}},
            {"0", "0", {"HEX; 1=a5 -> 0 A5:10100101 0", "1.3=f -> 0 B5:10110101 0"}},
            {"0",
             "0",
             {"HEX; 0=F -> 1 00:00000000 0", "2:B; Cancel -> 2 0 0"}}, // no edge of a digit
            {"0", "0", {"HEX; 0=F; 2:B; OK -> 2 1000000001 0000000000"}},
            // what radix, function and type let in, by keys and by menus
            {"0",
             "0",
             {"type Basic w/edges; func !=; 1=xrzfbn1 -> 0 XRFBN100:XRFBN100 0",
              "1 X -> X01RFBN 0 XXXXXXXX:XXXXXXXX 0"}},
            {"0",
             "0",
             {"type Extended; 1=xrzfbn1 -> 0 X1000000:X1000000 0",
              "1 X -> X01 0 XXXXXXXX:XXXXXXXX 0"}},
            {"0",
             "0",
             {"type Extended w/edges; func >; 1=xrzfbn1 -> 0 10000000:10000000 0",
              "1 X -> 01 0 10000000:10000000 0"}},
            {"0",
             "0",
             {"type Basic w/edges; HEX; 1=xrzfbn1 -> 0 FB:11111011 0",
              "1 X -> 01 0 FB:11111011 0"}},
            {"0",
             "0",
             {"1 R -> X01RFBN 0 RRRRRRRR:RRRRRRRR 0", "1 F -> X01RFBN 0 FFFFFFFF:FFFFFFFF 0",
              "1 B -> X01RFBN 0 BBBBBBBB:BBBBBBBB 0", "1 N -> X01RFBN 0 NNNNNNNN:NNNNNNNN 0",
              "DEC; 1 1 -> 01 0 255:11111111 0", "1.0 0 -> 01 0 127:01111111 0",
              "2 1 -> 01 0 127:01111111 1"}},
            // letters fall away row by row, but all of a value that the type refuses
            {"X0011RRRR1", "X000000001", {"func > -> 0 00000000:00000000 1"}},
            {"10011XXXX1",
             "0",
             {"type Basic -> 1 0011XXXX:0011XXXX 1", "HEX -> 1 00:00000000 1",
              "HEX; BIN -> 1 00000000:00000000 1"}},
            {"10011R0001",
             "X000000001",
             {"type Basic -> 0 00000000:00000000 0", "0=r -> 0 00000000:00000000 0",
              "OK -> 2 0000000000 X000000001"}},
            // other ports
            {"1111111XR1",
             "0",
             {"0:1; 1:1; port 5 -> 1XR1:1XR1", "port 2 -> 0 000001XR:000001XR 1"}},
            {"0", "0", {"HEX; 1=3c; port 5 -> 8:1000", "OK -> 5 1000 0000"}},
            // of a file, fitted as the chip does
            {"1", "0", {"-> 0 00000000:00000000 1"}},
            {"1?xR10000011111", "0", {"-> 1 00R10000:00R10000 0"}},
        };
        for (auto const& [value, other, lines] : cases) {
            Core core;
            core.unit->value0 = value;
            core.unit->value1 = other;
            Dialog dialog(core.unit);
            dialog.values0->expandAll();
            QApplication::processEvents();
            for (QString const& line : lines) {
                QString text = dialog.act(line.section("-> ", 0, 0).trimmed());
                text += dialog.isVisible() ? dialog.shown()
                                           : QString("%1 %2 %3")
                                                 .arg(core.unit->trigger->index)
                                                 .arg(core.unit->value0, core.unit->value1);
                QCOMPARE(text, line.section("-> ", 1));
            }
        }
    }

    void ranges()
    {
        Core core;
        Dialog dialog(core.unit);
        for (char const* const line :
             {"HEX 00~FF", "DEC 000~255", "OCT 000~377", "BIN 00000000~11111111"}) {
            dialog.press(QString(line).left(3));
            QCOMPARE(dialog.row(1)->toolTip(), QString(line).mid(4));
        }
        dialog.act("port 5");
        QCOMPARE(dialog.signalTree->topLevelItemCount(), 1);
        QCOMPARE(dialog.row(0)->toolTip(), QString("0000~1111"));
    }

    /// Without a signal or an opened menu they have no row to act on.
    void slotsForHosts()
    {
        Core core;
        Dialog dialog(core.unit);
        dialog.onChange1();
        dialog.onBusEditChange();
        dialog.onEditMenu(QPoint());
        QCOMPARE(dialog.shown(), QString("0 00000000:00000000 0"));

        TreeLineEdit* const bus = dialog.row(1);
        connect(bus, &QLineEdit::textChanged, &dialog, &MatchUnitDialog::onBusEditChange);
        bus->setText("10000001"); // sends no signal of an edit
        QCOMPARE(dialog.shown(), QString("0 10000001:10000001 0"));
        bus->disconnect(&dialog);
        dialog.menu(bus, 'X');
        QString shown;
        for (auto const change :
             {&MatchUnitDialog::onChange0, &MatchUnitDialog::onChange1, &MatchUnitDialog::onChangeX,
              &MatchUnitDialog::onChangeR, &MatchUnitDialog::onChangeF, &MatchUnitDialog::onChangeB,
              &MatchUnitDialog::onChangeN}) {
            (dialog.*change)();
            shown += bus->displayText()[7];
        }
        QCOMPARE(shown, QString("01XRFBN"));
        dialog.press("HEX");
        QCOMPARE(dialog.calculatedBitwidth(9), 3);
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

    void returnAccepts()
    {
        Core core;
        Dialog dialog(core.unit);
        dialog.type(dialog.row(1), "RFBNX101");
        QTest::keyClick(dialog.row(1), Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(core.unit->value0, QString("0RFBNX1010"));
        Dialog typing(core.unit);
        typing.act("1:1");
        typing.accept(); // left while it is being typed
        QCOMPARE(core.unit->value0, QString("01FBNX1010"));
    }

    void functionsFollowType()
    {
        Core core;
        core.unit->func = FuncInRange;
        Dialog dialog(core.unit);
        QVERIFY(dialog.values1->isVisible());
        QVERIFY(dialog.findChild<QLabel*>("lbValue0")->isVisible());
        dialog.act("func >=; type Extended");
        QVERIFY(!dialog.values1->isVisible());
        QCOMPARE(dialog.functions->currentText(), QString(">="));
        dialog.act("type Basic w/edges");
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

    /// Without a port nothing is written.
    void oddUnits()
    {
        Core core;
        core.unit->value0 = "1?xR10000011111";
        core.unit->trigger = nullptr;
        Dialog portless(core.unit);
        QCOMPARE(portless.trigger->currentIndex(), -1);
        QVERIFY(!portless.valueGroup->isEnabled());
        portless.act("type Basic; port 5; HEX");
        QVERIFY(portless.valueGroup->isEnabled());
        portless.trigger->setCurrentIndex(-1);
        QVERIFY(!portless.valueGroup->isEnabled());
        QCOMPARE(portless.values0->topLevelItemCount(), 0);
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
        dialog.act("HEX; 1=04");
        QStringList said;
        answerBox(said);
        dialog.press("OK");
        QCOMPARE(said, (QStringList{"Value Invalid", "Maximum value is less than minimum value."}));
        QVERIFY(dialog.isVisible());
        QCOMPARE(core.unit->value0, QString("0000000000"));
        QCOMPARE(dialog.shown(), QString("0 04:00000100 0"));

        dialog.activate();
        dialog.act("1=03; OK"); // equal ends pass
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
        dialog.act("0=" + typed + "; HEX; OCT; BIN; DEC");
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
