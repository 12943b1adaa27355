#include "jtag/alert.h"
#include "jtag/jtagsession.h"
#include "jtag/serverstartup.h"

#include <QDir>
#include <QHostAddress>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>

using namespace VEK;

namespace {

QString const Ft2ch = "Kavro USB Cable(FT2CH)";
QString const Lpt = "Parallel Port(LPT)";

/// A record as one line.
QString line(JtagServer const& server)
{
    return QString("%1 %2 %3 %4 %5")
        .arg(server.name, server.address)
        .arg(server.port)
        .arg(server.cable)
        .arg(server.channel);
}

QStringList lines(QList<JtagServer> const& servers)
{
    QStringList result;
    for (JtagServer const& server : servers)
        result.append(line(server));
    return result;
}

bool runs(qint64 pid)
{
    return kill(pid_t(pid), 0) == 0;
}

} // namespace

class ServerStartupTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void localServers();
    void oneServerForABatchRun_data();
    void oneServerForABatchRun();
    void listOfItsOwn_data();
    void listOfItsOwn();
    void connectLocal();
    void connectRemote();
    void remoteFailures();

private:
    void install(QStringList const& programs);
    QByteArray argumentsOf(QString const& program);

    JtagSession* const session = JtagSession::shared();
    QDir bin{QCoreApplication::applicationDirPath() + "/../../Programmer/bin"};
    QTemporaryDir tmp{"/tmp/vj-XXXXXX"};
    QString loopback; // of this process alone: the remote family's port is fixed
    QStringList alerts;
};

void ServerStartupTest::initTestCase()
{
    QVERIFY(bin.mkpath("."));
    qputenv("TMPDIR", tmp.path().toLocal8Bit());
    qint64 const pid = QCoreApplication::applicationPid();
    loopback = QHostAddress(quint32(0x7f000000 | (0x800000 + pid % 0x7fff00 + 1))).toString();
}

void ServerStartupTest::init()
{
    alerts.clear();
    setAlertHandler([this](Alert const& alert) {
        alerts.append(alert.title + QLatin1Char('|') + alert.text);
        QCOMPARE(alert.kind, AlertKind::Critical);
    });
}

void ServerStartupTest::cleanup()
{
    session->disconnectServer();
    session->clearAllServerMap();
    session->setNlcMode(false);
    install({});
    for (QString const& note : QDir(tmp.path()).entryList({"args-*"}))
        QFile::remove(tmp.filePath(note));
}

/// Puts stand-ins under just these names where the servers are looked for.
void ServerStartupTest::install(QStringList const& programs)
{
    for (QString const& old : bin.entryList(QDir::Files | QDir::System))
        bin.remove(old);
    for (QString const& program : programs)
        QVERIFY(QFile::link(STANDIN, bin.filePath(program)));
}

QByteArray ServerStartupTest::argumentsOf(QString const& program)
{
    QFile note(tmp.filePath("args-" + program));
    if (!QTest::qWaitFor([&] { return note.exists(); }, 5000) || !note.open(QIODevice::ReadOnly))
        return "never ran";
    return note.readAll();
}

void ServerStartupTest::localServers()
{
    QVERIFY(session->initLocalServerList().isEmpty());
    install({"scanbridge_lpt"});
    QCOMPARE(lines(session->initLocalServerList()),
             QStringList{"Parallel Port(LPT) vek 36546 3 0"});
    qint64 const first = session->serverMap()[Lpt]->processId();
    install({"scanbridge", "scanbridge_lpt"});
    QCOMPARE(
        lines(session->initLocalServerList()),
        (QStringList{"Kavro USB Cable(FT2CH) vek1 36545 1 0", "Parallel Port(LPT) vek 36546 3 0"}));
    QCOMPARE(argumentsOf("scanbridge"), QByteArray("-local"));
    QCOMPARE(argumentsOf("scanbridge_lpt"), QByteArray("-local"));

    QCOMPARE(session->serverMap().keys(), (QStringList{Ft2ch, Lpt}));
    qint64 const usb = session->serverMap()[Ft2ch]->processId();
    qint64 const lpt = session->serverMap()[Lpt]->processId();
    QVERIFY(runs(usb) && runs(lpt) && lpt != first);
    session->clearServerForMap(Lpt);
    session->clearServerForMap(Lpt);
    QVERIFY(runs(usb) && !runs(lpt));
    session->disconnectServer(); // stops no process
    QVERIFY(runs(usb));
    session->clearAllServerMap();
    QVERIFY(!runs(usb) && !runs(first) && session->serverMap().isEmpty());
}

void ServerStartupTest::oneServerForABatchRun_data()
{
    QTest::addColumn<int>("cable");
    QTest::addColumn<QStringList>("expected");
    QStringList const usb{"Kavro USB Cable(FT2CH) vek1 36545 1 1"};
    QTest::newRow("TR7QZ") << 0 << usb;
    QTest::newRow("FT2CH") << 1 << usb;
    QTest::newRow("unknown") << 2 << QStringList();
    QTest::newRow("LPT") << 3 << QStringList{"Parallel Port(LPT) vek 36546 3 1"};
}

void ServerStartupTest::oneServerForABatchRun()
{
    QFETCH(int, cable);
    install({"scanbridge", "scanbridge_lpt"});
    QTEST(lines(session->initLocalServerListForveksh(CABLE(cable), Channel1)), "expected");
}

void ServerStartupTest::listOfItsOwn_data()
{
    QTest::addColumn<int>("cable");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("expected");
    QTest::newRow("TR7QZ") << 0 << "scanbridge_7qz"
                           << "Kavro USB Cable(TR7QZ) vek7qz 36547 0 1";
    QTest::newRow("FT2CH") << 1 << "scanbridge"
                           << "Kavro USB Cable(FT2CH) vek1 36545 1 1";
    QTest::newRow("LPT") << 3 << "scanbridge_lpt"
                         << "Parallel Port(LPT) vek 36546 3 1";
}

void ServerStartupTest::listOfItsOwn()
{
    QFETCH(int, cable);
    QFETCH(QString, program);
    QFETCH(QString, expected);
    QMap<QString, QProcess*> processes;
    QVERIFY(initServerList(processes, CABLE(cable), Channel1).isEmpty());
    QVERIFY(processes.isEmpty());
    install({program});
    QVERIFY(initServerList(processes, CABLE(2), Channel1).isEmpty());
    QCOMPARE(lines(initServerList(processes, CABLE(cable), Channel1)), QStringList{expected});
    QCOMPARE(argumentsOf(program), QByteArray("-local"));
    QVERIFY(session->serverMap().isEmpty());
    QCOMPARE(processes.size(), 1);
    std::unique_ptr<QProcess> const process(processes.first());
    QVERIFY(expected.startsWith(processes.firstKey()));
    process->kill();
    QVERIFY(process->waitForFinished(5000));
}

/// One server answers as soon as it listens; the other never does, which costs all the rounds.
void ServerStartupTest::connectLocal()
{
    QVERIFY(!session->connectLocalServer());
    install({"scanbridge", "scanbridge_lpt"});
    QElapsedTimer timer;
    timer.start();
    QVERIFY(session->connectLocalServer());
    QVERIFY2(timer.elapsed() >= 64 * 30, "gave the second server up too early");
    QCOMPARE(session->serverList(), (QList<QPair<QString, int>>{{Ft2ch, 2}}));
    QCOMPARE(session->serverMap().keys(), QStringList{Ft2ch});
    QVERIFY(session->connectServer("Kavro USB Cable(TR7QZ)"));
    QVERIFY(alerts.isEmpty());
}

void ServerStartupTest::connectRemote()
{
    install({"scanbridge"});
    session->setNlcMode(true);
    QTcpServer server;
    QVERIFY2(server.listen(QHostAddress(loopback), 36547), qPrintable(server.errorString()));
    QVERIFY(session->connectNlcServer(loopback, "1234"));
    QVERIFY(server.waitForNewConnection(1000));
    QCOMPARE(argumentsOf("scanbridge"), QByteArray());
    QCOMPARE(session->serverList(), (QList<QPair<QString, int>>{{Ft2ch, 2}}));
    QVERIFY(alerts.isEmpty());
    QCOMPARE(lines(session->initNlcServerList(loopback, 1234)),
             QStringList{Ft2ch + QLatin1Char(' ') + loopback + QLatin1String(" 36547 1 0")});
}

void ServerStartupTest::remoteFailures()
{
    session->setNlcMode(true);
    QVERIFY(!session->connectNlcServer(loopback, "1234"));
    install({"scanbridge"});
    QVERIFY(!session->connectNlcServer(loopback, "1234"));
    QCOMPARE(alerts, (QStringList{"Error|Can not launch JTAG server.",
                                  "Error|Can not connect to JTAG server."}));
    QVERIFY(session->serverMap().isEmpty());
}

QTEST_GUILESS_MAIN(ServerStartupTest)
#include "tst_serverstartup.moc"
