#include "cli/command.h"
#include "cli/exitstatus.h"
#include "cli/unixsignals.h"
#include "jtag/cablehold.h"
#include "jtag/serverstartup.h"
#include "simulator/server.h"
#include "simulator/wirereplay.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>

namespace VEK::Cli {
namespace {

using Simulator::BridgeServer;
using Simulator::WireReplay;

constexpr int ToldRequests = 10; ///< Of those that were never recorded; a trigger has thousands.

struct Words
{
    std::string recording;
    std::string address;
    bool takesCut = false;
    bool json = false;
};

/// What a script waits for. Not in the way of the one JSON object. A standard output that can't be
/// written is told at the end, when that is known again.
void tellListening(QString const& text, bool json)
{
    if (json)
        std::fprintf(stderr, "vek: %s\n", text.toLocal8Bit().constData());
    else
        printLine(text);
}

void load(QString const& path, bool takesCut, WireReplay& replay)
{
    QFile file(path);
    QString error;
    if (!file.open(QIODevice::ReadOnly))
        error = file.errorString();
    else if (replay.load(file, takesCut, error))
        return;
    throw Failure{Status::Configuration, QStringLiteral("%1: %2").arg(path, error)};
}

/// Nobody's server is replaced. The hold of the cable is for the client to take.
void listenAtCable(QString const& cable, BridgeServer& server, bool json)
{
    QString const name = localServer(cable).address;
    CableHold hold(name);
    if (!hold.tryTake())
        throw Failure{Status::Busy, QStringLiteral("A run holds the cable. Wait for its end.")};
    if (hold.isServed())
        throw Failure{Status::Busy,
                      QStringLiteral("A JTAG server is at the cable's socket already. End it, or "
                                     "set TMPDIR to a folder of its own.")};
    QString error;
    if (!server.listenLocal(name, error))
        throw Failure{Status::NoServer, error};
    tellListening(QStringLiteral("listening on %1").arg(name), json);
}

void listen(Words const& words, WireReplay const& replay, BridgeServer& server)
{
    if (words.address.empty()) {
        listenAtCable(replay.header().cable, server, words.json);
        return;
    }
    QObject::connect(&server, &BridgeServer::told, &server,
                     [json = words.json](QString const& text) { tellListening(text, json); });
    QString error;
    if (!server.listenAlone(textOf(words.address), error))
        throw Failure{Status::Usage, QStringLiteral("--listen: %1.").arg(error)};
}

QString summary(WireReplay const& replay)
{
    return QStringLiteral("%1 requests, %2 of them never recorded")
        .arg(replay.requests())
        .arg(replay.unrecorded());
}

QString json(WireReplay const& replay)
{
    WireHeader const& header = replay.header();
    QJsonObject const recording{
        {QStringLiteral("program"), header.program},
        {QStringLiteral("started"), header.started.toString(Qt::ISODateWithMs)},
        {QStringLiteral("cable"), header.cable},
        {QStringLiteral("socket"), header.socket}};
    QJsonObject const root{{QStringLiteral("recording"), recording},
                           {QStringLiteral("requests"), replay.requests()},
                           {QStringLiteral("unrecorded"), replay.unrecorded()}};
    return QString::fromUtf8(QJsonDocument(root).toJson().trimmed());
}

int replay(Words const& words)
{
    WireReplay replay;
    load(textOf(words.recording), words.takesCut, replay);
    replay.onUnrecorded = [&replay](QString const& request) {
        if (replay.unrecorded() <= ToldRequests)
            printWarning(QStringLiteral("never recorded: %1").arg(request));
    };
    BridgeServer server(replay, Simulator::Faults());
    UnixSignals signals_;
    QObject::connect(&signals_, &UnixSignals::received, &server,
                     [](int number) { QCoreApplication::exit(int(Status::Signal) + number); });
    // queued: what the client was sent goes out first
    QObject::connect(&server, &BridgeServer::clientLeft, &server, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    listen(words, replay, server);
    int const signalStatus = QCoreApplication::exec();
    if (!printLine(words.json ? json(replay) : summary(replay)))
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
    if (signalStatus != 0)
        return signalStatus;
    return int(replay.unrecorded() > 0 ? Status::Differs : Status::Done);
}

} // namespace

void addReplayCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command =
        program.add_subcommand("replay", "Stand as a JTAG server that answers as recorded");
    auto const words = std::make_shared<Words>();
    command->add_option("recording", words->recording, "Recording of vek run --record, .vekwire")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("--listen", words->address,
                     "Serve TCP there, for vek run --server (default: the cable's socket)")
        ->type_name("ADDRESS:PORT");
    command->add_flag("--cut", words->takesCut, "Replay what is left of a recording that was cut");
    command->add_flag("--json", words->json, "Tell the outcome as JSON");
    command->footer(statusHelp().toStdString());
    command->callback([&chosen, words] { chosen = [words] { return replay(*words); }; });
}

} // namespace VEK::Cli
