#include "jtag/jtagsession.h"
#include "tests/support/tempfolder.h"

#include <QImage>
#include <QProcess>
#include <QtTest>

namespace {

QString const Bus = VEK_SOURCE_ROOT "/examples/bus/";

/// Pixels of a colour.
int count(QString const& picture, QColor const& color)
{
    QImage const image = QImage(picture).convertToFormat(QImage::Format_RGB32);
    int found = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            found += image.pixel(x, y) == color.rgb();
    return found;
}

} // namespace

/// The programs beside the tools: the examples, the workbench's pictures, a server on TCP.
class TestPrograms : public QObject, TempFolder
{
    Q_OBJECT

    /// Standard output of a program that ends well.
    QByteArray run(QString const& program, QStringList const& arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(path());
        process.start(VEK_BUILD_ROOT "/" + program, arguments);
        bool const ok = process.waitForFinished(30000) && process.exitCode() == 0;
        return ok ? "ok " + process.readAllStandardOutput() : process.readAllStandardError();
    }

private slots:
    void initTestCase()
    {
        qputenv("TMPDIR", path().toUtf8()); // sockets of its own
        qputenv("VEK_BENCH", (Bus + "bus-stall.json").toUtf8());
    }

    void pictures()
    {
        QCOMPARE(run("Analyzer/bin/vek", {"run", Bus + "bus-stall.vek", "-o", "stall"}).left(2),
                 "ok");
        QCOMPARE(run("Examples/bin/wave_monitor",
                     {"--trigger", "80", "--grab", "waves.png", "stall_core0_window0.csv"}),
                 "ok ");
        QCOMPARE(run("Analyzer/bin/vek-workbench", {"--grab", "panes", Bus + "bus-stall.vek"}),
                 "ok ");
        for (char const* picture : {"waves.png", "panes/core0.png", "panes/workbench.png"})
            QVERIFY2(count(path(picture), Qt::green) > 5000, picture);
        QVERIFY(count(path("panes/cores.png"), Qt::green) == 0);
        QCOMPARE(run("Examples/bin/programmer_panel", {"--grab", "panel.png"}), "ok ");
        QVERIFY(QImage(path("panel.png")).width() > 1000);
    }

    void edited()
    {
        QVERIFY(QFile::copy(Bus + "bus-stall.vek", path("copy.vek")));
        QCOMPARE(run("Examples/bin/core_config", {"copy.vek", "--grab", "config.png"}), "ok ");
        QVERIFY(QImage(path("config.png")).height() > 500);
        QCOMPARE(content(path("copy.vek")), content(Bus + "bus-stall.vek"));
    }

    /// What the demos' page promises of a core that captures by itself.
    void busStart()
    {
        qputenv("VEK_BENCH", (Bus + "bus-start.json").toUtf8());
        QCOMPARE(run("Analyzer/bin/veksh", {"-cable", "FT2CH", "-vek", Bus + "bus-start.vek",
                                            "-out", "start", "-device", "TK-107"})
                     .left(2),
                 "ok");
        QList<QByteArray> const lines = content(path("start.csv")).split('\n');
        auto const title = std::find_if(lines.begin(), lines.end(), [](QByteArray const& line) {
            return line.startsWith("time unit");
        });
        int const grant = title->split(',').indexOf(" grant");
        QVERIFY(grant > 0);
        auto const inRow = [&](int row) { return (title + 1 + row)->split(',').value(grant); };
        QCOMPARE(inRow(1), " 0");
        int row = 1;
        while (row < 300 && inRow(row) == " 0")
            ++row;
        QCOMPARE(row, 19);
        QCOMPARE(std::count_if(title + 1, lines.end(),
                               [](QByteArray const& line) { return !line.isEmpty(); }),
                 301);
    }

    /// The family of the remote server, which has a fixed port.
    void remoteFamily()
    {
        VEK::JtagSession* const session = VEK::JtagSession::shared();
        QProcess server;
        server.start(VEK_BUILD_ROOT "/Programmer/bin/scanbridge", QStringList());
        session->setNlcMode(true);
        QVERIFY(session->createSession({VEK::Server::Ft2chName, "127.0.0.1",
                                        VEK::Server::RemotePort, VEK::CableFT2CH, VEK::Channel0},
                                       VEK::Server::ConnectTimeout));
        QVERIFY(session->connectServer(VEK::Server::WinUsbName));
        QSignalSpy lost(session, &VEK::JtagSession::connectionLost);
        int result = -1;
        session->createTask({QUrl(), {{"CMD", "OPEN"}, {"CHAIN", QVariantList{0}}}},
                            [&](VEK::CmdPack const& reply) { result = reply["RES"].toInt(); });
        QTRY_COMPARE(result, 0);
        server.kill();
        QVERIFY(lost.count() == 1 || lost.wait());
        QVERIFY(server.state() == QProcess::NotRunning || server.waitForFinished());
        session->disconnectServer();
        session->setNlcMode(false);
    }
};

QTEST_MAIN(TestPrograms)
#include "tst_programs.moc"
