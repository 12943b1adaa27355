#include "oracle.h"
#include "setup.h"
#include "workbenchrig.h"

#include "jtag/cablehold.h"
#include "model/standardfile.h"
#include "programmer/devicecatalogue.h"
#include "tests/support/tempfolder.h"
#include "tests/support/widgettools.h"
#include "wavemonitor/signaltreemodel.h"

#include <QAction>
#include <QLabel>
#include <QLayout>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace widgettools;

namespace {

QString const Source = VEK_SOURCE_ROOT;
QString const Build = VEK_BUILD_ROOT;

/// Ids of the processes that this one has started.
QStringList childProcesses()
{
    QFile file(QString("/proc/self/task/%1/children").arg(::getpid()));
    file.open(QIODevice::ReadOnly);
    return QString(file.readAll()).split(' ', Qt::SkipEmptyParts);
}

QString configuration(QString const& path)
{
    QString id;
    QList<VEK::SxCore*> const cores = VEK::readVEKConfigFromXml(path, id, nullptr, nullptr);
    QString const text = VEK::writeVekConfigToString(cores);
    qDeleteAll(cores);
    return text;
}

/// No file of the process grows beyond a few bytes.
class FullDisk
{
public:
    FullDisk() : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_limit);
        rlimit const least{64, m_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &least);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_limit{};
};

} // namespace

/// Sessions at the workbench with the real programs.
class TestWorkbench : public QObject, TempFolder
{
    Q_OBJECT

private:
    /// A demo's setup in the folder, with its bench in use.
    QString layDemo(QString const& demo) const
    {
        qputenv("VEK_BENCH", (Source + "/examples/" + demo + ".json").toUtf8());
        return write(QFileInfo(demo).fileName() + ".vek",
                     content(Source + "/examples/" + demo + ".vek"));
    }
    /// The demo that stalls, on another bench; `more` is appended to its members.
    QString layBench(QByteArray const& more) const
    {
        QString const setup = layDemo("bus/bus-stall");
        QByteArray const folder = (Source + "/examples/bus/").toUtf8();
        qputenv("VEK_BENCH", write("bench.json", R"({"device": "TK-503", "design": ")" + folder +
                                                     R"(bus-stall.vek", "stimulus": {"vcd": ")" +
                                                     folder + R"(bus.vcd"}, )" + more + "}")
                                 .toUtf8());
        return setup;
    }
    /// Runs the batch tool on the same bench, with a server of its own.
    void runBatch(QString const& setup, QString const& device)
    {
        QProcess batch;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        QDir(path()).mkpath("tmp");
        environment.insert("TMPDIR", path("tmp"));
        batch.setProcessEnvironment(environment);
        batch.setWorkingDirectory(path());
        batch.start(Build + "/Analyzer/bin/veksh",
                    {"-cable", "FT2CH", "-vek", setup, "-device", device, "-out", "batch"});
        QVERIFY(batch.waitForFinished());
        QCOMPARE(batch.exitCode(), 0);
    }

private slots:
    void initTestCase()
    {
        qputenv("TMPDIR", path().toUtf8());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, path());
        QCoreApplication::setOrganizationName("vek");
        QCoreApplication::setApplicationName("tst_workbench");
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        VEK::DeviceConfigurations::setFile(Source + "/programmer/data/programmer.json");
    }
    void cleanup() { QVERIFY2(Openings::shared()->waiting.isEmpty(), "a dialog did not open"); }
    void cleanupTestCase() { VEK::DeviceConfigurations::setFile(QString()); }

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

    void lostWindows_data()
    {
        QTest::addColumn<QByteArray>("fault"); // of two windows in two sections each
        QTest::addColumn<int>("shown");
        QTest::newRow("lost in the first") << QByteArray(R"("loses": 2)") << 0;
        QTest::newRow("short in the first") << QByteArray(R"("shortens": 1)") << 0;
        QTest::newRow("short in the last") << QByteArray(R"("shortens": 4)") << 1;
    }

    void lostWindows()
    {
        QFETCH(QByteArray, fault);
        QFETCH(int, shown);
        Window window;
        QVERIFY(window.open(layBench(R"("faults": {"of": "READ_RAM", )" + fault + "}")));
        window.run();
        QString const loss = "Error: Core 0, window %1 of 2 did not come whole.";
        QVERIFY2(window.messages().contains(loss.arg(shown)), qPrintable(window.messages()));
        QVERIFY(window.messages().contains("Error: Capture incomplete"));
        QCOMPARE(window.monitor()->model()->timeLength(), shown * 256);
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
    }

    /// A core that waits for ever: force it, repeat it, lose its server, close on it.
    void longRuns()
    {
        QString const setup = layBench(R"("cables": [{"kind": "FT2CH", "location": 3}])");
        QByteArray never = content(setup); // no unit matches: what is there stays as it is
        never.replace("M0&amp;(M1^M2)|M5&amp;!(M1|M2)", "M0&amp;!M0");
        QVERIFY(never != content(setup));
        write("never.vek", never);
        Window window;
        QVERIFY(window.open(path("never.vek")));
        QAction* const run = window.action("&Run");
        auto const isOver = [&] { return run->isEnabled(); };

        run->trigger();
        QTRY_VERIFY(window.messages().contains("the stimulus has ended"));
        window.action("&Force Trigger")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(isOver(), 20000);
        QCOMPARE(window.monitor()->model()->timeLength(), 512);
        QVERIFY(window.messages().contains("Core 0 was forced."));
        auto const* const monitors =
            qobject_cast<QTabWidget*>(window.centralWidget()->layout()->itemAt(0)->widget());
        QCOMPARE(monitors->tabText(0), "Core 0 (forced)");

        window.action("&Auto-run")->setChecked(true);
        QVERIFY(window.open(setup));
        run->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(window.messages().count("window 1:") > 2, 20000);
        window.action("&Stop")->trigger();
        QTRY_VERIFY(isOver());
        QVERIFY(window.messages().endsWith("Stopped."));

        QVERIFY(window.open(path("never.vek")));
        run->trigger();
        QTRY_COMPARE(window.messages().count("the stimulus has ended"), 2);
        QCOMPARE(childProcesses().size(), 1);
        QCOMPARE(::kill(childProcesses().first().toInt(), SIGKILL), 0);
        QTRY_VERIFY(isOver());
        QVERIFY(window.messages().endsWith("Run again to start another one."));
        QCOMPARE(window.messages().count("Error:"), 1);

        // other cores while a window is being read
        QVERIFY(window.open(setup));
        auto* const log = window.findChild<QPlainTextEdit*>();
        bool wasOpened = false;
        auto const onMessage = connect(log, &QPlainTextEdit::textChanged, [&] {
            if (wasOpened || !window.messages().endsWith("window 0: 256 samples."))
                return;
            wasOpened = true;
            QVERIFY(window.open(path("never.vek")));
        });
        run->trigger();
        QTRY_VERIFY(wasOpened && isOver());
        QCOMPARE(window.monitor()->model()->timeLength(), 0);
        disconnect(onMessage);

        run->trigger();
        QTRY_COMPARE(childProcesses().size(), 1);
        QVERIFY(window.close());
        QVERIFY(childProcesses().isEmpty());
    }

    void hungServer()
    {
        QString const setup = layBench(R"("cables": [{"kind": "FT2CH"}])");
        write("never.vek", content(setup).replace("M0&amp;(M1^M2)|M5&amp;!(M1|M2)", "M0&amp;!M0"));
        Window window;
        QVERIFY(window.open(path("never.vek")));
        QAction* const run = window.action("&Run");
        {
            VEK::CableHold other(VEK::Server::UsbSocket);
            QVERIFY(other.take());
            run->trigger();
            QTRY_VERIFY(run->isEnabled());
            QVERIFY(window.messages().endsWith("Another run holds the cable. Wait for its end."));
        }
        run->trigger();
        QTRY_VERIFY(window.messages().contains("the stimulus has ended"));
        QCOMPARE(::kill(childProcesses().first().toInt(), SIGSTOP), 0);
        auto* const replace = window.statusBar()->findChild<QToolButton*>();
        QTRY_VERIFY_WITH_TIMEOUT(replace->isVisible(), 20000);
        replace->click();
        QTRY_VERIFY(run->isEnabled());
        QVERIFY(childProcesses().isEmpty());
        QVERIFY(window.open(setup));
        run->trigger();
        QTRY_VERIFY(window.messages().endsWith("Capture complete."));
    }

    void unsavedWork()
    {
        QString const setup = layDemo("bus/bus-stall");
        QString const broken = write("broken.rsx", content(setup).left(900));
        Window window;
        QVERIFY(window.open(setup));
        QVERIFY(!window.open(broken)); // and all stays
        QVERIFY(window.messages().contains("Error: " + broken));
        QVERIFY(window.windowTitle().startsWith("bus-stall.vek"));
        QVERIFY(window.action("&Run")->isEnabled());

        auto* const position = window.findChild<QTabWidget*>()->findChild<QSpinBox*>();
        QVERIFY(position);
        position->setValue(position->value() + 1);
        answerButton("Cancel");
        QVERIFY(!window.close());
        QVERIFY(window.isVisible());
        QByteArray const before = content(setup);
        {
            FullDisk const full;
            window.action("&Save")->trigger();
        }
        QVERIFY2(window.messages().contains("Error: " + setup + " can't be written"),
                 qPrintable(window.messages()));
        QCOMPARE(content(setup), before);
        answerButton("Save");
        QVERIFY(window.close());
        QVERIFY(
            configuration(setup).contains(QString("trigger_pos=\"%1\"").arg(position->value())));

        Window next; // remembers
        QVERIFY(next.action(setup)->isEnabled());
        QAction* gone = nullptr;
        for (auto* const action : next.findChildren<QAction*>())
            gone = action->text() == broken ? action : gone;
        QVERIFY(!gone);
    }

    void unusableBench()
    {
        QString const setup = layDemo("bus/bus-stall");
        qputenv("VEK_BENCH",
                write("bench.json", R"({"device": "TK-503", "design": "none"})").toUtf8());
        Window window;
        QVERIFY(window.open(setup));
        window.run();
        QString const reason = "Error: The server reports device error -100. " + path("none");
        QVERIFY2(window.messages().contains(reason), qPrintable(window.messages()));
        window.close(); // with its server
    }

    void troubles()
    {
        Window window;
        QVERIFY(!window.open(path("missing.vek")));
        QVERIFY(window.messages().contains("Error: " + path("missing.vek")));
        QVERIFY(!window.action("&Run")->isEnabled());

        QString const setup = layBench(R"("open_result": -1)");
        QVERIFY(window.open(setup));
        window.run();
        QVERIFY2(window.messages().contains("Error: The device could not be opened"),
                 qPrintable(window.messages()));

        // the file changes under the window, and then goes
        QFile file(setup);
        QVERIFY(file.open(QIODevice::Append) && file.write("\n") == 1);
        file.close();
        auto const banner = [&] {
            QLabel* const label = window.centralWidget()->findChild<QLabel*>("labelFile");
            return label && label->isVisible() ? label->text() : QString();
        };
        QTRY_COMPARE(banner(), QString("Vek file '%1' has been changed on disk.").arg(setup));
        for (QString const& answer : {QString("Cancel"), QString("Save")}) {
            answerButton(answer);
            window.action("&Save")->trigger();
            QCOMPARE(content(setup).endsWith("\n\n"), answer == "Cancel");
        }
        QCOMPARE(banner(), QString());
        QVERIFY(file.open(QIODevice::Append) && file.write("\n") == 1);
        file.close();
        QTRY_COMPARE(banner(), QString("Vek file '%1' has been changed on disk.").arg(setup));
        window.press("btnA");
        QTRY_COMPARE(banner(), QString());
        QVERIFY(QFile::remove(setup));
        QTRY_COMPARE(banner(), QString("Vek file '%1' has been removed on disk.").arg(setup));
        layDemo("bus/bus-stall");
        QTRY_COMPARE(banner(), QString("Vek file '%1' has been changed on disk.").arg(setup));
    }
};

QTEST_MAIN(TestWorkbench)
#include "tst_workbench.moc"
