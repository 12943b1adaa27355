#include "jtag/frame.h"
#include "jtag/jtagsession.h"
#include "model/alert.h"
#include "tests/support/tempfolder.h"

#include <QLocalServer>
#include <QtTest>

#include <memory>

using namespace VEK;

namespace {

QString const RequestId = "request_id";
QString const DataId = "data_request_id";

CmdPack answer(QString const& idKey, unsigned int id, int word = 0)
{
    return {{idKey, id}, {"WORD", word}};
}

} // namespace

class JtagSessionTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        connect(session, &JtagSession::createData, this,
                [this](CmdPack const& pack) { sent = pack; });
    }

    void init()
    {
        words.clear();
        session->cancelAll();
        session->setWorkerMode(true);
    }

    void ids()
    {
        ids(RequestId);
        ids(DataId);
    }

    void routing()
    {
        CmdPack seen;
        session->createTask({}, [&](CmdPack const& pack) {
            seen = pack;
            session->createTask({}, note()); // its own id is free again by now
            QCOMPARE(sent, (CmdPack{{RequestId, 0u}}));
        });
        session->createDataTask({}, [&](CmdPack const&, bool*) { words += -1; });
        session->dataReturned({{RequestId, 0u}, {DataId, 0u}, {"WORD", 5}});
        QCOMPARE(seen, (CmdPack{{"WORD", 5}, {DataId, 0u}}));
        session->dataReturned(answer(RequestId, 1, 6)); // nobody's
        session->dataReturned({{"WORD", 7}});           // no id at all
        session->dataReturned(answer(RequestId, 0, 8));
        session->dataReturned(answer(RequestId, 0, 9)); // answered already
        QCOMPARE(words, QList<int>{8});
    }

    void dataTasks()
    {
        auto const owned = std::make_shared<int>(3);
        session->createDataTask({}, [this, owned](CmdPack const& pack, bool* done) {
            QVERIFY(!*done && !pack.contains(DataId));
            words += pack["WORD"].toInt();
            *done = words.size() == 2; // until then there is more to come
            if (!*done)
                return;
            session->cancelAll();
            words += *owned; // what the callback owns outlives the map
            session->createDataTask({}, [this](CmdPack const&, bool*) { words += 4; });
        });
        session->createTask({}, note());
        session->dataReturned(answer(DataId, 0, 1));
        session->dataReturned(answer(DataId, 0, 2));
        session->dataReturned(answer(RequestId, 0)); // cancelled
        session->dataReturned(answer(DataId, 0));    // the id is the new request's, and still its
        QCOMPARE(words, (QList<int>{1, 2, 3, 4}));
    }

    void connectServer()
    {
        QMap<QString, int> const places{{"", -1}, // none
                                        {"Parallel Port(LPT)", 0},
                                        {"Kavro USB Cable(FT2CH)", 1},
                                        {"Kavro USB Cable(WINUSB)", 1},
                                        {"Kavro USB Cable(TR7QZ)", 1}}; // before its own name
        JtagClient before, clients[3]; // never connected: packs are dropped, callbacks wait
        for (QString const& name : places.keys()) {
            words.clear();
            session->setWorkerMode(true);
            session->setSession({"Parallel Port(LPT)", "", 0, CableLPT, 0}, &clients[0]);
            session->setSession({"Kavro USB Cable(FT2CH)", "", 0, CableFT2CH, 1}, &clients[1]);
            session->setSession({"Kavro USB Cable(TR7QZ)", "", 0, CableTR7QZ, 0}, &clients[2]);
            session->switchSession({{}, &before});
            session->setWorkerMode(false);
            QCOMPARE(session->serverList().value(1).second, 3);
            QCOMPARE(session->connectServer(name), places[name] >= 0);
            for (int i = -1; i < 3; ++i) {
                session->createTask({}, note());
                emit(i < 0 ? before : clients[i]).cmdReceived(answer(RequestId, 0, i));
                session->disconnectServer(); // forgets callbacks; the current client stays
            }
            QCOMPARE(words, QList<int>{places[name]});
            QVERIFY(!session->hasConnections());
        }
        session->switchSession({});
    }

    void remoteLoss()
    {
        QStringList alerts;
        setAlertHandler([&](Alert const& alert) { alerts += alert.title + "|" + alert.text; });
        JtagClientNlc client;
        session->setNlcAddress("lab", "77");
        session->switchSessionForNlc({{}, &client});
        session->startNlcStateMonitor();
        QSignalSpy lost(session, &JtagSession::unconnect);
        emit client.stateChanged(QAbstractSocket::UnconnectedState);
        session->clearNlcStateMonitor();
        emit client.stateChanged(QAbstractSocket::UnconnectedState);
        session->switchSessionForNlc({});
        setAlertHandler({});
        QCOMPARE(lost.size(), 1);
        QCOMPARE(alerts,
                 QStringList("Warning|Connection to the remote server via URL \"TCP:lab:77\"has "
                             "been disconnected. Please check the network connection and make "
                             "sure the remote server is running on the target."));
        QTest::ignoreMessage(QtCriticalMsg, "Error: no \"cable\"");
        showAlert({AlertKind::Critical, "Error", "no \"cable\""});
    }

    void frames()
    {
        TempFolder const folder;
        QLocalServer server;
        QVERIFY(server.listen(folder.path("s")));
        JtagClient client;
        client.connectToServer(server.fullServerName());
        QVERIFY(client.waitForConnected(1000) && server.waitForNewConnection(1000));
        QLocalSocket* const peer = server.nextPendingConnection();
        auto const frame = [](int word) { return frameFromPack({{"WORD", word}}); };
        auto const send = [&](QByteArray const& bytes) {
            peer->write(bytes);
            QVERIFY(peer->waitForBytesWritten(1000));
        };
        client.sendCmdPack({{"WORD", 7}});
        client.sendCmdPack({});
        QByteArray received;
        QTRY_COMPARE((received += peer->readAll()), frame(7) + frameFromPack({}));

        connect(&client, &JtagClient::cmdReceived, [&](CmdPack const& pack) {
            words += pack["WORD"].toInt();
            if (words.last() == 1) {
                QTRY_COMPARE(words.last(), 2); // came with this one, is in the buffer
                send(frame(3));
                QTRY_COMPARE(words.last(), 3); // comes only now
            }
        });
        QByteArray const nonsense("\0\0\0\1x", 5);
        send(nonsense + frame(1) + nonsense + frame(2));
        QTRY_COMPARE(words, (QList<int>{1, 2, 3}));
        send(frame(4) + frame(5).chopped(1)); // a last frame counts, but no part of one
        peer->close();
        QTRY_COMPARE(client.state(), QLocalSocket::UnconnectedState);
        QTRY_COMPARE(words, (QList<int>{1, 2, 3, 4}));
        client.sendCmdPack({}); // into the void, without a complaint
    }

private:
    void ids(QString const& key)
    {
        auto const start = [&] {
            if (key == RequestId)
                session->createTask({}, note());
            else
                session->createDataTask({}, [](CmdPack const&, bool* done) { *done = true; });
            return sent.value(key);
        };
        // Requests with the ids that they get, and replies, also to ids that nobody holds.
        for (QString const& step : QString("+0 +1 +2 -1 +1 -2 -0 -0 -9 +0 +2 +3").split(' ')) {
            unsigned const id = step.mid(1).toUInt();
            if (step[0] == '+')
                QCOMPARE(start(), QVariant(id));
            else
                session->dataReturned(answer(key, id));
        }
        session->createTask({{}, {{"WORD", 1}}}, {});
        QCOMPARE(sent, (CmdPack{{"WORD", 1}})); // fire-and-forget carries no id
        session->cancelAll();
        words.clear();
        session->dataReturned(answer(key, 0)); // a late reply
        QCOMPARE(start(), QVariant(0u));
        QVERIFY(words.isEmpty());
    }

    /// A callback that notes the word of its reply.
    TaskCallback note()
    {
        return [this](CmdPack const& pack) { words += pack.value("WORD").toInt(); };
    }

    JtagSession* const session = JtagSession::shared();
    CmdPack sent; // the last pack for the worker
    QList<int> words;
};

QTEST_GUILESS_MAIN(JtagSessionTest)
#include "tst_jtagsession.moc"
