#include "oracle.h"
#include "setup.h"
#include "workbenchrig.h"

#include "tests/support/widgettools.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/waveview.h"
#include "workbench/simulationdialog.h"

#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>

using namespace widgettools;

/// Sessions at the workbench with the real programs.
class TestWorkbench : public WorkbenchTest
{
    Q_OBJECT

private:
    /// Runs the batch tool on the same bench, with a server of its own.
    void runBatch(QString const& setup, QString const& device)
    {
        QProcess batch;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        QDir(path()).mkpath("tmp");
        environment.insert("TMPDIR", path("tmp"));
        batch.setProcessEnvironment(environment);
        batch.setWorkingDirectory(path());
        batch.start(QString(VEK_BUILD_ROOT) + "/Analyzer/bin/veksh",
                    {"-cable", "FT2CH", "-vek", setup, "-device", device, "-out", "batch"});
        QVERIFY(batch.waitForFinished());
        QCOMPARE(batch.exitCode(), 0);
    }

private slots:
    /// A day's work: program, capture, look, arrange, save, and go on with it later.
    void wholeSession()
    {
        QString const setup = layBench(R"("programmer": {"bitstream": "loaded", "chain":
            [{"family": "TK-500", "name": "TK-503", "id": "101F7001"}]})");
        QString const design = write("design.fs", "//Device-package: TK-503-Q48\n1010\n");
        QString const session = path("session.rsx");
        QString arranged;
        QList<QBitArray> samples;
        {
            Window window;
            answerFile(setup);
            window.choose({"&File", "&Open..."});
            window.run();
            QVERIFY(window.messages().contains("Error: The device is empty"));

            window.showTab("Programmer");
            window.press("searchDevice");
            auto* const chain = window.findChild<QTableView*>("tableView");
            QTRY_COMPARE(chain->model()->rowCount(), 1);
            QModelIndex const target = chain->model()->index(0, 0);
            QPoint const box(chain->visualRect(target).left() + 10,
                             chain->visualRect(target).center().y());
            QTest::mouseClick(chain->viewport(), Qt::LeftButton, Qt::NoModifier, box);
            QCOMPARE(target.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
            answerFile(design);
            doubleClick(chain, chain->model()->index(0, 5));
            QTRY_COMPARE(chain->model()->index(0, 5).data(), QVariant(design));
            auto* const download = window.findChild<QPushButton*>("downLoad");
            QTRY_VERIFY(download->isEnabled());
            window.press("downLoad");
            QTRY_VERIFY(download->isEnabled());
            QCOMPARE(content(path("loaded")), design.toUtf8());

            window.run();
            QVERIFY2(window.messages().endsWith("Capture complete."),
                     qPrintable(window.messages()));
            // the first window of the next run alone ends before all of these
            window.look(300, {400, 290}, 0.5);
            QString const view = "cursor 300, values of 300, markers 290 400, zoom 0.5";
            QCOMPARE(window.view(), view);
            window.run();
            QCOMPARE(window.view(), view);

            runBatch(setup, "TK-503");
            window.chooseForRows({"valid", "ready", "write"}, "Group");
            QCOMPARE(window.monitor()->model()->rowCount(), 7);
            arranged = window.arrangement();
            samples = window.samples();
            answerFile(session);
            window.choose({"&File", "Save Session &As..."});
            QCOMPARE(window.shownTitle(), QString("session.rsx - Workbench"));
            QVERIFY(window.action(session)); // among the recent files
            QVERIFY(window.close());         // nothing to ask
        }

        Window window;
        QVERIFY(window.open(session));
        QCOMPARE(window.view(), QString("cursor 300, values of 300, markers 290 400, zoom 0.5"));
        QCOMPARE(window.arrangement(), arranged);
        QCOMPARE(window.samples(), samples);
        QCOMPARE(configuration(session), configuration(setup));
        QString const bus = window.monitor()->model()->index(2, 0).data().toString();
        QCOMPARE(window.monitor()->model()->rowCount(window.row(bus)), 3);

        window.chooseForRows({bus}, "Ungroup");
        QTRY_COMPARE(window.shownTitle(), QString("session.rsx* - Workbench"));
        answerButton("Cancel");
        QVERIFY(!window.close());
        window.action("&Save")->trigger();
        QCOMPARE(window.shownTitle(), QString("session.rsx - Workbench"));
        answerNumber(1);
        answerFile(path("again"));
        window.choose({"&File", "&Export Window", "CSV..."});
        QCOMPARE(content(path("again.csv")), content(path("batch_core0_window1.csv")));
    }

    void captureSaveOpenExport_data()
    {
        QTest::addColumn<QString>("demo");
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("result"); // of the batch tool
        QTest::addColumn<int>("core");
        QTest::newRow("cores") << "uart/uart-link"
                               << "TK-501"
                               << "batch_core1_window0.csv" << 1;
        QTest::newRow("lite") << "bus/bus-start"
                              << "TK-107"
                              << "batch.csv" << 0;
    }

    void captureSaveOpenExport()
    {
        QFETCH(QString, demo);
        QFETCH(QString, device);
        QFETCH(QString, result);
        QFETCH(int, core);
        QString const setup = layDemo(demo);
        runBatch(setup, device);
        QByteArray const expected = content(path(result));
        QVERIFY(expected.contains("time unit: us"));
        {
            Window first;
            first.setDevice(device);
            QVERIFY(first.open(setup));
            first.run();
            QVERIFY2(first.messages().endsWith("Capture complete."), qPrintable(first.messages()));
            first.showTab(core == 1 ? "Core 1" : "Lite Core");
            for (auto* const tabs : first.findChildren<QTabWidget*>())
                QCOMPARE(tabs->currentIndex(), core);
            first.exportWindowAs(path("first.csv"), core, 0);
            QVERIFY(first.saveSessionAs(path("session.rsx")));
            first.exportWindowAs(path("no/such/folder.csv"), core, 0);
            QVERIFY(first.messages().contains("Error: " + path("no/such/folder.csv")));
            QVERIFY(!first.saveSessionAs(path("no/such/session.rsx")));
        }
        QCOMPARE(content(path("first.csv")), expected);

        Window second;
        QVERIFY(second.open(path("session.rsx")));
        second.exportWindowAs(path("second.csv"), core, 0);
        QCOMPARE(content(path("second.csv")), expected);
        second.exportWindowAs(path("second.vcd"), core, 0);
        QVERIFY(content(path("second.vcd")).contains("$timescale\n  1 ns\n"));
        QVERIFY(content(path("second.vcd")).contains("\n#1000\n1!\n\n#1500\n"));
    }

    /// What a user sets in the panel of a core is what the chip captures.
    void editAndCapture()
    {
        Waves waves = Stimulus::counter("count", 12, 1500);
        for (int i = 0; i < 1500; ++i)
            waves["flag"] += i % 400 == 277 ? '1' : '0';
        QString const count = Setup::entry("count", 12), flag = Setup::entry("flag");
        Setup::Core const core{128,
                               100,
                               1,
                               true,
                               false,
                               count + flag,
                               {{0, count}, {3, flag}},
                               Setup::unit(0, 0, "000000000001") + Setup::unit(5, 3, "1")};
        write("dump.vcd", Stimulus::toVcd(waves));
        QString const setup = write("panel.vek", Setup::vek({core}));
        qputenv("VEK_BENCH", write("bench.json", R"({"device": "TK-501", "design": "panel.vek",
                                                    "stimulus": {"vcd": "dump.vcd"}})")
                                 .toUtf8());
        Window window;
        QVERIFY(window.open(setup));
        auto* const list = window.findChild<QListWidget*>("listExpressions");
        inDialog([](QWidget* dialog) { press(*dialog, {"M0", "|", "M5", "OK"}); });
        doubleClick(list, list->model()->index(0, 0));
        auto* const units = window.findChild<QTableView*>("tableUnit");
        inDialog([](QWidget* dialog) { // beyond the stimulus
            press(*dialog, {"HEX"});
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            auto* const tree = dialog->findChild<QTreeWidget*>("treeSignals0");
            auto* const edit = tree->itemWidget(tree->topLevelItem(0), 1);
            edit->setFocus();
            QTest::keyClick(edit, Qt::Key_Home);
            QTest::keyClicks(edit, "5DC");
            QTest::keyClick(edit, Qt::Key_Tab);
            press(*dialog, {"OK"});
        });
        doubleClick(units, units->model()->index(0, 1));
        window.findChild<QComboBox*>("comboBoxWindow")->setCurrentText("2");
        window.findChild<QComboBox*>("comboBoxAmount")->setCurrentText("64");
        window.findChild<QSpinBox*>("spinBoxTrPos")->setValue(10);
        window.run();
        window.run(); // in place of the first
        window.action("&Save")->trigger();
        auto const captures = expectedCaptures(content(setup), {{"clk", waves}});
        QCOMPARE(captures.size(), 2);
        QCOMPARE(captures.at(0).trigger, 277);
        for (int part : {0, 1}) {
            window.exportWindowAs(path("edited.csv"), 0, part);
            QCOMPARE(content(path("edited.csv")), captures.at(part).csv);
            QString const count = QString::number(captures.at(part).trigger, 16).toUpper();
            QCOMPARE(window.value("count", 64 * part + 10), count);
        }

        // the trigger as a text follows the panel, and sets it
        auto* const line = window.findChild<QLineEdit*>("triggerText");
        auto* const note = window.findChild<QLabel*>("triggerNote");
        QCOMPARE(line->text(), QString("count == 0x5DC | flag"));
        auto const type = [line](char const* text) {
            line->selectAll();
            QTest::keyClicks(line, text);
        };
        type("cuont == 3");
        QVERIFY(note->text().contains("cuont") && note->text().contains("the nearest is count"));
        QTest::keyClick(line, Qt::Key_Return);
        QVERIFY(!note->text().isEmpty()); // refused
        type("count == 300");
        QVERIFY(note->text().isEmpty());
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(line->text(), QString("count == 0x12C"));
        QCOMPARE(list->item(0)->text(), QString("exp0:  M0"));
        window.action("&Save")->trigger();
        QCOMPARE(expectedCaptures(content(setup), {{"clk", waves}}).at(0).trigger, 300);
    }

    /// The keys of the waves; the tree keeps its own.
    void keyboard()
    {
        QString const setup = layDemo("bus/bus-stall"); // 2 windows of 512 samples, trigger at 128
        Window window;
        QVERIFY(window.open(setup));
        window.run();
        QWidget* const waves = window.monitor()->waveView();
        auto const toWaves = [&] { // a dialog takes the focus along
            window.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            waves->setFocus();
        };
        toWaves();
        auto const press = [&](int key, Qt::KeyboardModifiers keys = {}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), keys);
            return window.monitor()->cursorTime();
        };
        int const trigger = window.monitor()->cursorTime();
        int const size = window.monitor()->model()->timeLength() / 2;
        QCOMPARE(press(Qt::Key_T), trigger + size);
        QCOMPARE(press(Qt::Key_T), trigger);
        press(Qt::Key_M); // on the first sample that is free
        inDialog<QInputDialog>([](QInputDialog* dialog) {
            dialog->setTextValue("-50");
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        QCOMPARE(press(Qt::Key_G, Qt::ControlModifier), trigger - 50);
        toWaves();
        inDialog<QInputDialog>([](QInputDialog* dialog) {
            dialog->setTextValue("-500");
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        QCOMPARE(press(Qt::Key_G, Qt::ControlModifier), trigger - 50);
        QVERIFY(window.messages().contains("\"-500\" is no sample"));
        toWaves();
        QCOMPARE(press(Qt::Key_N), trigger);
        QCOMPARE(press(Qt::Key_N), trigger + 1);
        QCOMPARE(press(Qt::Key_N, Qt::ShiftModifier), trigger);

        auto* const tree = window.monitor()->treeView();
        tree->setCurrentIndex(window.row("valid"));
        int const edge = tree->getNextTransition(trigger);
        QCOMPARE(press(Qt::Key_Right), edge);
        QCOMPARE(press(Qt::Key_Left), tree->getPreviousTransition(edge));
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          tree->visualRect(window.row("valid")).center());
        int const before = window.monitor()->cursorTime();
        press(Qt::Key_Right);
        QCOMPARE(window.monitor()->cursorTime(), before);

        inDialog<QInputDialog>([](QInputDialog* dialog) {
            dialog->setTextValue("50MHz");
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        window.action("Sample Cloc&k...")->trigger();
        window.monitor()->setCursorTime(trigger + 21);
        QTest::keyClick(tree, Qt::Key_Shift);
        auto const says = [&](QString const& text) {
            for (auto const* label : window.findChildren<QLabel*>())
                if (label->text().contains(text))
                    return true;
            return false;
        };
        QTRY_VERIFY(says(QString("sample %1 in window 0, 21 behind the trigger (420 ns); marker "
                                 "%2: 20 samples (400 ns), ")
                             .arg(trigger + 21)
                             .arg(trigger + 1)));
        window.monitor()->setCursorTime(trigger + size);
        QTest::keyClick(tree, Qt::Key_Shift);
        QTRY_VERIFY(
            says(QString("marker %1: %2 samples across windows").arg(trigger + 1).arg(size - 1)));
        toWaves();
        inDialog([](QDialog* dialog) {
            QCOMPARE(dialog->findChild<QTreeWidget*>()
                         ->findItems("To Time...", Qt::MatchRecursive)
                         .size(),
                     1);
            dialog->reject();
        });
        press(Qt::Key_F1);
    }

    void find()
    {
        QString const setup = layDemo("bus/bus-stall");
        Window window;
        QVERIFY(window.open(setup));
        window.run();
        auto* const monitor = window.monitor();
        QImage const before = monitor->rulerView()->grab().toImage();
        window.action("Fin&d...")->trigger();
        auto* const line = window.findChild<QLineEdit*>("findText");
        auto* const count = window.findChild<QLabel*>("findCount");
        QTest::keyClicks(line, "adress in 0x50..0x5F & valid");
        auto* const note = window.findChild<QLabel*>("findNote");
        QTRY_VERIFY(note->text().contains("the nearest is address"));
        line->setCursorPosition(1);
        QTest::keyClicks(line, "d");
        QTRY_VERIFY(note->text().isEmpty());
        QVERIFY(monitor->rulerView()->grab().toImage() != before);
        int const hits = count->text().section(' ', 0, 0).toInt();
        QVERIFY(hits > 1);
        monitor->setCursorTime(0);
        int last = -1;
        for (int i = 1; i <= hits; ++i) {
            QTest::keyClick(line, Qt::Key_Return);
            QCOMPARE(count->text(), QString("%1 of %2").arg(i).arg(hits));
            int const time = monitor->cursorTime();
            QVERIFY(time > last);
            last = time;
            QVERIFY(window.value("address", time).startsWith('5'));
            QCOMPARE(window.value("valid", time), QString("1"));
        }
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(count->text(), QString("1 of %1, from the start again").arg(hits));
        QTest::keyClick(line, Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(count->text(), QString("%1 of %1, from the end again").arg(hits));

        monitor->treeView()->setCurrentIndex(window.row("valid"));
        line->setText("rises");
        QTRY_COMPARE(count->text().section(' ', 1), QString("hits"));
        monitor->setCursorTime(0);
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(monitor->cursorTime(), monitor->rulerView()->hits().first());
        QTest::keyClick(line, Qt::Key_Escape);
        QVERIFY(!line->isVisible() && monitor->rulerView()->hits().isEmpty());
    }

    /// From a dump to windows, though a server that is started would be a board's.
    void rehearsal()
    {
        qputenv("VEK_BENCH", "/nothing/there"); // such a server would say so
        QFile::copy(VEK_SOURCE_ROOT "/examples/bus/bus.vcd", path("sim.vcd"));
        QByteArray const temporary = qgetenv("TMPDIR");
        Window window;
        inDialog<SimulationDialog>([this](SimulationDialog* dialog) {
            answerFile(path("sim.vcd"));
            QTest::mouseClick(dialog->findChild<QToolButton*>("chooseDump"), Qt::LeftButton);
            auto* const clock = dialog->findChild<QComboBox*>("clock");
            QTRY_COMPARE(clock->currentText(), QString("bus_tb.dut.clk"));
            auto* const tree = dialog->findChild<QTreeWidget*>("nets");
            auto const tick = [&](char const* filter) { // the scopes that the filter shows
                auto* const line = dialog->findChild<QLineEdit*>("netFilter");
                line->selectAll();
                QTest::keyClicks(line, filter);
                QRect const row = tree->visualItemRect(tree->topLevelItem(0));
                QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                                  row.topLeft() + QPoint(10, row.height() / 2));
            };
            tick("dut.?ddr");
            tick("dut.?alid"); // and what is chosen already stays
            QCOMPARE(tree->topLevelItem(0)->checkState(0), Qt::PartiallyChecked);
            auto* const line = dialog->findChild<QLineEdit*>("newTrigger");
            auto* const note = dialog->findChild<QLabel*>("newTriggerNote");
            auto* const create = button(*dialog, "C&reate");
            QTest::keyClicks(line, "adr in 0x50..0x57 & valid rises");
            QVERIFY(note->text().startsWith("adr: ") && note->text().contains("addr"));
            QVERIFY(!create->isEnabled());
            line->setCursorPosition(1);
            QTest::keyClicks(line, "d");
            QVERIFY(note->text().isEmpty());
            dialog->findChild<QSpinBox*>("windows")->setValue(2);
            QTest::mouseClick(create, Qt::LeftButton);
        });
        window.choose({"&File", "New From S&imulation..."});
        QCOMPARE(window.shownTitle(), QString("sim.vek - Workbench"));
        window.run();
        QVERIFY2(window.messages().endsWith("Capture complete."), qPrintable(window.messages()));
        QCOMPARE(window.samples().size(), 9);
        QCOMPARE(window.samples().first().size(), 1024);
        QCOMPARE(window.value("valid", 127) + window.value("valid", 128), QString("01"));
        QCOMPARE(qgetenv("TMPDIR"), temporary);

        QVERIFY(window.monitor()->isOverviewVisible());
        window.choose({"&View", "&Overview"});
        QVERIFY(!window.monitor()->isOverviewVisible());
        QVERIFY(window.saveSessionAs(path("kept.rsx"))); // stays a rehearsal
        Window again;
        QVERIFY(again.open(path("kept.rsx")));
        QVERIFY(!again.monitor()->isOverviewVisible()); // as it was left
        again.choose({"&View", "&Overview"});
        QVERIFY(again.monitor()->isOverviewVisible());
        again.run();
        QCOMPARE(again.samples(), window.samples());
        QFile::remove(path("sim.json"));
        again.action("&Run")->trigger();
        QVERIFY(again.messages().contains("A rehearsal runs on its bench only: "));
    }
};

QTEST_MAIN(TestWorkbench)
#include "tst_workbench.moc"
