#include "jtag/jtagsession.h"
#include "jtag/serverstartup.h"
#include "model/alert.h"
#include "tests/support/tempfolder.h"

#include <QDir>
#include <QLocalServer>
#include <QProcess>
#include <QTcpServer>
#include <QtTest>

#include <csignal>

using namespace VEK;

namespace {

QString const Ft2ch = "Kavro USB Cable(FT2CH)";

QStringList lines(QList<JtagServer> const& servers)
{
    QStringList result;
    for (JtagServer const& server : servers)
        result += server.name + '|' + server.address +
                  QString::asprintf(" %d %d %d", server.port, server.cable, server.channel);
    return result;
}

} // namespace

/// The servers are scripts that wait; where one has to listen, the test itself does.
class ServerStartupTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        session->disconnectServer();
        session->clearAllServerMap();
        bin.removeRecursively();
    }

    void localServers()
    {
        QVERIFY(!session->connectLocalServer());
        install("scanbridge_lpt");
        QStringList expected{"Parallel Port(LPT)|vek 36546 3 0"};
        QCOMPARE(lines(session->initLocalServerList()), expected);
        install("scanbridge");
        expected.prepend(Ft2ch + "|vek1 36545 1 0");
        QCOMPARE(lines(session->initLocalServerList()), expected);
        QCOMPARE(session->serverMap().last()->arguments(), QStringList{"-local"});

        TempFolder const folder;
        qputenv("TMPDIR", folder.path().toLocal8Bit());
        QLocalServer listening;
        QVERIFY(listening.listen("vek1")); // the other one never does, and is stopped
        QVERIFY(session->connectLocalServer());
        QCOMPARE(session->serverList(), (QList<QPair<QString, int>>{{Ft2ch, 2}}));
        QCOMPARE(session->serverMap().keys(), QStringList{Ft2ch});
        int const server = int(session->serverMap()[Ft2ch]->processId());
        session->disconnectServer(); // stops no process
        QCOMPARE(::kill(server, 0), 0);
        session->clearServerForMap(Ft2ch);
        QVERIFY(::kill(server, 0) != 0);
    }

    /// The session's choice for a batch run, and that of the free function.
    void serverOfACable()
    {
        for (char const* program : {"scanbridge", "scanbridge_lpt", "scanbridge_7qz"})
            install(program);
        QStringList batch, own;
        QMap<QString, QProcess*> processes;
        for (CABLE const cable : {CableTR7QZ, CableFT2CH, CABLE(2), CableLPT}) {
            batch += lines(session->initLocalServerListForveksh(cable, Channel1));
            own += lines(initServerList(processes, cable, Channel1));
        }
        QString const usb = Ft2ch + "|vek1 36545 1 1", lpt = "Parallel Port(LPT)|vek 36546 3 1";
        QCOMPARE(batch, (QStringList{usb, usb, lpt}));
        QCOMPARE(own, (QStringList{"Kavro USB Cable(TR7QZ)|vek7qz 36547 0 1", usb, lpt}));
        for (QProcess* process : processes) {
            process->kill();
            QVERIFY(process->waitForFinished());
        }
        qDeleteAll(processes);
    }

    void remoteServer()
    {
        QStringList alerts;
        setAlertHandler([&](Alert const& alert) { alerts += alert.title + "|" + alert.text; });
        // Of this process alone: the remote family's port is fixed.
        qint64 const pid = QCoreApplication::applicationPid();
        QHostAddress const loopback(quint32(0x7f800001 + pid % 0x7fff00));
        session->setNlcMode(true);
        QVERIFY(!session->connectNlcServer(loopback.toString(), "1234"));
        install("scanbridge");
        QVERIFY(!session->connectNlcServer(loopback.toString(), "1234"));
        QTcpServer listening;
        QVERIFY(listening.listen(loopback, 36547));
        QVERIFY(session->connectNlcServer(loopback.toString(), "1234"));
        QVERIFY(session->serverMap().last()->arguments().isEmpty());
        QCOMPARE(alerts, (QStringList{"Error|Can not launch JTAG server.",
                                      "Error|Can not connect to JTAG server."}));
    }

private:
    void install(QString const& program)
    {
        QFile file(bin.filePath(program));
        QVERIFY(bin.mkpath(".") && file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nexec sleep 60\n");
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }

    JtagSession* const session = JtagSession::shared();
    QDir bin{QCoreApplication::applicationDirPath() + "/../../Programmer/bin"};
};

QTEST_GUILESS_MAIN(ServerStartupTest)
#include "tst_serverstartup.moc"
