#include "analyzer/commandline.h"
#include "analyzer/console.h"
#include "analyzer/liteanalyzer.h"
#include "analyzer/serverstage.h"
#include "analyzer/standardanalyzer.h"
#include "jtag/jtagsession.h"
#include "model/vekfile.h"

#include <QCoreApplication>

using namespace VEK;

namespace {

constexpr int InvalidFile = -1;

template <typename Analyzer>
int run(Analyzer& analyzer, CommandLine const& line, QString const& serverName)
{
    // queued, so that an end during the start still ends the loop
    QObject::connect(&analyzer, &Analyzer::finish, qApp, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    analyzer.open(line.vekFile); // says itself what is wrong; the run goes on without cores
    analyzer.setOutputBase(line.outputBase);
    analyzer.start(serverName, line.cableName, line.location);
    return QCoreApplication::exec();
}

int runFile(CommandLine const& line, QString const& serverName)
{
    switch (vekModeFromVekConfigFile(line.vekFile)) {
    case VekModeStandard: {
        VekCmdStandardAnalyzer analyzer;
        return run(analyzer, line, serverName);
    }
    case VekModeLite: {
        VekCmdLiteAnalyzer analyzer;
        analyzer.setDeviceName(line.device);
        return run(analyzer, line, serverName);
    }
    default:
        printLine(QStringLiteral("Error: invalid vek file."));
        return InvalidFile;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    CommandLine const line = parseCommandLine(QCoreApplication::arguments());
    // before any look at the file
    ServerStage const server = startServer(line.cable, line.channel);
    if (server.exitStatus)
        return server.exitStatus;
    int const status = runFile(line, server.serverName);
    JtagSession::shared()->clearAllServerMap();
    return status;
}
