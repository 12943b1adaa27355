#include "dialogue.h"

#include <QSocketNotifier>

#include <algorithm>
#include <unistd.h>

using namespace VEK;

/// A core of three signals: every field has three bits.
class TestLiteDataManager : public Dialogue
{
    Q_OBJECT

private slots:
    void init()
    {
        begin();
        m_isLite = true;
        m_width = 3;
    }

    void cleanup() { end(); }

    /// Armed by the start register, polled once at a time, read, closed.
    void wholeRunInOrder()
    {
        loadLite(130);
        m_lite->sendTestMsg();
        QCOMPARE(m_chip->takeLines(),
                 QStringList{"CMD='WRITE_INFOR' DATA_OUT_SHIFT_REGISTER_WIDTH=3 "
                             "MEM_DATA_WIDTH=3 MODE='lite' Sxcore='10000'"});
        play({{"start 0", "init"}, {"no", "start 1"}});
        QCOMPARE(m_lite->status(), AnalyzerWaiting);
        QTRY_VERIFY(!m_chip->packs.isEmpty());
        QCoreApplication::processEvents(); // no further poll goes out while this one is unanswered
        QCOMPARE(m_chip->takeLines(), asked("poll"));
        m_chip->answerPoll(false);
        QTRY_VERIFY(!m_chip->packs.isEmpty());
        CmdPack const poll = m_chip->packs.last();
        m_chip->answerPoll(true);
        ScriptedServer::replyData(poll, "000"); // its task is finished: nothing
        QCOMPARE(m_chip->takeLines(), asked("poll, read 0:0/2@0*128, read 0:1/2@128*128"));
        // only the tail is cut, and the section that came last stands first
        m_chip->answerAll();
        QCOMPARE(m_reads, QStringList{"384:1 384:0"});
        QTRY_COMPARE(m_news.last(), QString("end 0"));
        QCOMPARE(m_chip->takeLines(), asked("close"));
        QCOMPARE(m_lite->status(), AnalyzerIdle);
    }

    void silentServerIsAskedTwiceASecond()
    {
        loadLite(1);
        m_lite->startDataTrigger(0);
        m_chip->answerPoll(false);
        QTRY_COMPARE_WITH_TIMEOUT(m_chip->owed.size(), 2, 2000);
        m_chip->packs.clear();
        play({{"yes", "read 0:0/1@0*1"}, {"yes", ""}}); // answers to both: one read only
    }

    void delays()
    {
        loadLite(1);
        m_lite->startDataTrigger(-1);
        QCoreApplication::processEvents();
        QVERIFY(m_chip->packs.isEmpty());
        QCOMPARE(m_lite->status(), AnalyzerRunning);
        play({{"force", "init"}, {"stop", "start 0, close"}, {"start 1", ""}});
        QTRY_COMPARE(m_chip->packs.size(), 2);
        for (QTimer const* timer : m_lite->findChildren<QTimer*>())
            QVERIFY(!timer->isActive()); // it fires once
        QCOMPARE(m_chip->takeLines(), asked("init"));
    }

    void sections()
    {
        m_lite->setStatus(AnalyzerReading);
        for (int depth : {0, 1, 128, 129, 65665}) {
            m_lite->readRamData(3, depth);
            int const count = (depth + 127) / 128;
            int const burst = std::min(depth, 128);
            QStringList expected;
            for (int i = 0; i < count; ++i)
                expected += asked(QString("read 0:%1/%2@%3*%4")
                                      .arg(i)
                                      .arg(count)
                                      .arg(i * burst % 65536)
                                      .arg(burst));
            QCOMPARE(m_chip->takeLines(), expected);
        }
    }

    /// A socket announces its data by a queued call; the pause delivers that call too.
    void repliesComeInDuringThePause()
    {
        int pipeEnds[2];
        QCOMPARE(pipe(pipeEnds), 0);
        QSocketNotifier socket(pipeEnds[0], QSocketNotifier::Read);
        QList<int> unanswered; // when a section is asked for
        connect(&socket, &QSocketNotifier::activated, this, [&] {
            char byte;
            QCOMPARE(read(pipeEnds[0], &byte, 1), ssize_t(1));
            QMetaObject::invokeMethod(
                this, [this] { m_chip->answer(); }, Qt::QueuedConnection);
        });
        m_chip->onRequest = [&](CmdPack const& request) {
            if (request.value("OPRATE") != "READ_RAM")
                return;
            unanswered.append(m_chip->owed.size());
            m_chip->owed.append(request);
            QCOMPARE(write(pipeEnds[1], "x", 1), ssize_t(1));
        };
        m_lite->setStatus(AnalyzerReading);
        m_lite->readRamData(3, 384);
        QCOMPARE(unanswered, (QList<int>{0, 0, 0}));
        QTRY_VERIFY(m_news.contains("end 0"));
        close(pipeEnds[0]);
        close(pipeEnds[1]);
    }

    void repeatsAndStops()
    {
        loadLite(1);
        m_lite->setAutoRunCount(0);
        play({{"start 0", "init"}});
        for (int run = 1; run <= 2; ++run) {
            play({{"yes", "read 0:0/1@0*1"}});
            QCOMPARE(m_lite->autoRunCount(), run);
            // the flag is asked for again
            play({{"sections", "init"}, {"force", "init"}});
            m_chip->owed.removeFirst();
        }
        QCOMPARE(m_reads, (QStringList{"3:0", "3:1"}));
        m_lite->stopDataTrigger();
        QCOMPARE(m_lite->autoRunCount(), -1);
        QCOMPARE(m_news.filter("end"), QStringList{"end 0"});
        // nothing goes on: no timer runs, and a late tick finds no armed core
        m_lite->startDataTrigger(60000);
        m_lite->stopDataTrigger();
        for (QTimer const* timer : m_lite->findChildren<QTimer*>())
            QVERIFY(!timer->isActive());
        m_chip->takeLines();
        m_lite->checkState();
        QVERIFY(!m_chip->takeLines().contains(asked("poll").first()));
    }

private:
    void loadLite(int amount)
    {
        SXCore_Lite core;
        load(captured(&core, 3, amount));
    }
};

QTEST_GUILESS_MAIN(TestLiteDataManager)
#include "tst_litedatamanager.moc"
