#include "deskfiles.h"

#include "jtag/frame.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpSocket>

#include <csignal>

#include <sys/stat.h>

using namespace VEK;

namespace {

QString const Local = QStringLiteral("-local");

/// A program of the simulator in a temporary folder of its own.
class Program
{
public:
    DeskFiles files;
    QProcess process;

    Program() = default;
    /// Runs with a whole bench; `more` are further members of it.
    explicit Program(QByteArray const& more)
    {
        files.write("d.vek", DeskFiles::vek());
        files.write("bench.json", R"({"device": "D", "design": "d.vek", )" + more + "}");
        start();
    }
    ~Program()
    {
        process.kill();
        process.waitForFinished();
    }
    void start(QStringList const& arguments = {Local}, QString const& name = "scanbridge")
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", files.path(""));
        environment.remove("VEK_BENCH");
        if (QFile::exists(files.path("bench.json")))
            environment.insert("VEK_BENCH", files.path("bench.json"));
        process.setProcessEnvironment(environment);
        process.start(path(name), arguments);
        QVERIFY(process.waitForStarted());
    }
    static QString path(QString const& name)
    {
        return QStringLiteral(VEK_BUILD_ROOT "/Programmer/bin/") + name;
    }
};

/// The host's side of a connection.
class Client
{
public:
    QLocalSocket socket;

    /// A connection that fails shows in the first reply.
    explicit Client(Program const& program, QString const& name = "vek1")
    {
        connectTo(program, name);
    }
    bool connectTo(Program const& program, QString const& name = "vek1")
    {
        for (int i = 0; i < 200; ++i) {
            socket.connectToServer(program.files.path(name));
            if (socket.waitForConnected(1000))
                return true;
            QTest::qWait(20);
        }
        return false;
    }
    void send(CmdPack const& pack)
    {
        socket.write(frameFromPack(pack));
        socket.flush();
    }
    /// An empty pack when none comes in time.
    CmdPack reply(int timeout = 5000)
    {
        CmdPack pack;
        QElapsedTimer clock;
        clock.start();
        while (takeFrame(socket, m_blockSize, pack) != FrameState::Complete) {
            if (!socket.waitForReadyRead(qMax(1, timeout - int(clock.elapsed()))))
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
    void sockets_data();
    void sockets();
    void tcp();
    void badArguments();
    void brokenBench();
    void listensBeforeItLoads();
    void clients();
    void sameBytes();
    void hostileFrames();
    void takenSocket();
    void endsWithItsParent();
    void endsWithoutParent();
    void lateReplies();
    void cutReplies();
    void heldReplies();
    void endings();
};

void TestScanbridge::sockets_data()
{
    QTest::addColumn<QString>("socket");
    QTest::newRow("scanbridge") << "vek1";
    QTest::newRow("scanbridge_lpt") << "vek";
    QTest::newRow("scanbridge_7qz") << "vek7qz";
}

void TestScanbridge::sockets()
{
    QFETCH(QString, socket);
    Program program;
    program.start({Local}, QTest::currentDataTag());
    Client client(program, socket);
    QCOMPARE(client.open(), QVariant(-20));
    QCOMPARE(program.process.readAllStandardError(), QByteArray());
}

void TestScanbridge::tcp()
{
    Program program;
    program.start({});
    CmdPack pack;
    for (int i = 0; i < 50 && pack.isEmpty(); ++i) {
        if (program.process.waitForFinished(50))
            QSKIP("the port is taken on this machine");
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", 36547);
        socket.write(frameFromPack(DeskFiles::request("OPEN")));
        quint32 blockSize = 0;
        while (takeFrame(socket, blockSize, pack) != FrameState::Complete) {
            if (!socket.waitForReadyRead(500))
                break; // not there yet, or the server of another run
        }
    }
    QCOMPARE(pack, (CmdPack{{"RES", -20}}));
}

void TestScanbridge::badArguments()
{
    for (QStringList const& line : {QStringList{"scanbridge_lpt"},
                                    {"scanbridge_7qz"},
                                    {"scanbridge", "-local", "x"},
                                    {"scanbridge", "-remote"}}) {
        Program program;
        program.start(line.mid(1), line.first());
        QVERIFY(program.process.waitForFinished(5000));
        QCOMPARE(program.process.exitCode(), 1);
        QVERIFY(program.process.readAllStandardError().contains("usage: "));
    }
}

void TestScanbridge::brokenBench()
{
    Program program;
    program.files.write("bench.json", "{\"desk\": 1}");
    program.start();
    Client client(program);
    QCOMPARE(client.open(), QVariant(-100));
    program.process.setReadChannel(QProcess::StandardError);
    QTRY_VERIFY(program.process.canReadLine());
    QVERIFY(program.process.readLine().contains("there is no \"desk\" here"));
}

void TestScanbridge::listensBeforeItLoads()
{
    Program program;
    QByteArray const pipe = program.files.path("s.vcd").toLocal8Bit();
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    program.files.write("d.vek", DeskFiles::vek());
    program.files.write("bench.json",
                        R"({"device": "D", "design": "d.vek", "stimulus": {"vcd": "s.vcd"}})");
    program.start();
    Client client(program);
    client.send(DeskFiles::request("OPEN"));
    QCOMPARE(client.reply(100), CmdPack());
    program.files.write("s.vcd", DeskFiles::vcd(50));
    QCOMPARE(client.reply(), (CmdPack{{"RES", 0}}));
    QCOMPARE(client.capture(), QByteArray("30123012"));
}

/// Clients share the desk, at once and one after the other.
void TestScanbridge::clients()
{
    Program program(R"("stimulus": {"pattern": "counter"})");
    Client second(program);
    {
        Client first(program);
        QCOMPARE(first.open(), QVariant(0));
        QCOMPARE(second.capture(), QByteArray("30123012"));
    }
    second.send(DeskFiles::capture().last()); // a lost connection changes nothing
    QCOMPARE(DeskFiles::values(second.reply()), QByteArray("30123012"));
    second.socket.abort();
    Client third(program);
    third.send(DeskFiles::request("CLOSE"));
    third.send(DeskFiles::capture().last());
    QCOMPARE(third.open(), QVariant(0)); // the only reply
}

void TestScanbridge::sameBytes()
{
    QByteArrayList captures;
    for (int seed : {7, 7, 8}) {
        Program program(R"("stimulus": {"pattern": "lfsr", "seed": )" + QByteArray::number(seed) +
                        "}");
        Client client(program);
        QCOMPARE(client.open(), QVariant(0));
        captures.append(client.capture());
    }
    QCOMPARE(captures.at(0).size(), 8);
    QCOMPARE(captures.at(0), captures.at(1));
    QVERIFY(captures.at(0) != captures.at(2));
}

void TestScanbridge::hostileFrames()
{
    Program program;
    program.start();
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

/// What a killed server left is replaced; what lives, or is no socket, is not.
void TestScanbridge::takenSocket()
{
    Program killed;
    killed.start();
    Client client(killed);
    killed.process.kill();
    QVERIFY(killed.process.waitForFinished());
    QVERIFY(QFile::exists(killed.files.path("vek1")));
    killed.start();
    client.socket.abort();
    QVERIFY(client.connectTo(killed));
    QCOMPARE(client.open(), QVariant(-20));

    QProcess rival;
    rival.setProcessEnvironment(killed.process.processEnvironment());
    rival.start(Program::path("scanbridge"), {Local});
    QVERIFY(rival.waitForFinished(5000));
    QCOMPARE(rival.exitCode(), 1);
    QCOMPARE(client.open(), QVariant(-20));

    Program blocked;
    blocked.files.write("vek1", "mine");
    blocked.start();
    QVERIFY(blocked.process.waitForFinished(5000));
    QCOMPARE(blocked.process.exitCode(), 1);
    QCOMPARE(QFileInfo(blocked.files.path("vek1")).size(), 4);
}

void TestScanbridge::endsWithItsParent()
{
    Program shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", shell.files.path(""));
    shell.process.setProcessEnvironment(environment);
    shell.process.start("sh", {"-c", "\"$0\" -local & echo $!; wait", Program::path("scanbridge")});
    Client client(shell);
    QTRY_VERIFY(shell.process.canReadLine());
    QString const server = "/proc/" + shell.process.readLine().trimmed() + "/exe";
    QVERIFY(QFile::symLinkTarget(server).endsWith("/scanbridge"));
    shell.process.kill();
    QTRY_COMPARE(QFile::symLinkTarget(server), QString());
}

/// A server whose parent went before it could look sees that nobody is at its pipes.
void TestScanbridge::endsWithoutParent()
{
    QProcess shell;
    shell.start(
        "sh", {"-c", "true | (sleep 0.2; exec \"$0\" -local) | true", Program::path("scanbridge")});
    QVERIFY(shell.waitForFinished(10000));
}

void TestScanbridge::lateReplies()
{
    Program program(R"("faults": {"delay": 300, "silent_from": 3})");
    Client client(program);
    QElapsedTimer clock;
    clock.start();
    client.send(DeskFiles::request("QUERY"));
    QVERIFY(client.open().isValid() && client.reply().contains("RES"));
    QVERIFY(clock.elapsed() >= 300);
    client.send(DeskFiles::request("OPEN"));
    QCOMPARE(client.reply(600), CmdPack());
    QCOMPARE(client.socket.state(), QLocalSocket::ConnectedState);
}

void TestScanbridge::cutReplies()
{
    Program program(R"("faults": {"byte_by_byte": true})");
    Client client(program);
    QSignalSpy pieces(&client.socket, &QLocalSocket::readyRead);
    QCOMPARE(client.open(), QVariant(0));
    QCOMPARE(client.capture(), QByteArray("30123012"));
    QVERIFY(pieces.size() > 10);
}

void TestScanbridge::heldReplies()
{
    Program program(R"("faults": {"together": 2})");
    Client client(program);
    client.send(DeskFiles::request("QUERY"));
    QCOMPARE(client.reply(200), CmdPack());
    client.send(DeskFiles::request("OPEN"));
    QVERIFY(client.reply().contains("CABLES"));
    QCOMPARE(client.reply(0).value("RES"), QVariant(0)); // has come with it
    client.send(DeskFiles::request("OPEN"));
    QVERIFY(!client.reply().isEmpty()); // alone, but in the end
}

void TestScanbridge::endings()
{
    Program program(R"("faults": {"close_after": 2, "die_after": 4})");
    Client client(program);
    QVERIFY(client.open() == 0 && client.open() == 0);
    QTRY_COMPARE(client.socket.state(), QLocalSocket::UnconnectedState);
    QVERIFY(client.connectTo(program));
    QCOMPARE(client.open(), QVariant(0));
    QCOMPARE(program.process.state(), QProcess::Running);
    client.send(DeskFiles::request("OPEN"));
    QVERIFY(program.process.waitForFinished(5000));
    QCOMPARE(program.process.exitCode(), 1);

    Program deaf(R"("faults": {"never_listen": true})");
    QVERIFY(!deaf.process.waitForFinished(500));
    QVERIFY(!QFile::exists(deaf.files.path("vek1")));
}

QTEST_GUILESS_MAIN(TestScanbridge)
#include "tst_scanbridge.moc"
