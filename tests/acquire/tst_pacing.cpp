#include "dialogue.h"

using namespace VEK;

namespace {

QStringList withoutPolls(QStringList const& lines)
{
    return lines.filter(
        QRegularExpression("^(?!.*(DATA=0110100000000000000|_START_REG' SIZE|_CAPTURE_INIT))"));
}

} // namespace

class TestPacing : public Dialogue
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    /// Two cores, one with initial data, and a lite one: the same words and the same samples.
    void asksAsWithTheRequiredTimes()
    {
        QList<QPair<QStringList, QStringList>> runs; // what was asked, and the samples
        for (Pacing pacing : {Pacing::Timed, Pacing::ByReplies}) {
            cleanup(), init();
            load(2, 1300, 3, pacing);
            m_manager->getCore(1)->captureInitDataEnabled = true;
            m_chip->firesAt = {{0, 3}};
            m_manager->startDataTrigger({0, 1});
            runToTheEnd();
            m_news.clear();
            m_chip->flags = 0;
            m_lite->startDataTrigger(0);
            runToTheEnd();
            QCOMPARE(m_reads.join(' ').count(':'), 69);
            runs.append({withoutPolls(m_chip->takeLines()), m_reads});
        }
        QCOMPARE(runs.at(1).first, runs.at(0).first);
        QCOMPARE(runs.at(1).second, runs.at(0).second);
    }

    void keepsEightSectionsOnTheirWay()
    {
        load(1, 1280, 2);
        JtagSession const& session = *JtagSession::shared();
        m_manager->startDataTrigger({0});
        QTRY_VERIFY(session.replyDebt().waited > 0); // for the poll
        QVERIFY(session.replyDebt().writes >= m_chip->packs.size() - 1);
        m_chip->answer();
        for (int unread = 20; unread > 0; --unread) {
            QCOMPARE(session.replyDebt().replies, std::min(unread, 8));
            QCOMPARE(session.replyDebt().writes, unread == 20 ? 8 : unread > 7 ? 1 : 0);
            m_chip->answer();
        }
        runToTheEnd();
        int depth = 0; // a server that answers within the call: no call in a call for each section
        m_chip->onRequest = [&, take = m_chip->onRequest](CmdPack const& pack) {
            QVERIFY(++depth < 4);
            take(pack);
            m_chip->answerAll();
            --depth;
        };
        m_news.clear();
        m_manager->startDataTrigger({0});
        runToTheEnd();
        QCOMPARE(m_news.filter("section").size(), 20);
    }

    /// By a late failed open, and by a receiver, which may also delete the manager.
    void endsInTheMiddleOfARead()
    {
        QMap<QString, QStringList> const ends{{"open failed", {"end 0", "end -1"}},
                                              {"section, stopped", {"end 0"}},
                                              {"section, deleted", {}}};
        for (QString const& how : ends.keys()) {
            cleanup(), init();
            load(1, 1280, 1);
            m_manager->initDeviceChain({0});
            CmdPack const open = m_chip->packs.first();
            start();
            m_chip->answer();
            if (how == "section, stopped")
                connect(m_manager.get(), &DataManager::readProgress, m_manager.get(),
                        &DataManager::stopDataTrigger);
            if (how == "section, deleted")
                connect(m_manager.get(), &DataManager::readProgress, [this] { m_manager.reset(); });
            m_chip->packs.clear();
            if (how == "open failed")
                ScriptedServer::reply(open, {{"RES", -1}});
            m_chip->answerAll();
            QCOMPARE(m_news.filter("end"), ends[how]);
            QCOMPARE(m_chip->takeLines(), ends[how].isEmpty() ? QStringList() : asked("close"));
        }
    }

    /// A stop does not make the replies of its run replies to the requests of the next one.
    void staleRepliesDoNothing()
    {
        load(1, 1280, 1);
        start();
        CmdPack const stale = m_chip->owed.takeFirst();
        m_manager->stopDataTrigger();
        start();
        ScriptedServer::replyData(stale, QString(16, '0'));
        QCOMPARE(m_manager->status(), AnalyzerRunning);
        m_chip->answer();
        QCOMPARE(m_manager->status(), AnalyzerReading);
    }

    /// The poll that was on its way counts for none; the core that has fired by then is read.
    void finishesWaiting()
    {
        load(3, 128, 1);
        m_chip->firesAt = {{0, 9}, {2, 9}};
        start();
        m_manager->finishWaiting();
        m_chip->packs.clear();
        m_news.clear();
        runToTheEnd();
        QCOMPARE(m_chip->polls.values(), (QList<int>{3, 1, 2}));
        QCOMPARE(m_news, (QStringList{"stopped 0", "fired 1", "section", "read 1.0", "stopped 2",
                                      "end 0"}));
        QStringList const words = withoutPolls(m_chip->takeLines());
        QCOMPARE(words.mid(0, 3), asked("core 0, start 0, core 1"));
        QCOMPARE(words.mid(5), asked("core 2, core 2, start 0, close"));
        m_news.clear(); // a lite core
        m_lite->startDataTrigger(0);
        m_chip->answer();
        m_lite->finishWaiting();
        m_chip->core = 2;
        runToTheEnd();
        QCOMPARE(m_news, (QStringList{"armed 0", "stopped 0", "end 0"}));
    }

    /// A poll of a core that was stopped is no poll of the next one.
    void stopsOneCoreAlone()
    {
        load(3, 1280, 1);
        start();
        m_manager->stopCore(m_manager->getCore(0));
        m_chip->answerAll(); // the poll, and that the stop was taken
        QTRY_VERIFY(!m_chip->owed.isEmpty());
        m_chip->answer();
        QCOMPARE(m_manager->status(), AnalyzerReading);
        m_chip->packs.clear();
        m_manager->stopCore(m_manager->getCore(2)); // the read of the other one goes on
        QCOMPARE(m_chip->takeLines(), asked("core 2, start 0, poll, core 1"));
        runToTheEnd();
        QVERIFY(m_reads.first().count(':') == 10 && !m_news.contains("fired 0"));
    }

    /// A core had fired if a poll says so that was on its way at the force. A read is not
    /// disturbed.
    void tellsOfForces()
    {
        for (bool isReading : {false, true}) {
            load(2, 1280, 1);
            start();
            if (isReading)
                m_chip->answer();
            m_manager->forceArmedCores();
            runToTheEnd();
            QCOMPARE(m_news.filter("fired"), (QStringList{"fired 0", "fired 1 forced"}));
            m_news.clear();
        }
    }

    void namesBrokenWindows()
    {
        load(1, 1280, 3);
        start();
        m_chip->answer();
        for (int i = 0; i < 30; ++i) {
            if (i == 4 || i == 29)
                ScriptedServer::replyData(m_chip->owed.takeFirst(), "1"); // too short
            else if (i == 12 || i == 23)
                m_chip->owed.removeFirst(); // lost
            else
                m_chip->answer();
        }
        runToTheEnd();
        QCOMPARE(m_news.filter(QRegularExpression("read|incomplete")),
                 (QStringList{"incomplete 0.0", "read 0.0", "incomplete 0.1", "incomplete 0.2"}));
        QCOMPARE(JtagSession::shared()->replyDebt().replies, 0);
    }

    void stopsGracefully()
    {
        load(3, 1280, 1);
        start();
        m_chip->answer();
        m_chip->packs.clear();
        m_news.clear();
        QVERIFY(m_manager->stopGracefully());
        QCOMPARE(m_chip->takeLines(), asked("core 1, start 0, core 2, start 0, poll, close"));
        m_chip->answerAll(); // sections that were on their way too
        QCOMPARE(m_news, (QStringList{"taken", "end 0"}));
    }

private:
    /// Standard cores and a lite one.
    void load(int count, int amount, int windows, Pacing pacing = Pacing::ByReplies)
    {
        QList<SxCore*> cores;
        for (int i = 0; i < count; ++i) {
            cores << captured(new SxCore(i), 2, amount);
            cores.last()->storageDepth = 65536;
            cores.last()->windowNum = windows;
        }
        Dialogue::load(cores);
        qDeleteAll(cores);
        SXCore_Lite lite;
        Dialogue::load(captured(&lite, 2, 1100));
        m_manager->setPacing(pacing);
        m_lite->setPacing(pacing);
    }

    /// Starts all cores; the first poll is on its way.
    void start()
    {
        m_manager->startDataTrigger({0, 1, 2});
        QTRY_VERIFY(!m_chip->owed.isEmpty());
    }

    void runToTheEnd() { QTRY_VERIFY((m_chip->answerAll(), m_news.contains("end 0"))); }
};

QTEST_GUILESS_MAIN(TestPacing)
#include "tst_pacing.moc"
