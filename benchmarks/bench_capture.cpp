#include "acquire/standarddatamanager.h"
#include "benchmarks/comparison.h"
#include "benchmarks/widecapture.h"
#include "jtag/jtagsession.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>

using namespace VEK;
using bench::Comparison;

namespace {

using bench::WideSamples;
constexpr int SectionSamples = 128;

/// A simulated chip in a process of its own, and the session connected to it.
class Desk
{
public:
    Desk() : m_folder(QStringLiteral("/tmp/vekbench-XXXXXX"))
    {
        m_process.setProcessEnvironment(bench::layWideCapture(m_folder.path(), 1));
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
        if (result != 0 || sections != WideSamples / SectionSamples)
            state.SkipWithError("no capture");
    }
}

Comparison reading()
{
    Comparison comparison;
    comparison.name = "a capture of 65,536 x 64, paced by replies";
    comparison.aim = 2;
    comparison.slack = 0.05;
    comparison.size = WideSamples;
    comparison.repetitions = 7;
    comparison.realTime = true;
    comparison.work = capture;
    comparison.limit = [](benchmark::State& state) {
        for (auto _ : state)
            bench::moveFrames();
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    return bench::run({reading()}, argc, argv);
}
