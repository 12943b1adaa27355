#include "workbench/mainwindow.h"

#include <QAction>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString const Source = VEK_SOURCE_ROOT;
QString const Build = VEK_BUILD_ROOT;

QByteArray content(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no " + path.toUtf8());
}

struct Window : MainWindow
{
    QAction* action(QString const& text) const
    {
        for (auto* const candidate : findChildren<QAction*>())
            if (candidate->text() == text)
                return candidate;
        qFatal("no action %s", qPrintable(text));
    }
    QString messages() const { return findChild<QPlainTextEdit*>()->toPlainText(); }
    /// Runs a capture to its end.
    void run()
    {
        action("&Run")->trigger();
        QVERIFY(!action("&Run")->isEnabled() || !messages().contains("started"));
        QTRY_VERIFY_WITH_TIMEOUT(action("&Run")->isEnabled(), 20000);
    }
};

} // namespace

/// A session at the workbench with the real programs: capture, save, open again, export.
class TestWorkbench : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder{QStringLiteral("/tmp/vekXXXXXX")};

    QString path(QString const& name) const { return m_folder.filePath(name); }
    /// A demo's setup in the folder, with its bench in use.
    QString layDemo(QString const& demo)
    {
        qputenv("VEK_BENCH", (Source + "/examples/" + demo + ".json").toUtf8());
        QString const copy = path(QFileInfo(demo).fileName() + ".vek");
        QFile::remove(copy);
        QFile::copy(Source + "/examples/" + demo + ".vek", copy);
        return copy;
    }

private slots:
    void initTestCase()
    {
        qputenv("TMPDIR", m_folder.path().toUtf8());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
        QCoreApplication::setOrganizationName("vek");
        QCoreApplication::setApplicationName("tst_workbench");
    }

    void captureSaveOpenExport_data()
    {
        QTest::addColumn<QString>("demo");
        QTest::addColumn<QString>("result"); // of the batch tool
        QTest::addColumn<int>("core");
        QTest::addColumn<int>("window");
        QTest::newRow("windows") << "bus/bus-stall"
                                 << "batch_core0_window1.csv" << 0 << 1;
        QTest::newRow("cores") << "uart/uart-link"
                               << "batch_core1_window0.csv" << 1 << 0;
        QTest::newRow("lite") << "bus/bus-start"
                              << "batch.csv" << 0 << 0;
    }

    void captureSaveOpenExport()
    {
        QFETCH(QString, demo);
        QFETCH(QString, result);
        QFETCH(int, core);
        QFETCH(int, window);
        QString const setup = layDemo(demo);
        QProcess batch;
        batch.setWorkingDirectory(m_folder.path());
        batch.start(Build + "/Analyzer/bin/veksh",
                    {"-cable", "FT2CH", "-vek", setup, "-out", "batch"});
        QVERIFY(batch.waitForFinished());
        QByteArray const expected = content(path(result));
        QVERIFY(expected.contains("time unit: us"));
        {
            Window first;
            first.show();
            QVERIFY(first.open(setup));
            first.run();
            QVERIFY2(first.messages().contains("Capture complete."), qPrintable(first.messages()));
            first.exportWindowAs(path("first.csv"), core, window);
            first.saveSessionAs(path("session.rsx"));
            first.exportWindowAs(path("no/such/folder.csv"), core, window);
            QVERIFY(first.messages().contains("Error: " + path("no/such/folder.csv")));
        }
        QCOMPARE(content(path("first.csv")), expected);

        Window second;
        QVERIFY(second.open(path("session.rsx")));
        second.exportWindowAs(path("second.csv"), core, window);
        QCOMPARE(content(path("second.csv")), expected);
        second.exportWindowAs(path("second.vcd"), core, window);
        QVERIFY(content(path("second.vcd")).contains("$enddefinitions"));
    }

    void troubles()
    {
        Window window;
        window.show();
        QVERIFY(!window.open(path("missing.vek")));
        QVERIFY(window.messages().contains("Error: " + path("missing.vek")));
        QVERIFY(!window.action("&Run")->isEnabled());

        QString const setup = layDemo("bus/bus-stall");
        qputenv("VEK_BENCH", path("empty.json").toUtf8());
        QFile bench(path("empty.json"));
        QVERIFY(bench.open(QIODevice::WriteOnly) && bench.write("{\"device\": \"TK-501\"}") > 0);
        bench.close();
        QVERIFY(window.open(setup));
        window.run();
        QVERIFY2(window.messages().contains("Error: The device is empty"),
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
        QVERIFY(QFile::remove(setup));
        QTRY_COMPARE(banner(), QString("Vek file '%1' has been removed on disk.").arg(setup));
    }
};

QTEST_MAIN(TestWorkbench)
#include "tst_workbench.moc"
