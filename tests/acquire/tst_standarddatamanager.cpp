#include "acquire/standarddatamanager.h"
#include "image/expressionimage.h"
#include "model/alert.h"
#include "model/standardfile.h"

#include "managerrig.h"

#include <QSignalSpy>
#include <QTimer>

#include <algorithm>
#include <array>

using namespace VEK;

namespace {

const QString Zeros16(16, QLatin1Char('0'));
const QStringList PollInit{"CMD='WRITE' DATA=011010000000000000011 OPRATE='OP_SELECT_CAPTURE_INIT'",
                           "CMD='READ' OPRATE='OP_READ_CAPTURE_INIT' SIZE=16"};
const QStringList PollStart = askStart(16);

QString registor(QString const& bits)
{
    return QStringLiteral("CMD='WRITE' DATA=%1 OPRATE='WRITE_REGISTOR'").arg(bits);
}

QString select(int index)
{
    return registor(QLatin1Char('1') + number(index, 4));
}

/// A start register value of a core whose fields have 16 bits.
QString startValue(int value)
{
    return QStringLiteral("CMD='WRITE' DATA=010010000000000000000%1 OPRATE='WRITE_START_REG'")
        .arg(number(value, 16));
}

QStringList section(int i, int count, int window, int address, int burst, int width = 16)
{
    return askSection(i, count, window, address, number(burst, 16), width * burst + 33);
}

/// A core of two signals.
struct Core : SxCore
{
    explicit Core(int index) : SxCore(index)
    {
        allSignalList = ManagerRig<VekStandardDataManager>::captured(2);
    }
};

QStringList registers(SxCore const& core, bool withExpression = true,
                      QString const& device = QString())
{
    QStringList lines;
    QList<QBitArray> words = generateRegisterBit(&core, device, FileKindVek);
    if (withExpression)
        words += generateExpressionBit(&core);
    for (QBitArray const& word : qAsConst(words))
        lines.append(registor(bit2str(word)));
    return lines;
}

} // namespace

class TestStandardDataManager : public QObject, ManagerRig<VekStandardDataManager>
{
    Q_OBJECT

private slots:
    void init()
    {
        begin();
        connect(m_manager.get(), &VekStandardDataManager::readRamComplete, this,
                [this](int, int window) { m_reads.append(m_manager->getCurrentData(window)); });
    }

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
            QCOMPARE(m_server->takeLines(), QStringList{"CHAIN=[0] CMD='OPEN'" + row[2]});
        }
    }

    /// Two cores, the second with initial data; three windows of two sections.
    void wholeRunInOrder()
    {
        Core first(0);
        first.storageDepth = 2048;
        first.windowNum = 3;
        first.captureAmount = 300;
        Core second(1);
        second.captureInitDataEnabled = true;
        second.captureAmount = 100;
        load({&first, &second});

        QString const widths = "CMD='WRITE_INFOR' DATA_OUT_SHIFT_REGISTER_WIDTH=16 "
                               "MEM_DATA_WIDTH=3 MODE='standard' Sxcore=%1";
        m_manager->sendTestMsg();
        QCOMPARE(m_server->takeLines(), (QStringList{widths.arg(0), widths.arg(1)}));
        m_manager->startDataTrigger({0, 1, 7});
        m_manager->startDataTrigger({0}); // while a run is on: nothing
        QStringList expected = registers(first) << startValue(1);
        QCOMPARE(m_server->takeLines(), expected);

        m_manager->checkState();
        CmdPack const poll = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), QStringList{select(0)} + PollStart);
        ScriptedServer::replyData(poll, QStringLiteral("0000000000000001"));
        QVERIFY(m_server->packs.isEmpty());
        m_manager->checkState();
        CmdPack const again = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), PollStart);

        ScriptedServer::replyData(again, Zeros16);
        expected.clear();
        for (int window = 0; window < 3; ++window) {
            expected << section(0, 2, window, 512 * window, 128)
                     << section(1, 2, window, 512 * window + 128, 128);
        }
        QList<CmdPack> const asked = m_server->packs;
        QCOMPARE(m_server->takeLines(), expected);
        QCOMPARE(m_manager->status(), AnalyzerReading);
        for (CmdPack const& request : asked)
            answer(request);
        QCOMPARE(m_reads.size(), 3);
        // the section that came last stands first, without head and tail
        QCOMPARE(bit2str(combine(m_reads.at(1))), "1101");
        QCOMPARE(m_manager->status(), AnalyzerReadDone);

        m_manager->checkState(); // on to the second core, whose initial data is there
        CmdPack const flag = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), QStringList{select(1)} + PollInit);
        ScriptedServer::replyData(flag, QStringLiteral("0000000000000001"));
        expected = registers(second) << startValue(1) << PollStart;
        QCOMPARE(m_server->takeLines(), expected);
        m_manager->checkState();
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        QCOMPARE(m_server->takeLines(), PollInit + PollStart);
        m_manager->checkState();
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        CmdPack const lastPoll = m_server->packs.last();
        m_server->packs.clear();
        ScriptedServer::replyData(lastPoll, Zeros16);
        answer(m_server->packs.last());
        QCOMPARE(m_server->takeLines(), section(0, 1, 0, 0, 100));
        QVERIFY(m_ends.isEmpty());
        QTRY_COMPARE(m_ends, QList<int>{0}); // the next tick ends the run
        QCOMPARE(m_server->takeLines(), QStringList{Close});
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    void depthsThatAreNone()
    {
        m_manager->setStatus(AnalyzerReading);
        m_manager->readRamData(2, 65500, 0, 17, 0);
        QVERIFY(m_server->packs.isEmpty());
        m_manager->readRamData(2, 65500, 0, 17, -5);
        QCOMPARE(m_server->packs.at(0).value("DATA").toBitArray().size(), 37);
        QCOMPARE(m_server->packs.at(1).value("SIZE").toInt(), 17 * -5 + 33);
    }

    /// Numbers that no file should hold must not loop, divide or overflow.
    void nonsenseNumbers()
    {
        // windows, amount, depth
        for (auto const& row : std::vector<std::array<int, 3>>{
                 {0, 100, 1024}, {-3, 100, 1024}, {2000000000, 0, 1024}, {3, 1, -2147483647}}) {
            Core odd(0);
            odd.windowNum = row[0];
            odd.captureAmount = row[1];
            odd.storageDepth = row[2];
            load({&odd});
            ScriptedServer::replyData(firstPoll(), Zeros16);
            QCOMPARE(m_manager->status(), AnalyzerReading);
            m_manager->stopDataTrigger();
            QCOMPARE(m_ends.size(), 1);
            m_ends.clear();
        }
    }

    void repeatsUntilStopped()
    {
        Core dynamic(0);
        dynamic.expressionType = ExpressionDynamic;
        dynamic.captureAmount = 16;
        load({&dynamic});
        m_manager->setDeviceName("TK-107"); // takes one record fewer
        m_manager->setAutoRunCount(0);
        m_manager->startDataTrigger({0});
        QCOMPARE(m_server->takeLines(), registers(dynamic, true, "TK-107") << startValue(1));
        for (int run = 1; run <= 2; ++run) {
            m_manager->checkState();
            ScriptedServer::replyData(m_server->packs.last(), Zeros16);
            QCOMPARE(m_manager->autoRunCount(), run);
            CmdPack const read = m_server->packs.last();
            m_server->packs.clear();
            answer(read);
            // armed again, without the expression words
            QCOMPARE(m_server->takeLines(), registers(dynamic, false, "TK-107") << startValue(1));
        }
        m_manager->forceDataTrigger();
        QCOMPARE(m_server->takeLines(), (QStringList{select(0), startValue(3)}));
        QVERIFY(m_manager->getCore(0)->forced);
        m_manager->stopDataTrigger();
        QCOMPARE(m_server->takeLines(), (QStringList{select(0), startValue(0), Close}));
        QCOMPARE(m_manager->autoRunCount(), -1);
        QVERIFY(!m_manager->getCore(0)->forced);
    }

    void forceTakesThePlainPath()
    {
        Core initial(0);
        initial.captureInitDataEnabled = true;
        load({&initial});
        m_manager->startDataTrigger({0});
        m_manager->forceDataTrigger();
        m_server->packs.clear();
        m_manager->checkState();
        QCOMPARE(m_server->takeLines(), QStringList{select(0)} + PollStart);
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
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        QVERIFY(!m_manager->getCore(0)->forced && !m_manager->getCore(1)->forced);
        m_manager->getCore(0)->forced = true; // a host's own
        m_manager->startDataTrigger({1});
        QVERIFY(!m_manager->getCore(0)->forced);
        QCOMPARE(m_manager->getSelectedCores(), QList<SxCore*>{m_manager->getCore(1)});
        m_server.reset(); // no connection any more: a poll goes nowhere
        m_manager->checkState();
        QCOMPARE(m_manager->status(), AnalyzerRunning);
    }

    void handsOnTheReasonOfTheServer()
    {
        load({&m_core});
        QSignalSpy changes(m_manager.get(), &DataManager::deviceReasonChanged);
        m_manager->initDeviceChain({0});
        ScriptedServer::reply(m_server->packs.last(), {{"RES", 0}, {"REASON", "cut"}});
        CmdPack const poll = firstPoll();
        m_manager->checkState();
        CmdPack waiting{{"REASON", "over"}, {"DATA", str2bit(QString(16, '1'))}};
        ScriptedServer::reply(poll, waiting);
        QCOMPARE(m_manager->deviceReason(), QString("over"));
        waiting.remove("REASON");
        ScriptedServer::reply(m_server->packs.last(), waiting);
        QCOMPARE(m_manager->deviceReason(), QString("cut"));
        QString atTheEnd;
        connect(m_manager.get(), &DataManager::triggerComplete, this,
                [&] { atTheEnd = m_manager->deviceReason(); });
        m_manager->initDeviceChain({0});
        ScriptedServer::reply(m_server->packs.last(), {{"RES", -100}, {"REASON", "broken"}});
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
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        CmdPack const read = m_server->packs.last();
        // Each to a section of its own, which is every other request, and each twice.
        QList<QPair<QString, int>> const nonsense{
            {"WINDOW", -1},        {"WINDOW", 1},        {"WINDOW", 2147483647},
            {"SECTION_COUNT", -1}, {"SECTION_COUNT", 0}, {"SECTION_COUNT", 2147483647}};
        int at = m_server->packs.size() - 1;
        for (auto const& entry : nonsense) {
            CmdPack hostile = m_server->packs.at(at -= 2);
            QCOMPARE(hostile.value("OPRATE"), QVariant("READ_RAM"));
            hostile.insert(entry.first, entry.second);
            answer(hostile);
            answer(hostile);
        }
        QVERIFY(m_reads.isEmpty());
        m_server->packs.clear();
        m_manager->stopDataTrigger();
        QCOMPARE(m_server->takeLines(), QStringList{Close}); // the core is no longer armed
        answer(read);
        ScriptedServer::replyData(poll, Zeros16);
        m_manager->checkState();
        QVERIFY(m_server->packs.isEmpty());
        QVERIFY(m_reads.isEmpty());
        QCOMPARE(m_ends, QList<int>{0});
    }

    /// Whatever comes in during the pause between two sections is handled there.
    void stopsBetweenTwoSections()
    {
        stopsBetweenTwoSections([this](CmdPack const&) { m_manager->stopDataTrigger(); }, {0});
        cleanup();
        init();
        stopsBetweenTwoSections(
            [](CmdPack const& open) {
                ScriptedServer::reply(open, {{"RES", -1}});
            },
            {0, -1});
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
        QCOMPARE(m_ends, QList<int>{0});
        QCOMPARE(shown.text, QStringLiteral("ERROR: No response was reveived from Scanbridge, the "
                                            "server probably timed out."));
    }

    void readsTheCableReport()
    {
        QSignalSpy enable(m_manager.get(), &DataManager::StartandAutoEnable);
        m_manager->getCableForNlc();
        CmdPack const query = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), QStringList{"CMD='QUERY'"});
        QString const report =
            "Cable found: USB  Debugger A/0/12/ 34 (x)/more;;noise;Cable found:TR7QZ/a/b;"
            "Cable found: WINUSB/1//2/77(;Cable found: LPT/1/2/3;Cable found: other/1/2/3:4";
        ScriptedServer::reply(query, {{"RES", 0}, {"CABLES", report}});
        QCOMPARE(m_manager->nlcCables(), (QList<QStringList>{{"1", "0", "12", "34"},
                                                             {"2", "1", "2", "77"},
                                                             {"3", "1", "2", "3"},
                                                             {"0", "1", "2", "3"}}));
        m_manager->getCableForNlc();
        ScriptedServer::reply(m_server->packs.last(), {{"RES", 1}, {"CABLES", report}});
        QVERIFY(m_manager->nlcCables().isEmpty());
        QCOMPARE(enable, (QList<QVariantList>{{false}, {true}, {false}, {true}}));
    }

private:
    void stopsBetweenTwoSections(std::function<void(CmdPack const&)> const& stop,
                                 QList<int> const& ends)
    {
        load({&m_core}); // 8 sections
        m_manager->initDeviceChain({0});
        CmdPack const open = m_server->packs.first();
        CmdPack const poll = firstPoll();
        m_server->packs.clear();
        m_server->onRequest = [&](CmdPack const& pack) {
            if (pack.value("OPRATE").toString() == QLatin1String("READ_RAM") &&
                pack.value("SECTION").toInt() == 1) {
                QTimer::singleShot(0, this, [&] { stop(open); });
            }
        };
        ScriptedServer::replyData(poll, Zeros16);
        // the section after the pause still goes out, then the loop ends
        QStringList const expected = section(0, 8, 0, 0, 128) + section(1, 8, 0, 128, 128) +
                                     QStringList{Close} + section(2, 8, 0, 256, 128);
        QCOMPARE(m_server->takeLines(), expected);
        QCOMPARE(m_ends, ends);
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    void load(QList<SxCore*> const& cores) { loadWith(writeVEKConfigToXml, cores); }

    /// Starts the first core; the request of its first poll.
    CmdPack firstPoll()
    {
        m_manager->startDataTrigger({0});
        m_manager->checkState();
        return m_server->packs.last();
    }

    /// Replies to a request of a section with two bits that tell which one it is.
    static void answer(CmdPack const& request)
    {
        QString const number = QString::number(request.value("SECTION").toInt());
        answerSection(request, QString(32, '1') + number + "1" + "1");
    }

    Core m_core{0};
};

QTEST_GUILESS_MAIN(TestStandardDataManager)
#include "tst_standarddatamanager.moc"
