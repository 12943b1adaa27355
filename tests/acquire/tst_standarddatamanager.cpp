#include "acquire/standarddatamanager.h"
#include "image/expressionimage.h"
#include "jtag/alert.h"
#include "model/standardfile.h"
#include "tests/support/scriptedserver.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>
#include <vector>

using namespace VEK;

namespace {

const QString Zeros16(16, QLatin1Char('0'));
const QString ReadStart =
    QStringLiteral("CMD='WRITE' DATA=011010000000000000000 OPRATE='WRITE_START_REG'");
const QString AskStart = QStringLiteral("CMD='READ' OPRATE='READ_START_REG' SIZE=16");
const QString ReadInit =
    QStringLiteral("CMD='WRITE' DATA=011010000000000000011 OPRATE='OP_SELECT_CAPTURE_INIT'");
const QString AskInit = QStringLiteral("CMD='READ' OPRATE='OP_READ_CAPTURE_INIT' SIZE=16");
const QString Close = QStringLiteral("CMD='CLOSE'");

QString number(int value, int width)
{
    return QStringLiteral("%1").arg(value, width, 2, QLatin1Char('0'));
}

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
    QString const place = QStringLiteral("SECTION=%1 SECTION_COUNT=%2").arg(i).arg(count);
    return {QStringLiteral("CMD='WRITE' DATA=00111%1%2 OPRATE='BRUST_READ' %3 WINDOW=%4")
                .arg(number(address, 16), number(burst, 16), place)
                .arg(window),
            QStringLiteral("CMD='READ' OPRATE='READ_RAM' %1 SIZE=%2 WINDOW=%3")
                .arg(place)
                .arg(width * burst + 33)
                .arg(window)};
}

QStringList registers(SxCore const& core)
{
    QStringList lines;
    for (QBitArray const& word :
         generateRegisterBit(&core, QString(), FileKindVek) + generateExpressionBit(&core))
        lines.append(registor(bit2str(word)));
    return lines;
}

} // namespace

class TestStandardDataManager : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_server.reset(new ScriptedServer);
        m_manager.reset(new VekStandardDataManager);
        m_manager->setTiming(0, 0);
        m_windows.clear();
        m_ends.clear();
        connect(m_manager.get(), &VekStandardDataManager::readRamComplete, this,
                [this](int core, int window) {
                    m_windows.append({core, window, m_manager->getCurrentData(window)});
                });
        connect(m_manager.get(), &DataManager::triggerComplete, this,
                [this](int result) { m_ends.append(result); });
    }

    void cleanup()
    {
        m_manager.reset();
        m_server.reset();
        m_given.clear();
        setAlertHandler({});
    }

    void opensTheChain_data()
    {
        QTest::addColumn<QString>("cable");
        QTest::addColumn<QString>("location");
        QTest::addColumn<QString>("keys");
        QTest::newRow("ft2ch") << "Kavro USB Cable(FT2CH)"
                               << "12"
                               << " cable_index=0 cable_location=12";
        QTest::newRow("tr7qz") << "Kavro USB Cable(TR7QZ)"
                               << "3"
                               << " cable_index=1 cable_location=3";
        QTest::newRow("winusb") << "Kavro USB Cable(WINUSB)"
                                << "x"
                                << " cable_index=2 cable_location=0";
        QTest::newRow("no location") << "Kavro USB Cable(FT2CH)"
                                     << ""
                                     << "";
        QTest::newRow("lpt") << "Parallel Port(LPT)"
                             << "12"
                             << "";
    }

    void opensTheChain()
    {
        QFETCH(QString, cable);
        QFETCH(QString, location);
        QFETCH(QString, keys);
        m_manager->initDeviceChainandLocation({0}, cable, location);
        QCOMPARE(m_server->takeLines(), QStringList{"CHAIN=[0] CMD='OPEN'" + keys});
    }

    void failedOpenStopsThenTellsTheResult()
    {
        load({core(0)});
        m_manager->initDeviceChain({0});
        CmdPack const open = m_server->packs.first();
        m_manager->startDataTrigger({0});
        m_server->packs.clear();
        QSignalSpy busy(m_manager.get(), &DataManager::statusChanged);
        ScriptedServer::reply(open, {{"RES", -20}});
        QCOMPARE(m_server->takeLines(), (QStringList{select(0), startValue(0), Close}));
        QCOMPARE(m_ends, (QList<int>{0, -20}));
        QCOMPARE(busy.size(), 1);
        QCOMPARE(busy.at(0).at(0).toBool(), false);

        m_manager->initDeviceChain({0});
        ScriptedServer::reply(m_server->packs.first(), {{"RES", 0}});
        QCOMPARE(m_ends.size(), 2);
    }

    void tellsTheWidths()
    {
        load({core(3, 20)});
        m_manager->sendTestMsg();
        QCOMPARE(m_server->takeLines(),
                 QStringList{"CMD='WRITE_INFOR' DATA_OUT_SHIFT_REGISTER_WIDTH=21 "
                             "MEM_DATA_WIDTH=21 MODE='standard' Sxcore=3"});
    }

    /// Two cores, the second with initial data; three windows of two sections.
    void wholeRunInOrder()
    {
        SxCore* first = core(0);
        first->storageDepth = 2048;
        first->windowNum = 3;
        first->captureAmount = 300;
        SxCore* second = core(1);
        second->captureInitDataEnabled = true;
        second->captureAmount = 100;
        load({first, second});

        m_manager->startDataTrigger({0, 1, 7});
        m_manager->startDataTrigger({0}); // while a run is on: nothing
        QStringList expected = registers(*first) << startValue(1);
        QCOMPARE(m_server->takeLines(), expected);

        m_manager->checkState();
        QCOMPARE(m_server->packs.size(), 3);
        CmdPack const poll = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), (QStringList{select(0), ReadStart, AskStart}));
        ScriptedServer::replyData(poll, QStringLiteral("0000000000000001"));
        QVERIFY(m_server->packs.isEmpty());
        m_manager->checkState();
        CmdPack const again = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), (QStringList{ReadStart, AskStart}));

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
            answerSection(request);
        QCOMPARE(m_windows.size(), 3);
        QCOMPARE(m_windows.at(2).index, 2);
        // the section that came last stands first, without head and tail
        QCOMPARE(bit2str(combine(m_windows.at(1).sections)), QStringLiteral("11"
                                                                            "01"));
        QCOMPARE(m_manager->status(), AnalyzerReadDone);

        m_manager->checkState(); // on to the second core, whose initial data is there
        QCOMPARE(m_server->packs.size(), 3);
        CmdPack const flag = m_server->packs.last();
        QCOMPARE(m_server->takeLines(), (QStringList{select(1), ReadInit, AskInit}));
        ScriptedServer::replyData(flag, QStringLiteral("0000000000000001"));
        expected = registers(*second) << startValue(1) << ReadStart << AskStart;
        QCOMPARE(m_server->takeLines(), expected);
        m_manager->checkState();
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        QCOMPARE(m_server->takeLines(), (QStringList{ReadInit, AskInit, ReadStart, AskStart}));
        m_manager->checkState();
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        CmdPack const lastPoll = m_server->packs.last();
        m_server->packs.clear();
        ScriptedServer::replyData(lastPoll, Zeros16);
        answerSection(m_server->packs.last());
        QCOMPARE(m_server->takeLines(), section(0, 1, 0, 0, 100));
        QVERIFY(m_ends.isEmpty());
        QTRY_COMPARE(m_ends, QList<int>{0}); // the next tick ends the run
        QCOMPARE(m_server->takeLines(), QStringList{Close});
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    void readsWholeSectionsOnly_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<int>("sections");
        QTest::addColumn<int>("burst");
        QTest::newRow("none") << 0 << 0 << 0;
        QTest::newRow("one") << 1 << 1 << 1;
        QTest::newRow("100") << 100 << 1 << 100;
        QTest::newRow("128") << 128 << 1 << 128;
        QTest::newRow("255") << 255 << 1 << 128;
        QTest::newRow("1000") << 1000 << 7 << 128;
        QTest::newRow("negative") << -5 << 1 << -5;
    }

    void readsWholeSectionsOnly()
    {
        QFETCH(int, depth);
        QFETCH(int, sections);
        QFETCH(int, burst);
        m_manager->setStatus(AnalyzerReading);
        m_manager->readRamData(2, 65500, 0, 17, depth);
        QCOMPARE(m_server->packs.size(), 2 * sections);
        for (int i = 0; i < sections; ++i) {
            QCOMPARE(m_server->packs.at(2 * i).value("DATA").toBitArray().size(), 37);
            int const address = (65500 + i * burst) % 65536;
            if (burst > 0) {
                QCOMPARE(ScriptedServer::line(m_server->packs.at(2 * i)),
                         section(i, sections, 2, address, burst, 17).first());
            }
            QCOMPARE(m_server->packs.at(2 * i + 1).value("SIZE").toInt(), 17 * burst + 33);
        }
    }

    /// Numbers that no file should hold must not loop, divide or overflow.
    void nonsenseNumbers_data()
    {
        QTest::addColumn<int>("windows");
        QTest::addColumn<int>("amount");
        QTest::addColumn<int>("depth");
        QTest::newRow("no windows") << 0 << 100 << 1024;
        QTest::newRow("negative windows") << -3 << 100 << 1024;
        QTest::newRow("two thousand million windows of nothing") << 2000000000 << 0 << 1024;
        QTest::newRow("negative depth") << 3 << 1 << -2147483647;
    }

    void nonsenseNumbers()
    {
        QFETCH(int, windows);
        QFETCH(int, amount);
        QFETCH(int, depth);
        SxCore* odd = core(0);
        odd->windowNum = windows;
        odd->captureAmount = amount;
        odd->storageDepth = depth;
        load({odd});
        m_manager->startDataTrigger({0});
        m_manager->checkState();
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        QCOMPARE(m_manager->status(), AnalyzerReading);
        m_manager->stopDataTrigger();
        QCOMPARE(m_ends, QList<int>{0});
    }

    void repeatsUntilStopped()
    {
        SxCore* dynamic = core(0);
        dynamic->expressionType = ExpressionDynamic;
        dynamic->captureAmount = 16;
        load({dynamic});
        m_manager->setAutoRunCount(0);
        m_manager->startDataTrigger({0});
        for (int run = 1; run <= 2; ++run) {
            m_manager->checkState();
            ScriptedServer::replyData(m_server->packs.last(), Zeros16);
            QCOMPARE(m_manager->autoRunCount(), run);
            CmdPack const read = m_server->packs.last();
            m_server->packs.clear();
            answerSection(read);
            // armed again, without the expression words
            QStringList expected;
            for (QBitArray const& word : generateRegisterBit(dynamic, QString(), FileKindVek))
                expected.append(registor(bit2str(word)));
            QCOMPARE(m_server->takeLines(), expected << startValue(1));
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
        SxCore* initial = core(0);
        initial->captureInitDataEnabled = true;
        load({initial});
        m_manager->startDataTrigger({0});
        m_manager->forceDataTrigger();
        m_server->packs.clear();
        m_manager->checkState();
        QCOMPARE(m_server->takeLines(), (QStringList{select(0), ReadStart, AskStart}));
        m_manager->setStatus(AnalyzerReading);
        m_manager->forceDataTrigger();
        QVERIFY(m_server->packs.isEmpty());
    }

    void lateAndHostileRepliesDoNothing()
    {
        load({core(0)});
        m_manager->startDataTrigger({0});
        m_manager->checkState();
        CmdPack const poll = m_server->packs.last();
        ScriptedServer::reply(poll, {}); // no bits are no zero
        QCOMPARE(m_manager->status(), AnalyzerRunning);
        m_manager->checkState();
        ScriptedServer::replyData(m_server->packs.last(), Zeros16);
        CmdPack const read = m_server->packs.last();
        for (QVariant const& window : {QVariant(-1), QVariant(1), QVariant(2147483647)}) {
            CmdPack hostile = read;
            hostile.insert("WINDOW", window);
            answerSection(hostile);
        }
        QVERIFY(m_windows.isEmpty());
        m_server->packs.clear();
        m_manager->stopDataTrigger();
        QCOMPARE(m_server->takeLines(), QStringList{Close}); // the core is no longer armed
        answerSection(read);
        ScriptedServer::replyData(poll, Zeros16);
        m_manager->checkState();
        QVERIFY(m_server->packs.isEmpty());
        QVERIFY(m_windows.isEmpty());
        QCOMPARE(m_ends, QList<int>{0});
    }

    /// Whatever comes in during the pause between two sections is handled there.
    void stopsBetweenTwoSections_data()
    {
        QTest::addColumn<bool>("byOpen");
        QTest::newRow("stop") << false;
        QTest::newRow("late failed open") << true;
    }

    void stopsBetweenTwoSections()
    {
        QFETCH(bool, byOpen);
        load({core(0)}); // 8 sections
        m_manager->initDeviceChain({0});
        CmdPack const open = m_server->packs.first();
        m_manager->startDataTrigger({0});
        m_manager->checkState();
        CmdPack const poll = m_server->packs.last();
        m_server->packs.clear();
        m_server->onRequest = [&](CmdPack const& pack) {
            if (pack.value("OPRATE").toString() == QLatin1String("READ_RAM") &&
                pack.value("SECTION").toInt() == 1) {
                QTimer::singleShot(0, this, [&] {
                    if (byOpen)
                        ScriptedServer::reply(open, {{"RES", -1}});
                    else
                        m_manager->stopDataTrigger();
                });
            }
        };
        ScriptedServer::replyData(poll, Zeros16);
        // the section after the pause still goes out, then the loop ends
        QStringList const expected = section(0, 8, 0, 0, 128) + section(1, 8, 0, 128, 128) +
                                     QStringList{Close} + section(2, 8, 0, 256, 128);
        QCOMPARE(m_server->takeLines(), expected);
        QCOMPARE(m_ends, byOpen ? (QList<int>{0, -1}) : (QList<int>{0}));
        QCOMPARE(m_manager->status(), AnalyzerIdle);
    }

    void survivesItsOwnEndDuringARead()
    {
        load({core(0)});
        m_manager->startDataTrigger({0});
        m_manager->checkState();
        CmdPack const poll = m_server->packs.last();
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
        QCOMPARE(shown.kind, AlertKind::Critical);
        QCOMPARE(shown.title, QStringLiteral("Error"));
        QCOMPARE(shown.text, QStringLiteral("ERROR: No response was reveived from Scanbridge, the "
                                            "server probably timed out."));
    }

    void readsTheCableReport()
    {
        QSignalSpy enable(m_manager.get(), &DataManager::StartandAutoEnable);
        QSignalSpy changed(m_manager.get(), &DataManager::CableChangedForNlc);
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
        QVERIFY(m_manager->nlcCables().isEmpty());
        ScriptedServer::reply(m_server->packs.last(), {{"RES", 1}, {"CABLES", report}});
        QVERIFY(m_manager->nlcCables().isEmpty());
        QCOMPARE(changed.size(), 2);
        QCOMPARE(enable, (QList<QVariantList>{{false}, {true}, {false}, {true}}));
    }

    void loadsFiles()
    {
        QTemporaryDir folder;
        QString error;
        QVERIFY(!m_manager->readVekFile(folder.filePath("none.vek"), error));
        QString const path = folder.filePath("a.RSX");
        SxCore other(5);
        QVERIFY(writeVEKConfigToXml({&other}, path));
        QVERIFY(m_manager->readVekFile(path, error));
        QCOMPARE(m_manager->fileKind(), int(FileKindRsx));
        QCOMPARE(m_manager->getCore(0)->index, 5);
        QVERIFY(!m_manager->getCore(-1) && !m_manager->getCore(1));
        QVERIFY(m_manager->getSelectedCores().isEmpty());
    }

private:
    struct Window
    {
        int core;
        int index;
        QList<QBitArray> sections;
    };

    static SxCore* core(int index, int signalCount = 2)
    {
        SxCore* core = new SxCore(index);
        for (int i = 0; i < signalCount; ++i) {
            SignalItem item;
            item.name = QStringLiteral("s%1").arg(i);
            item.captureEnable = true;
            core->allSignalList.append(item);
        }
        return core;
    }

    /// Hands copies of cores to the manager the way a user does, through a file. The given ones
    /// are kept until the end of the test.
    void load(QList<SxCore*> const& cores)
    {
        QTemporaryDir folder;
        QString const path = folder.filePath("cores.vek");
        QVERIFY(writeVEKConfigToXml(cores, path));
        QString error;
        QVERIFY(m_manager->readVekFile(path, error));
        for (SxCore* core : cores)
            m_given.emplace_back(core);
    }

    static void answerSection(CmdPack const& request)
    {
        // two bits a section tell which one it was
        int const i = request.value("SECTION").toInt();
        QString const bits = QString(32, '1') + QString::number(i) + "1" + "1";
        CmdPack answer{{"DATA", str2bit(bits)},
                       {"WINDOW", request.value("WINDOW")},
                       {"SECTION_COUNT", request.value("SECTION_COUNT")}};
        ScriptedServer::reply(request, answer);
    }

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<VekStandardDataManager> m_manager;
    std::vector<std::unique_ptr<SxCore>> m_given;
    QList<Window> m_windows;
    QList<int> m_ends;
};

QTEST_GUILESS_MAIN(TestStandardDataManager)
#include "tst_standarddatamanager.moc"
