#include "acquire/litedatamanager.h"
#include "model/litefile.h"

#include "managerrig.h"

#include <QSocketNotifier>

#include <algorithm>
#include <unistd.h>

using namespace VEK;

namespace {

// a core of three signals: every field has three bits
const QStringList PollInit{"CMD='WRITE' DATA=011010000000000000010 OPRATE='OP_SELECT_CAPTURE_INIT'",
                           "CMD='READ' OPRATE='OP_READ_CAPTURE_INIT' SIZE=3"};
const QStringList PollStart = askStart(3);
const QString Arm = "CMD='WRITE' DATA=010010000000000000000001 OPRATE='WRITE_START_REG'";
const QString Stop = "CMD='WRITE' DATA=010010000000000000000000 OPRATE='WRITE_START_REG'";

QStringList section(int i, int count, int burst)
{
    return askSection(i, count, 0, i * burst % 65536, "000", 3 * burst + 1);
}

} // namespace

class TestLiteDataManager : public QObject, ManagerRig<VekLiteDataManager>
{
    Q_OBJECT

private slots:
    void init()
    {
        begin();
        connect(m_manager.get(), &VekLiteDataManager::readRamComplete, this,
                [this] { m_reads.append(m_manager->getCurrentData()); });
    }

    void cleanup() { end(); }

    /// Armed by the start register, polled once at a time, read, closed.
    void wholeRunInOrder()
    {
        load(130);
        m_manager->sendTestMsg();
        QCOMPARE(m_server->takeLines(),
                 QStringList{"CMD='WRITE_INFOR' DATA_OUT_SHIFT_REGISTER_WIDTH=3 "
                             "MEM_DATA_WIDTH=3 MODE='lite' Sxcore='10000'"});
        m_manager->startDataTrigger(0);
        CmdPack const flag = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), PollInit);
        ScriptedServer::replyData(flag, "001");
        QCOMPARE(m_server->takeLines(), QStringList{Arm});
        QCOMPARE(m_manager->status(), AnalyzerWaiting);

        QTRY_VERIFY(!m_server->packs.isEmpty());
        QCoreApplication::processEvents(); // no further poll goes out while this one is unanswered
        CmdPack poll = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), PollStart);
        ScriptedServer::replyData(poll, "100");
        QTRY_VERIFY(!m_server->packs.isEmpty());
        poll = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), PollStart);
        ScriptedServer::replyData(poll, "000");
        ScriptedServer::replyData(poll, "000"); // its task is finished: nothing
        CmdPack const last = m_server->packs.last();
        CmdPack const first = m_server->packs.at(1);
        QCOMPARE(m_server->takeLines(), section(0, 2, 128) + section(1, 2, 128));

        // only the tail is cut, and the section that came last stands first
        answerSection(first, "1010");
        answerSection(last, "0110");
        QCOMPARE(m_reads.size(), 1);
        QCOMPARE(bit2str(combine(m_reads.first())), QStringLiteral("011101"));
        QTRY_COMPARE(m_ends, QList<int>{0});
        QCOMPARE(m_server->takeLines(), QStringList{Close});
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    void silentServerIsAskedTwiceASecond()
    {
        load(1);
        m_manager->startDataTrigger(0);
        ScriptedServer::replyData(m_server->packs.last(), "111");
        m_server->packs.clear();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->packs.size(), 4, 2000);
        // answers to both: one read only
        CmdPack const early = m_server->packs.at(1);
        CmdPack const late = m_server->packs.at(3);
        m_server->packs.clear();
        ScriptedServer::replyData(early, "000");
        ScriptedServer::replyData(late, "000");
        QCOMPARE(m_server->takeLines(), section(0, 1, 1));
    }

    void delays()
    {
        load(1);
        m_manager->startDataTrigger(-1);
        QCoreApplication::processEvents();
        QVERIFY(m_server->packs.isEmpty());
        QCOMPARE(m_manager->status(), AnalyzerRunning);
        m_manager->forceDataTrigger();
        QCOMPARE(m_server->takeLines(), PollInit);
        m_manager->stopDataTrigger();
        QCOMPARE(m_server->takeLines(), (QStringList{Stop, Close}));
        m_manager->startDataTrigger(1);
        QVERIFY(m_server->packs.isEmpty());
        QTRY_COMPARE(m_server->packs.size(), 2);
        for (QTimer const* timer : m_manager->findChildren<QTimer*>())
            QVERIFY(!timer->isActive()); // it fires once
        QCOMPARE(m_server->takeLines(), PollInit);
    }

    void sections()
    {
        m_manager->setStatus(AnalyzerReading);
        for (int depth : {0, 1, 128, 129, 65665}) {
            m_manager->readRamData(3, depth);
            int const count = (depth + 127) / 128;
            QStringList expected;
            for (int i = 0; i < count; ++i)
                expected += section(i, count, std::min(depth, 128));
            QCOMPARE(m_server->takeLines(), expected);
        }
    }

    /// A socket announces its data by a queued call; the pause delivers that call too.
    void repliesComeInDuringThePause()
    {
        int pipeEnds[2];
        QCOMPARE(pipe(pipeEnds), 0);
        QSocketNotifier socket(pipeEnds[0], QSocketNotifier::Read);
        QList<CmdPack> waiting;
        QList<int> unanswered; // when a section is asked for
        auto const answerNext = [&waiting] { answerSection(waiting.takeFirst(), "0001"); };
        connect(&socket, &QSocketNotifier::activated, this, [&] {
            char byte;
            QCOMPARE(read(pipeEnds[0], &byte, 1), ssize_t(1));
            QMetaObject::invokeMethod(this, answerNext, Qt::QueuedConnection);
        });
        m_server->onRequest = [&](CmdPack const& request) {
            if (request.value("OPRATE") != "READ_RAM")
                return;
            unanswered.append(waiting.size());
            waiting.append(request);
            QCOMPARE(write(pipeEnds[1], "x", 1), ssize_t(1));
        };
        m_manager->setStatus(AnalyzerReading);
        m_manager->readRamData(3, 384);
        QCOMPARE(unanswered, (QList<int>{0, 0, 0}));
        QTRY_COMPARE(m_ends, QList<int>{0});
        close(pipeEnds[0]);
        close(pipeEnds[1]);
    }

    void repeatsAndStops()
    {
        load(1);
        m_manager->setAutoRunCount(0);
        m_manager->startDataTrigger(0);
        for (int run = 1; run <= 2; ++run) {
            ScriptedServer::replyData(m_server->packs.last(), "000");
            QCOMPARE(m_manager->autoRunCount(), run);
            CmdPack const read = m_server->packs.last();
            m_server->packs.clear();
            answerSection(read, "1111");
            QCOMPARE(m_server->takeLines(), PollInit); // the flag is asked for again
            m_manager->forceDataTrigger();
        }
        QCOMPARE(m_reads.size(), 2);
        m_manager->stopDataTrigger();
        QCOMPARE(m_manager->autoRunCount(), -1);
        QCOMPARE(m_ends, QList<int>{0});
    }

private:
    void load(int amount)
    {
        SXCore_Lite core;
        core.captureAmount = amount;
        core.allSignalList = captured(3);
        loadWith(writeVEKConfigToXml_Lite, {&core});
    }
};

QTEST_GUILESS_MAIN(TestLiteDataManager)
#include "tst_litedatamanager.moc"
