#include "deskfiles.h"

#include "jtag/frame.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>

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
    void sockets()
    {
        char const* const rows[][2] = {
            {"scanbridge", "vek1"}, {"scanbridge_lpt", "vek"}, {"scanbridge_7qz", "vek7qz"}};
        for (auto const& row : rows) {
            Program program;
            program.start({Local}, row[0]);
            Client client(program, row[1]);
            QCOMPARE(client.open(), QVariant(-20));
            QCOMPARE(program.process.readAllStandardError(), QByteArray());
        }
    }

    void listensBeforeItLoads()
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

    void hostileFrames()
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

    /// What a killed server left is replaced; what lives is not.
    void takenSocket()
    {
        Program program;
        program.start();
        Client client(program);
        program.process.kill();
        QVERIFY(program.process.waitForFinished());
        QVERIFY(QFile::exists(program.files.path("vek1")));
        program.start();
        client.socket.abort();
        QVERIFY(client.connectTo(program));
        QCOMPARE(client.open(), QVariant(-20));

        QProcess rival;
        rival.setProcessEnvironment(program.process.processEnvironment());
        rival.start(Program::path("scanbridge"), {Local});
        QVERIFY(rival.waitForFinished(5000));
        QCOMPARE(rival.exitCode(), 1);
        QCOMPARE(client.open(), QVariant(-20));
    }

    void endsWithItsParent()
    {
        Program shell;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", shell.files.path(""));
        shell.process.setProcessEnvironment(environment);
        shell.process.start("sh",
                            {"-c", "\"$0\" -local & echo $!; wait", Program::path("scanbridge")});
        Client client(shell);
        QTRY_VERIFY(shell.process.canReadLine());
        QString const server = "/proc/" + shell.process.readLine().trimmed() + "/exe";
        QVERIFY(QFile::symLinkTarget(server).endsWith("/scanbridge"));
        shell.process.kill();
        QTRY_COMPARE(QFile::symLinkTarget(server), QString());
    }

    void faultsOfReplies()
    {
        Program late(R"("faults": {"delay": 300, "byte_by_byte": true, "silent_from": 2})");
        Client client(late);
        QElapsedTimer clock;
        clock.start();
        QSignalSpy pieces(&client.socket, &QLocalSocket::readyRead);
        QCOMPARE(client.open(), QVariant(0));
        QVERIFY(clock.elapsed() >= 300 && pieces.size() > 10);
        client.send(DeskFiles::request("OPEN"));
        QCOMPARE(client.reply(600), CmdPack());
        QCOMPARE(client.socket.state(), QLocalSocket::ConnectedState);

        Program held(R"("faults": {"together": 2})");
        Client pair(held);
        pair.send(DeskFiles::request("QUERY"));
        QCOMPARE(pair.reply(200), CmdPack());
        pair.send(DeskFiles::request("OPEN"));
        QVERIFY(pair.reply().contains("CABLES"));
        QCOMPARE(pair.reply(0).value("RES"), QVariant(0)); // has come with it
    }

    void faultsThatEnd()
    {
        Program program(R"("faults": {"of": "OPEN", "close_after": 2, "die_after": 4})");
        Client client(program);
        client.send(DeskFiles::request("QUERY")); // doesn't count
        QVERIFY(client.reply().contains("CABLES"));
        QVERIFY(client.open() == 0 && client.open() == 0);
        QTRY_COMPARE(client.socket.state(), QLocalSocket::UnconnectedState);
        QVERIFY(client.connectTo(program));
        QCOMPARE(client.open(), QVariant(0));
        client.send(DeskFiles::request("OPEN"));
        QVERIFY(program.process.waitForFinished(5000));
        QCOMPARE(program.process.exitCode(), 1);
    }
};

QTEST_GUILESS_MAIN(TestScanbridge)
#include "tst_scanbridge.moc"
