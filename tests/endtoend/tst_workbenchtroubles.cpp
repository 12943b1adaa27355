#include "workbenchrig.h"

#include "jtag/cablehold.h"
#include "tests/support/widgettools.h"
#include "wavemonitor/signaltreemodel.h"

#include <QAction>
#include <QLabel>
#include <QLayout>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolButton>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace widgettools;

namespace {

/// Ids of the processes that this one has started.
QStringList childProcesses()
{
    QFile file(QString("/proc/self/task/%1/children").arg(::getpid()));
    file.open(QIODevice::ReadOnly);
    return QString(file.readAll()).split(' ', Qt::SkipEmptyParts);
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

/// What goes wrong at the workbench, or takes long, with the real programs.
class TestWorkbenchTroubles : public WorkbenchTest
{
    Q_OBJECT

    /// "never.vek", which is that setup with a trigger that never comes.
    void writeNever(QString const& setup) const
    {
        write("never.vek", content(setup).replace("M0&amp;(M1^M2)|M5&amp;!(M1|M2)", "M0&amp;!M0"));
    }

private slots:
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

    /// A core that waits for ever: force it, repeat it, lose its server, close on it.
    void longRuns()
    {
        QString const setup = layBench(R"("cables": [{"kind": "FT2CH", "location": 3}])");
        writeNever(setup);
        Window window;
        QVERIFY(window.open(path("never.vek")));
        QVERIFY(window.messages().contains("never.vek:99: MatchUnit: M1 is in use"));
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
        writeNever(setup);
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
        auto const banner = [&] {
            QLabel* const label = window.centralWidget()->findChild<QLabel*>("labelFile");
            return label && label->isVisible() ? label->text() : QString();
        };
        QString const changed = QString("Vek file '%1' has been changed on disk.").arg(setup);
        write("bus-stall.vek", content(setup) + '\n');
        QTRY_COMPARE(banner(), changed);
        for (QString const& answer : {QString("Cancel"), QString("Save")}) {
            answerButton(answer);
            window.action("&Save")->trigger();
            QCOMPARE(content(setup).endsWith("\n\n"), answer == "Cancel");
        }
        QCOMPARE(banner(), QString());
        write("bus-stall.vek", content(setup) + '\n');
        QTRY_COMPARE(banner(), changed);
        window.press("btnA");
        QTRY_COMPARE(banner(), QString());
        QVERIFY(QFile::remove(setup));
        QTRY_COMPARE(banner(), QString("Vek file '%1' has been removed on disk.").arg(setup));
        layDemo("bus/bus-stall");
        QTRY_COMPARE(banner(), changed);
    }
};

QTEST_MAIN(TestWorkbenchTroubles)
#include "tst_workbenchtroubles.moc"
