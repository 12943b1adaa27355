#include "acquire/standarddatamanager.h"
#include "benchmarks/comparison.h"
#include "benchmarks/socketpair.h"
#include "jtag/frame.h"
#include "jtag/jtagsession.h"
#include "model/standardfile.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <array>

using namespace VEK;
using bench::Comparison;

namespace {

constexpr int Signals = 64;
constexpr int Samples = 65536;
constexpr int SectionSamples = 128;
constexpr int SectionsInFlight = 8;
constexpr int RecordBits = Signals + 1;

/// A core whose trigger fires at the first sample.
void writeSetup(QString const& path)
{
    SxCore core(0);
    for (int i = 0; i < Signals; ++i) {
        SignalItem item;
        item.name = QStringLiteral("d[%1]").arg(i);
        item.captureEnable = true;
        core.allSignalList.append(item);
    }
    core.sampleClock = QStringLiteral("clk");
    core.storageDepth = Samples;
    core.captureAmount = Samples;
    core.triggers.first()->signalList = {core.allSignalList.first()};
    MatchUnit& unit = *core.matchUnits.first();
    unit.enabled = true;
    unit.trigger = core.triggers.first();
    unit.value0 = QStringLiteral("X");
    core.addExpression(QStringLiteral("M0"));
    writeVEKConfigToXml({&core}, path);
}

/// A simulated chip in a process of its own, and the session connected to it.
class Desk
{
public:
    Desk() : m_folder(QStringLiteral("/tmp/vekbench-XXXXXX"))
    {
        writeSetup(setup());
        QFile bench(m_folder.filePath(QStringLiteral("bench.json")));
        bench.open(QIODevice::WriteOnly);
        bench.write(R"({"device": "TK-501", "design": "core.vek",
                        "stimulus": {"pattern": "lfsr", "samples": 70000}})");
        bench.close();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TMPDIR"), m_folder.path());
        environment.insert(QStringLiteral("VEK_BENCH"), bench.fileName());
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(VEK_BUILD_ROOT "/Programmer/bin/scanbridge"),
                        {Server::LocalArgument});
        JtagSession* const session = JtagSession::shared();
        m_isConnected =
            session->createSession(
                {Server::Ft2chName, m_folder.filePath(Server::UsbSocket), 0, CableFT2CH, Channel0},
                Server::ConnectTimeout) &&
            session->connectServer(Server::Ft2chName);
    }

    ~Desk()
    {
        JtagSession::shared()->disconnectServer();
        m_process.kill();
        m_process.waitForFinished();
    }

    QString setup() const { return m_folder.filePath(QStringLiteral("core.vek")); }
    bool isConnected() const { return m_isConnected; }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    bool m_isConnected = false;
};

/// From the opening of the chain to its closing.
void capture(benchmark::State& state)
{
    Desk const desk;
    VekStandardDataManager manager;
    QString error;
    if (!desk.isConnected() || !manager.readVekFile(desk.setup(), error))
        return state.SkipWithError("no server");
    manager.setPacing(Pacing::ByReplies);
    QEventLoop loop;
    int sections = 0;
    int result = -1;
    QObject::connect(&manager, &VekStandardDataManager::readRamComplete, &loop,
                     [&](int, int window) { sections = manager.getCurrentData(window).size(); });
    QObject::connect(&manager, &DataManager::triggerComplete, &loop, [&](int id) {
        result = id;
        loop.quit();
    });
    for (auto _ : state) {
        manager.initDeviceChain({0});
        manager.startDataTrigger({0});
        loop.exec();
        if (result != 0 || sections != Samples / SectionSamples)
            state.SkipWithError("no capture");
    }
}

void transfer(int descriptor, bool isWriting, char* bytes, std::size_t count)
{
    while (count > 0) {
        ssize_t const done =
            isWriting ? ::write(descriptor, bytes, count) : ::read(descriptor, bytes, count);
        if (done <= 0)
            qFatal("no transfer");
        bytes += done;
        count -= std::size_t(done);
    }
}

/// The limit: the frames of the read alone, as many of them on their way, between two threads that
/// do not look at them.
void moveFrames(benchmark::State& state)
{
    int const sections = Samples / SectionSamples;
    CmdPack const place{{Protocol::Key::SectionCount, sections},
                        {Protocol::Key::Window, 0},
                        {Protocol::Key::DataRequestId, 0U}};
    CmdPack write = place;
    write.insert(Protocol::Key::Oprate, Protocol::Oprate::BrustRead);
    write.insert(Protocol::Key::Data, QBitArray(37));
    CmdPack read = place;
    read.insert(Protocol::Key::Oprate, Protocol::Oprate::ReadRam);
    read.insert(Protocol::Key::Size, 0);
    CmdPack reply = place;
    reply.insert(Protocol::Key::Data, QBitArray(RecordBits * SectionSamples + 33));
    QByteArray request = frameFromPack(write) + frameFromPack(read);
    QByteArray answer = frameFromPack(reply);
    for (auto _ : state) {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
            qFatal("no socket pair");
        std::thread peer([=]() mutable {
            for (int i = 0; i < sections; ++i) {
                transfer(ends[1], false, request.data(), std::size_t(request.size()));
                transfer(ends[1], true, answer.data(), std::size_t(answer.size()));
            }
        });
        for (int asked = 0, taken = 0; taken < sections; ++taken) {
            for (; asked < sections && asked - taken < SectionsInFlight; ++asked)
                transfer(ends[0], true, request.data(), std::size_t(request.size()));
            transfer(ends[0], false, answer.data(), std::size_t(answer.size()));
        }
        peer.join();
        ::close(ends[0]);
        ::close(ends[1]);
    }
}

Comparison reading()
{
    Comparison comparison;
    comparison.name = "a capture of 65,536 x 64, paced by replies";
    comparison.aim = 2;
    comparison.slack = 0.1;
    comparison.size = Samples;
    comparison.repetitions = 7;
    comparison.realTime = true;
    comparison.work = capture;
    comparison.limit = moveFrames;
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    return bench::run({reading()}, argc, argv);
}
