#include "jtag/alert.h"
#include "jtag/jtagsession.h"

#include "scriptedserver.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace VEK;

namespace {

QString const RequestId = "request_id";
QString const DataId = "data_request_id";
QString const Word = "WORD";

QStringList complaints;

void noteComplaint(QtMsgType type, QMessageLogContext const&, QString const& text)
{
    if (type != QtDebugMsg)
        complaints.append(text);
}

CmdPack answer(QString const& idKey, unsigned int id, int word = 0)
{
    return {{idKey, id}, {Word, word}};
}

JtagServer serverOf(QString const& name, int cable = 0, int channel = 0)
{
    return {name, QString(), 0, cable, channel};
}

} // namespace

class JtagSessionTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void idsAreTheLowestFree();
    void manyRequestsInFlight();
    void routing();
    void dataTasks();
    void cancelInsideDataCallback();

    void connectServer_data();
    void connectServer();
    void switchedConnection();
    void numbersAndModes();
    void disconnecting();
    void remoteLoss();
    void alertWithoutHandler();

    void framesFromSocket_data() { transports(); }
    void framesFromSocket();
    void eventLoopInsideCallback_data() { transports(); }
    void eventLoopInsideCallback();
    void peerDiesInsideFrame_data() { transports(); }
    void peerDiesInsideFrame();

private:
    static void transports();
    void open();
    unsigned int sentId(QString const& key) { return sent.last().value(key).toUInt(); }

    /// A callback that notes the word of its reply.
    TaskCallback note()
    {
        return [this](CmdPack const& pack) { words.append(pack.value(Word).toInt()); };
    }

    JtagSession* const session = JtagSession::shared();
    QTemporaryDir dir{QDir::tempPath() + "/vs-XXXXXX"};
    JtagClient clients[4]; // never connected
    std::unique_ptr<ScriptedServer> server;
    QList<CmdPack> sent; // packs for the worker
    QList<int> words;
};

void JtagSessionTest::init()
{
    complaints.clear();
    sent.clear();
    words.clear();
    qInstallMessageHandler(noteComplaint);
    connect(session, &JtagSession::createData, this,
            [this](CmdPack const& pack) { sent.append(pack); });
}

void JtagSessionTest::cleanup()
{
    qInstallMessageHandler(nullptr);
    disconnect(session, nullptr, this, nullptr);
    session->disconnectServer();
    session->switchSession({});
    session->switchSessionForNlc({});
    session->setNlcMode(false);
    session->setWorkerMode(false);
    setAlertHandler({});
    server.reset();
    QCOMPARE(complaints, QStringList());
}

/// The ids of random traffic are those of a walk over all entries for the first free one.
void JtagSessionTest::idsAreTheLowestFree()
{
    session->setWorkerMode(true);
    QRandomGenerator random(1);
    QVector<bool> busy[2];
    for (int step = 0; step < 4000; ++step) {
        bool const data = random.bounded(2);
        QVector<bool>& flags = busy[data];
        QString const key = data ? DataId : RequestId;
        if (random.bounded(100) < 52) {
            int expected = flags.indexOf(false);
            if (expected < 0) {
                expected = flags.size();
                flags.append(true);
            }
            flags[expected] = true;
            if (data)
                session->createDataTask({}, [](CmdPack const&, bool* done) { *done = true; });
            else
                session->createTask({}, note());
            QCOMPARE(sent.last().value(key), QVariant(unsigned(expected)));
        } else {
            // Any id, also one that is free already, or that nobody ever held: those change
            // nothing.
            int const id = random.bounded(flags.size() + 50);
            session->dataReturned(answer(key, unsigned(id)));
            if (id < flags.size())
                flags[id] = false;
        }
    }
    session->createTask({{}, {{Word, 1}}}, {});
    QCOMPARE(sent.last(), (CmdPack{{Word, 1}})); // fire-and-forget carries no id
    session->cancelAll();
    session->createTask({}, note());
    QCOMPARE(sent.last().value(RequestId), QVariant(0u));
}

void JtagSessionTest::manyRequestsInFlight()
{
    session->setWorkerMode(true);
    unsigned int const count = 65536;
    for (unsigned int round = 0; round < 2; ++round) {
        for (unsigned int i = 0; i < count; ++i) {
            session->createTask({}, note());
            QCOMPARE(sentId(RequestId), i);
        }
        for (unsigned int i = 0; i < count; ++i)
            session->dataReturned(answer(RequestId, i));
    }
    QCOMPARE(words.size(), int(2 * count));
}

void JtagSessionTest::routing()
{
    session->setWorkerMode(true);
    CmdPack seen;
    session->createTask({}, [&](CmdPack const& pack) {
        seen = pack;
        session->createTask({}, note()); // its own id is free again by now
        QCOMPARE(sentId(RequestId), 0u);
    });
    session->createDataTask({}, [&](CmdPack const&, bool*) { words.append(-1); });

    CmdPack both = answer(RequestId, 0, 5);
    both.insert(DataId, 0u);
    session->dataReturned(both);
    QCOMPARE(seen, (CmdPack{{Word, 5}, {DataId, 0u}}));
    QVERIFY(words.isEmpty());

    session->dataReturned(answer(RequestId, 1, 6)); // nobody's
    session->dataReturned({{Word, 7}});             // no id at all
    session->dataReturned(answer(RequestId, 0, 8));
    session->dataReturned(answer(RequestId, 0, 9)); // answered already
    QCOMPARE(words, QList<int>{8});
}

void JtagSessionTest::dataTasks()
{
    session->setWorkerMode(true);
    session->createDataTask({}, [&](CmdPack const& pack, bool* done) {
        QVERIFY(!*done);
        QVERIFY(!pack.contains(DataId));
        words.append(pack.value(Word).toInt());
        *done = words.size() == 2;
    });
    for (int word : {1, 2, 3})
        session->dataReturned(answer(DataId, 0, word));
    QCOMPARE(words, (QList<int>{1, 2}));
}

void JtagSessionTest::cancelInsideDataCallback()
{
    session->setWorkerMode(true);
    auto const owned = std::make_shared<int>(3);
    session->createDataTask({}, [this, owned](CmdPack const&, bool* done) {
        session->cancelAll();
        words.append(*owned); // what the callback owns outlives the map
        session->createDataTask({}, [this](CmdPack const&, bool*) { words.append(4); });
        *done = true;
    });
    session->createTask({}, note());
    session->dataReturned(answer(DataId, 0));
    QCOMPARE(owned.use_count(), 1L);
    session->dataReturned(answer(RequestId, 0));
    session->dataReturned(answer(DataId, 0)); // the id is the new request's, and still its
    QCOMPARE(words, (QList<int>{3, 4}));
}

void JtagSessionTest::connectServer_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("selected"); // place in the list, -1 for none

    QTest::newRow("empty") << QString() << -1;
    QTest::newRow("unknown") << "Kavro" << -1;
    QTest::newRow("by name") << "Parallel Port(LPT)" << 0;
    QTest::newRow("FT2CH") << "Kavro USB Cable(FT2CH)" << 1;
    QTest::newRow("WINUSB by FT2CH") << "Kavro USB Cable(WINUSB)" << 1;
    QTest::newRow("TR7QZ by FT2CH, first") << "Kavro USB Cable(TR7QZ)" << 1;
}

void JtagSessionTest::connectServer()
{
    QFETCH(QString, name);
    QFETCH(int, selected);
    JtagClient& before = clients[3];
    session->setSession(serverOf(Server::LptName), &clients[0]);
    session->setSession(serverOf(Server::Ft2chName), &clients[1]);
    session->setSession(serverOf(Server::Tr7qzName), &clients[2]);
    session->switchSession({{}, &before});

    QCOMPARE(session->connectServer(name), selected >= 0);
    for (int i = -1; i < 3; ++i) {
        session->createTask({}, note()); // unconnected: the pack is dropped, the callback waits
        emit(i < 0 ? before : clients[i]).cmdReceived(answer(RequestId, 0, i));
        session->cancelAll();
    }
    QCOMPARE(words, QList<int>{selected});
}

void JtagSessionTest::switchedConnection()
{
    session->setSession(serverOf(Server::Ft2chName), nullptr);
    QVERIFY(session->connectServer(Server::Ft2chName));
    session->createTask({}, note()); // no client: dropped without a word
    session->onDateReceived();
    QVERIFY(!session->validateConnnection("nowhere", 1, 1));

    session->setWorkerMode(true);
    QSignalSpy switched(session, &JtagSession::switchServer);
    QVERIFY(session->connectServer(QString()));
    QVERIFY(session->connectServer(Word));
    QCOMPARE(switched.size(), 2);
    QCOMPARE(switched[0][0].toString(), QString());
    QCOMPARE(switched[1][0].toString(), Word);
}

void JtagSessionTest::numbersAndModes()
{
    QVERIFY(!session->hasConnections());
    session->setSession(serverOf("a", CableFT2CH, 1), nullptr);
    session->setSession(serverOf("b", CableLPT, 0), nullptr);
    using Names = QList<QPair<QString, int>>;
    QCOMPARE(session->serverList(), (Names{{"a", 3}, {"b", 6}}));
    session->setNlcMode(true);
    QCOMPARE(session->serverList(), Names());
    QVERIFY(!session->hasConnections());
    session->setSessionForNlc(serverOf(Server::Ft2chName, CableFT2CH, 0), nullptr);
    QCOMPARE(session->serverList(), (Names{{Server::Ft2chName, 2}}));
    QVERIFY(session->hasConnections());
    QVERIFY(session->connectServer(Server::WinUsbName));
    QVERIFY(!session->connectServer("a"));
    QCOMPARE(session->kindOfConnection(), 2);
}

void JtagSessionTest::disconnecting()
{
    JtagClient& client = clients[0];
    session->setSession(serverOf(Server::Ft2chName), &client);
    session->setSessionForNlc(serverOf(Server::Ft2chName), nullptr);
    QVERIFY(session->connectServer(Server::Ft2chName));
    session->createTask({}, note());
    QSignalSpy gone(session, &JtagSession::disConnectServer);
    session->disconnectServer();
    QCOMPARE(gone.size(), 1);
    QVERIFY(session->serverList().isEmpty() && session->serverListForNlc().isEmpty());
    emit client.cmdReceived(answer(RequestId, 0, 1)); // a late reply
    QVERIFY(words.isEmpty());
    session->createTask({}, note());
    emit client.cmdReceived(answer(RequestId, 0, 2)); // the client is still the current one
    QCOMPARE(words, QList<int>{2});
}

void JtagSessionTest::remoteLoss()
{
    QList<Alert> alerts;
    setAlertHandler([&](Alert const& alert) { alerts.append(alert); });
    session->setNlcAddress("lab", "77");
    session->setNlcMode(true);
    QSignalSpy lost(session, &JtagSession::unconnect);
    server = std::make_unique<ScriptedServer>(true, QString());
    open();

    session->startNlcStateMonitor();
    server->closePeer();
    QTRY_COMPARE(lost.size(), 1);
    QCOMPARE(alerts.size(), 1);
    QCOMPARE(alerts[0].kind, AlertKind::Warning);
    QCOMPARE(alerts[0].title, "Warning");
    QCOMPARE(alerts[0].text,
             QString("Connection to the remote server via URL \"TCP:lab:77\"has been "
                     "disconnected. Please check the network connection and make sure the "
                     "remote server is running on the target."));

    session->clearNlcStateMonitor();
    QVERIFY(session->validateConnnection(server->record.address,
                                         static_cast<unsigned short>(server->record.port), 1000));
    QTRY_VERIFY(server->hasPeer());
    server->closePeer();
    QTest::qWait(50);
    QCOMPARE(lost.size(), 1);

    JtagClientNlc().onStateChanged(QAbstractSocket::UnconnectedState);
    session->onStateChanged(QAbstractSocket::ConnectedState);
    QCOMPARE(alerts.size(), 2);
    QCOMPARE(alerts[1].text, alerts[0].text);
    QCOMPARE(lost.size(), 1);
}

void JtagSessionTest::alertWithoutHandler()
{
    showAlert({AlertKind::Critical, "Error", "no \"cable\""});
    QCOMPARE(complaints, QStringList{"Error: no \"cable\""});
    complaints.clear();
}

void JtagSessionTest::transports()
{
    QTest::addColumn<bool>("tcp");
    QTest::newRow("local") << false;
    QTest::newRow("remote") << true;
}

/// Starts the scripted server of the row's transport, unless one is there, and selects it.
void JtagSessionTest::open()
{
    if (!server) {
        QFETCH(bool, tcp);
        session->setNlcMode(tcp);
        server = std::make_unique<ScriptedServer>(tcp, dir.filePath("s"));
    }
    QVERIFY(session->createSession(server->record, 1000));
    QVERIFY(session->connectServer(Server::Ft2chName));
    QTRY_VERIFY(server->hasPeer());
}

void JtagSessionTest::framesFromSocket()
{
    open();
    for (int i = 0; i < 6; ++i)
        session->createTask({{}, {{Word, i}}}, note());
    QTRY_COMPARE(server->received.size(), 6);
    QCOMPARE(server->received[5], answer(RequestId, 5, 5));

    for (char byte : frameFromPack(answer(RequestId, 0, 10))) {
        server->send(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(words, QList<int>{10});
    QByteArray const nonsense = QByteArray(3, 0) + QByteArray("\1x", 2);
    QByteArray joined = nonsense;
    for (unsigned int id : {1u, 2u, 3u})
        joined += frameFromPack(answer(RequestId, id, 10 + int(id)));
    server->send(joined + nonsense);
    QTRY_COMPARE(words, (QList<int>{10, 11, 12, 13}));

    // The last frame counts, whatever happens to the peer.
    server->reply(answer(RequestId, 4, 14));
    server->closePeer();
    QTRY_COMPARE(words.last(), 14);
    QTest::qWait(20);
    session->createTask({}, note()); // into the void, without a complaint
}

void JtagSessionTest::eventLoopInsideCallback()
{
    open();
    session->createTask({}, [&](CmdPack const&) {
        QTRY_COMPARE(words, QList<int>{1}); // came with this one, is in the buffer
        server->reply(answer(RequestId, 2, 2));
        QTRY_COMPARE(words, (QList<int>{1, 2})); // comes only now
    });
    session->createTask({}, note());
    session->createTask({}, note());
    QTRY_COMPARE(server->received.size(), 3);
    QVERIFY(words.isEmpty());
    server->send(frameFromPack(answer(RequestId, 0)) + frameFromPack(answer(RequestId, 1, 1)));
    QTRY_COMPARE(words, (QList<int>{1, 2}));
}

void JtagSessionTest::peerDiesInsideFrame()
{
    open();
    session->createTask({}, note());
    server->send(frameFromPack(answer(RequestId, 0, 1)).chopped(3));
    QTest::qWait(20);
    server->closePeer();
    QTest::qWait(20);
    QVERIFY(session->validateConnnection(server->record.address,
                                         static_cast<unsigned short>(server->record.port), 1000));
    QTRY_VERIFY(server->hasPeer());
    server->reply(answer(RequestId, 0, 2));
    QTRY_COMPARE(words, QList<int>{2});
}

QTEST_GUILESS_MAIN(JtagSessionTest)
#include "tst_jtagsession.moc"
