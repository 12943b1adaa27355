#include "dialogue.h"

#include "model/alert.h"

#include <QSignalSpy>
#include <QTimer>

#include <array>

using namespace VEK;

namespace {

const QString Zeros16(16, QLatin1Char('0'));

/// A core of two signals.
struct Core : SxCore
{
    explicit Core(int index, int amount = 1024) : SxCore(index) { captured(this, 2, amount); }
};

} // namespace

class TestStandardDataManager : public Dialogue
{
    Q_OBJECT

private slots:
    void init() { begin(); }

    void cleanup()
    {
        end();
        setAlertHandler({});
    }

    void opensTheChain()
    {
        QList<QStringList> const rows{
            {"Kavro USB Cable(FT2CH)", "12", " cable_index=0 cable_location=12"},
            {"Kavro USB Cable(TR7QZ)", "3", " cable_index=1 cable_location=3"},
            {"Kavro USB Cable(WINUSB)", "x", " cable_index=2 cable_location=0"},
            {"Kavro USB Cable(FT2CH)", "", ""},
            {"Parallel Port(LPT)", "12", ""}};
        for (QStringList const& row : rows) {
            m_manager->initDeviceChainandLocation({0}, row[0], row[1]);
            QCOMPARE(m_chip->takeLines(), QStringList{"CHAIN=[0] CMD='OPEN'" + row[2]});
        }
    }

    /// Two cores, the second with initial data; three windows of two sections.
    void wholeRunInOrder()
    {
        Core first(0, 300);
        first.storageDepth = 2048;
        first.windowNum = 3;
        Core second(1, 100);
        second.captureInitDataEnabled = true;
        load({&first, &second});

        QString const widths = "CMD='WRITE_INFOR' DATA_OUT_SHIFT_REGISTER_WIDTH=16 "
                               "MEM_DATA_WIDTH=3 MODE='standard' Sxcore=%1";
        m_manager->sendTestMsg();
        QCOMPARE(m_chip->takeLines(), (QStringList{widths.arg(0), widths.arg(1)}));
        play({{"start 0 1 7", "image 0, start 1"},
              {"start 0", ""}, // while a run is on
              {"tick", "core 0, poll"},
              {"no", ""},
              {"tick", "poll"},
              {"yes", "read 0:0/2@0*128, read 0:1/2@128*128, read 1:0/2@512*128, "
                      "read 1:1/2@640*128, read 2:0/2@1024*128, read 2:1/2@1152*128"}});
        QCOMPARE(m_manager->status(), AnalyzerReading);
        play({{"sections", ""}});
        QCOMPARE(m_manager->status(), AnalyzerReadDone);
        // on to the second core, whose initial data is there
        play({{"tick", "core 1, init"}, {"no", "image 1, start 1, poll"}});
        m_manager->checkState();
        m_chip->owed.removeFirst();
        play({{"yes", "init, poll"}});
        m_manager->checkState();
        m_chip->owed.removeFirst();
        m_chip->answerPoll(true);
        m_chip->packs.clear();
        play({{"yes", "read 0:0/1@0*100"}, {"sections", ""}});
        // the section that came last stands first, without head and tail
        QCOMPARE(m_reads,
                 (QStringList{"2048:1 2048:0", "2048:3 2048:2", "2048:5 2048:4", "1600:6"}));
        QVERIFY(!m_news.contains("end 0"));
        QTRY_COMPARE(m_news.last(), QString("end 0")); // the next tick ends the run
        QCOMPARE(m_chip->takeLines(), asked("close"));
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    void depthsThatAreNone()
    {
        m_manager->setStatus(AnalyzerReading);
        m_manager->readRamData(2, 65500, 0, 17, 0);
        QVERIFY(m_chip->packs.isEmpty());
        m_manager->readRamData(2, 65500, 0, 17, -5);
        QCOMPARE(m_chip->packs.at(0).value("DATA").toBitArray().size(), 37);
        QCOMPARE(m_chip->packs.at(1).value("SIZE").toInt(), 17 * -5 + 33);
    }

    /// Numbers that no file should hold must not loop, divide or overflow.
    void nonsenseNumbers()
    {
        // windows, amount, depth
        for (auto const& row : std::vector<std::array<int, 3>>{
                 {0, 100, 1024}, {-3, 100, 1024}, {2000000000, 0, 1024}, {3, 1, -2147483647}}) {
            Core odd(0, row[1]);
            odd.windowNum = row[0];
            odd.storageDepth = row[2];
            load({&odd});
            ScriptedServer::replyData(firstPoll(), Zeros16);
            QCOMPARE(m_manager->status(), AnalyzerReading);
            m_manager->stopDataTrigger();
            QCOMPARE(m_news.last(), QString("end 0"));
        }
    }

    void repeatsUntilStopped()
    {
        Core dynamic(0, 16);
        dynamic.expressionType = ExpressionDynamic;
        load({&dynamic});
        m_device = "TK-107"; // takes one record fewer
        m_manager->setDeviceName(m_device);
        m_manager->setAutoRunCount(0);
        play({{"start 0", "image 0, start 1"}, {"tick", "core 0, poll"}});
        for (int run = 1; run <= 2; ++run) {
            play({{"yes", "read 0:0/1@0*16"}});
            QCOMPARE(m_manager->autoRunCount(), run);
            // armed again, without the expression words
            play({{"sections", "registers 0, start 1"}, {"tick", "poll"}});
        }
        play({{"force", "core 0, start 3"}});
        QVERIFY(m_manager->getCore(0)->forced);
        play({{"stop", "core 0, start 0, close"}});
        QCOMPARE(m_manager->autoRunCount(), -1);
        QVERIFY(!m_manager->getCore(0)->forced);
    }

    void forceTakesThePlainPath()
    {
        Core initial(0);
        initial.captureInitDataEnabled = true;
        load({&initial});
        play({{"start 0", ""}, {"force", "core 0, start 3"}, {"tick", "core 0, poll"}});
    }

    /// The next run is not told what became of the cores of the last one, stopped in its read.
    void beginsAfreshAfterAStop()
    {
        Core other(1);
        load({&m_core, &other});
        m_manager->startDataTrigger({0, 1});
        m_manager->forceDataTrigger();
        m_manager->checkState();
        connect(m_manager.get(), &DataManager::statusChanged, this, [this] {
            if (m_manager->status() == AnalyzerReading)
                m_manager->stopDataTrigger();
        });
        ScriptedServer::replyData(m_chip->packs.last(), Zeros16);
        QVERIFY(!m_manager->getCore(0)->forced && !m_manager->getCore(1)->forced);
        m_manager->getCore(0)->forced = true; // a host's own
        m_manager->startDataTrigger({1});
        QVERIFY(!m_manager->getCore(0)->forced);
        QCOMPARE(m_manager->getSelectedCores(), QList<SxCore*>{m_manager->getCore(1)});
        m_chip.reset(); // no connection any more: a poll goes nowhere
        m_manager->checkState();
        QCOMPARE(m_manager->status(), AnalyzerRunning);
    }

    void handsOnTheReasonOfTheServer()
    {
        load({&m_core});
        QSignalSpy changes(m_manager.get(), &DataManager::deviceReasonChanged);
        m_manager->initDeviceChain({0});
        ScriptedServer::reply(m_chip->packs.last(), {{"RES", 0}, {"REASON", "cut"}});
        CmdPack const poll = firstPoll();
        m_manager->checkState();
        CmdPack waiting{{"REASON", "over"}, {"DATA", str2bit(QString(16, '1'))}};
        ScriptedServer::reply(poll, waiting);
        QCOMPARE(m_manager->deviceReason(), QString("over"));
        waiting.remove("REASON");
        ScriptedServer::reply(m_chip->packs.last(), waiting);
        QCOMPARE(m_manager->deviceReason(), QString("cut"));
        QString atTheEnd;
        connect(m_manager.get(), &DataManager::triggerComplete, this,
                [&] { atTheEnd = m_manager->deviceReason(); });
        m_manager->initDeviceChain({0});
        ScriptedServer::reply(m_chip->packs.last(), {{"RES", -100}, {"REASON", "broken"}});
        QCOMPARE(atTheEnd, QString("broken"));
        QCOMPARE(changes, (QList<QVariantList>{{"cut"}, {"over"}, {"cut"}, {""}, {"broken"}}));
    }

    void lateAndHostileRepliesDoNothing()
    {
        load({&m_core});
        CmdPack const poll = firstPoll();
        ScriptedServer::reply(poll, {}); // no bits are no zero
        QCOMPARE(m_manager->status(), AnalyzerRunning);
        m_manager->checkState();
        ScriptedServer::replyData(m_chip->packs.last(), Zeros16);
        CmdPack const read = m_chip->packs.last();
        // Each to a section of its own, which is every other request, and each twice.
        QList<QPair<QString, int>> const nonsense{
            {"WINDOW", -1},        {"WINDOW", 1},        {"WINDOW", 2147483647},
            {"SECTION_COUNT", -1}, {"SECTION_COUNT", 0}, {"SECTION_COUNT", 2147483647}};
        int at = m_chip->packs.size() - 1;
        for (auto const& entry : nonsense) {
            CmdPack hostile = m_chip->packs.at(at -= 2);
            QCOMPARE(hostile.value("OPRATE"), QVariant("READ_RAM"));
            hostile.insert(entry.first, entry.second);
            m_chip->answerSection(hostile);
            m_chip->answerSection(hostile);
        }
        QVERIFY(m_reads.isEmpty());
        m_chip->packs.clear();
        m_manager->stopDataTrigger();
        QCOMPARE(m_chip->takeLines(), asked("close")); // the core is no longer armed
        m_chip->answerSection(read);
        ScriptedServer::replyData(poll, Zeros16);
        m_manager->checkState();
        QVERIFY(m_chip->packs.isEmpty());
        QVERIFY(m_reads.isEmpty());
        QCOMPARE(m_news.filter("end"), QStringList{"end 0"});
    }

    /// Whatever comes in during the pause between two sections is handled there.
    void stopsBetweenTwoSections()
    {
        stopsBetweenTwoSections([this](CmdPack const&) { m_manager->stopDataTrigger(); },
                                {"end 0"});
        cleanup();
        init();
        stopsBetweenTwoSections(
            [](CmdPack const& open) {
                ScriptedServer::reply(open, {{"RES", -1}});
            },
            {"end 0", "end -1"});
    }

    void survivesItsOwnEndDuringARead()
    {
        load({&m_core});
        CmdPack const poll = firstPoll();
        QTimer::singleShot(0, this, [this] { m_manager.reset(); });
        ScriptedServer::replyData(poll, Zeros16);
        QVERIFY(!m_manager);
        ScriptedServer::replyData(poll, Zeros16);
    }

    void reportsASilentServer()
    {
        Alert shown;
        setAlertHandler([&](Alert const& alert) { shown = alert; });
        m_manager->onTimeout();
        QCOMPARE(m_news.filter("end"), QStringList{"end 0"});
        QCOMPARE(shown.text, QStringLiteral("ERROR: No response was reveived from Scanbridge, the "
                                            "server probably timed out."));
    }

    void readsTheCableReport()
    {
        QSignalSpy enable(m_manager.get(), &DataManager::StartandAutoEnable);
        m_manager->getCableForNlc();
        CmdPack const query = m_chip->packs.last();
        QCOMPARE(m_chip->takeLines(), QStringList{"CMD='QUERY'"});
        QString const report =
            "Cable found: USB  Debugger A/0/12/ 34 (x)/more;;noise;Cable found:TR7QZ/a/b;"
            "Cable found: WINUSB/1//2/77(;Cable found: LPT/1/2/3;Cable found: other/1/2/3:4";
        ScriptedServer::reply(query, {{"RES", 0}, {"CABLES", report}});
        QCOMPARE(m_manager->nlcCables(), (QList<QStringList>{{"1", "0", "12", "34"},
                                                             {"2", "1", "2", "77"},
                                                             {"3", "1", "2", "3"},
                                                             {"0", "1", "2", "3"}}));
        m_manager->getCableForNlc();
        ScriptedServer::reply(m_chip->packs.last(), {{"RES", 1}, {"CABLES", report}});
        QVERIFY(m_manager->nlcCables().isEmpty());
        QCOMPARE(enable, (QList<QVariantList>{{false}, {true}, {false}, {true}}));
    }

private:
    void stopsBetweenTwoSections(std::function<void(CmdPack const&)> const& stop,
                                 QStringList const& ends)
    {
        load({&m_core}); // 8 sections
        m_manager->initDeviceChain({0});
        CmdPack const open = m_chip->packs.first();
        CmdPack const poll = firstPoll();
        m_chip->packs.clear();
        m_chip->onRequest = [&](CmdPack const& pack) {
            if (pack.value("OPRATE").toString() == QLatin1String("READ_RAM") &&
                pack.value("SECTION").toInt() == 1) {
                QTimer::singleShot(0, this, [&] { stop(open); });
            }
        };
        ScriptedServer::replyData(poll, Zeros16);
        // the section after the pause still goes out, then the loop ends
        QCOMPARE(m_chip->takeLines(), asked("read 0:0/8@0*128, read 0:1/8@128*128, close, "
                                            "read 0:2/8@256*128"));
        QCOMPARE(m_news.filter("end"), ends);
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    /// Starts the first core; the request of its first poll.
    CmdPack firstPoll()
    {
        m_manager->startDataTrigger({0});
        m_manager->checkState();
        return m_chip->packs.last();
    }

    Core m_core{0};
};

QTEST_GUILESS_MAIN(TestStandardDataManager)
#include "tst_standarddatamanager.moc"
