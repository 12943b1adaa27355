#include "deskfiles.h"

#include "jtag/frame.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>

#include <sys/stat.h>

using namespace VEK;

namespace {

/// A program of the simulator in a temporary folder of its own.
class Program
{
public:
    DeskFiles files;
    QProcess process;

    /// Runs with a bench that has `more` members, or without one.
    explicit Program(QByteArray const& more = QByteArray(), QString const& name = "scanbridge")
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", files.path(""));
        environment.remove("VEK_BENCH");
        if (!more.isEmpty()) {
            files.write("d.vek", DeskFiles::vek());
            environment.insert(
                "VEK_BENCH",
                files.write("bench.json", R"({"device": "D", "design": "d.vek", )" + more + "}"));
        }
        process.setProcessEnvironment(environment);
        process.start(VEK_BUILD_ROOT "/Programmer/bin/" + name, {"-local"});
    }
    ~Program()
    {
        process.kill();
        process.waitForFinished();
    }
};

/// The host's side of a connection.
class Client
{
public:
    QLocalSocket socket;

    explicit Client(Program const& program, QString const& name = "vek1")
    {
        auto const connects = [&] {
            socket.connectToServer(program.files.path(name));
            return socket.waitForConnected(1000);
        };
        if (!QTest::qWaitFor(connects, 20000))
            qFatal("no server");
    }
    void send(CmdPack const& pack)
    {
        socket.write(frameFromPack(pack));
        socket.flush();
    }
    /// An empty pack when none comes.
    CmdPack reply()
    {
        CmdPack pack;
        while (takeFrame(socket, m_blockSize, pack) != FrameState::Complete) {
            if (!socket.waitForReadyRead(5000))
                return CmdPack();
        }
        return pack;
    }
    QVariant open()
    {
        send(DeskFiles::request("OPEN"));
        return reply().value("RES");
    }
    QByteArray capture()
    {
        for (CmdPack const& request : DeskFiles::capture())
            send(request);
        return DeskFiles::values(reply());
    }

private:
    quint32 m_blockSize = 0;
};

} // namespace

class TestScanbridge : public QObject
{
    Q_OBJECT

private slots:
    void sockets()
    {
        char const* const rows[][2] = {
            {"scanbridge", "vek1"}, {"scanbridge_lpt", "vek"}, {"scanbridge_7qz", "vek7qz"}};
        for (auto const& row : rows) {
            Program program("", row[0]);
            Client client(program, row[1]);
            QCOMPARE(client.open(), QVariant(-20));
            QCOMPARE(program.process.readAllStandardError(), QByteArray());
        }
    }

    void listensBeforeItLoads()
    {
        DeskFiles stimulus;
        QString const pipe = stimulus.path("s.vcd");
        QCOMPARE(::mkfifo(qPrintable(pipe), 0600), 0);
        Program program(QString(R"("stimulus": {"vcd": "%1"})").arg(pipe).toLatin1());
        Client client(program);
        client.send(DeskFiles::request("OPEN"));
        stimulus.write("s.vcd", DeskFiles::vcd(50));
        QCOMPARE(client.reply(), (CmdPack{{"RES", 0}}));
        QCOMPARE(client.capture(), QByteArray("30123012"));
    }

    void hostileFrames()
    {
        Program program;
        Client client(program);
        client.socket.write(QByteArray("\0\0\0\4\xff\xff\xff\xff", 8)); // no message
        QByteArray const frame = frameFromPack(DeskFiles::request("OPEN"));
        client.socket.write(frame + frame.left(9)); // one and a half
        QCOMPARE(client.reply().value("RES"), QVariant(-20));
        client.socket.write(frame.mid(9));
        QCOMPARE(client.reply().value("RES"), QVariant(-20));
        client.socket.write(QByteArray(8, '\xff')); // a length beyond reason
        QVERIFY(client.socket.waitForDisconnected(5000));
        Client next(program);
        QCOMPARE(next.open(), QVariant(-20));
    }

    void faultsOfReplies()
    {
        Program late(R"("faults": {"delay": 300, "byte_by_byte": true})");
        Client client(late);
        QElapsedTimer clock;
        clock.start();
        QSignalSpy bytes(&client.socket, &QLocalSocket::readyRead);
        QCOMPARE(client.open(), QVariant(0));
        QVERIFY(clock.elapsed() >= 300 && bytes.size() > 10);

        Program held(R"("faults": {"together": 2})");
        Client pair(held);
        QSignalSpy pieces(&pair.socket, &QLocalSocket::readyRead);
        pair.send(DeskFiles::request("QUERY"));
        pair.send(DeskFiles::request("OPEN"));
        QVERIFY(pair.reply().contains("CABLES"));
        QCOMPARE(pair.reply().value("RES"), QVariant(0));
        QCOMPARE(pieces.size(), 1); // both in one piece
    }
};

QTEST_GUILESS_MAIN(TestScanbridge)
#include "tst_scanbridge.moc"
