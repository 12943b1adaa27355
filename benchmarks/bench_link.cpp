#include "benchmarks/comparison.h"
#include "benchmarks/socketpair.h"
#include "jtag/frame.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QEventLoop>
#include <QRandomGenerator>

#include <map>
#include <memory>

using namespace VEK;
using bench::Comparison;

namespace {

constexpr int Frames = 65536;
constexpr int WordBits = 5 + 16 + 33;
constexpr int ReplyBits = 65;

QBitArray randomBits(QRandomGenerator& random, int count)
{
    QBitArray bits(count);
    for (int i = 0; i < count; ++i)
        bits.setBit(i, random.generate() & 1);
    return bits;
}

/// Register words as they go to a core.
QList<QBitArray> registerWords()
{
    QRandomGenerator random(33);
    QList<QBitArray> words;
    for (int i = 0; i < Frames; ++i)
        words.append(randomBits(random, WordBits));
    return words;
}

CmdPack writeRequest(QBitArray const& word)
{
    return {{Protocol::Key::Cmd, Protocol::Cmd::Write},
            {Protocol::Key::Oprate, Protocol::Oprate::WriteRegistor},
            {Protocol::Key::Data, word}};
}

/// Waits until the other end has what was written.
void finish(QLocalSocket& socket)
{
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(-1)) {
    }
}

Comparison sending()
{
    QList<QBitArray> const words = registerWords();
    std::vector<QByteArray> frames;
    for (QBitArray const& word : words)
        frames.push_back(frameFromPack(writeRequest(word)));

    Comparison comparison;
    comparison.name = "sending 65,536 register writes through the session";
    comparison.aim = 1 / 0.65;
    comparison.size = Frames;
    comparison.otherSize = Frames / 10;
    comparison.work = [words](benchmark::State& state) {
        JtagSession* const session = JtagSession::shared();
        auto client = std::make_unique<JtagClient>();
        bench::SocketPair const pair(*client, bench::drain);
        session->setSession({Server::Ft2chName, {}, 0, CableFT2CH, Channel0}, client.get());
        session->connectServer(Server::Ft2chName);
        for (auto _ : state) {
            for (int i = 0; i < int(state.range(0)); ++i)
                session->createTask({QUrl(), writeRequest(words.at(i))}, nullptr);
            finish(*client);
        }
        session->disconnectServer();
        session->switchSession({});
        client.reset();
    };
    // The limit: frames that are ready, each with a write and a flush.
    comparison.limit = [frames](benchmark::State& state) {
        auto socket = std::make_unique<QLocalSocket>();
        bench::SocketPair const pair(*socket, bench::drain);
        for (auto _ : state) {
            for (std::size_t i = 0; i < std::size_t(state.range(0)); ++i) {
                socket->write(frames[i]);
                socket->flush();
            }
            finish(*socket);
        }
        socket.reset();
    };
    return comparison;
}

/// The replies to as many reads, one frame after the other.
QByteArray const& replyFrames(int count)
{
    static std::map<int, QByteArray> made;
    QByteArray& frames = made[count];
    if (!frames.isEmpty())
        return frames;
    QRandomGenerator random(65);
    for (int id = 0; id < count; ++id)
        frames += frameFromPack({{Protocol::Key::Data, randomBits(random, ReplyBits)},
                                 {Protocol::Key::RequestId, unsigned(id)}});
    return frames;
}

void receive(benchmark::State& state)
{
    int const count = int(state.range(0));
    QByteArray const& frames = replyFrames(count);
    JtagSession* const session = JtagSession::shared();
    for (auto _ : state) {
        state.PauseTiming();
        int left = count;
        QEventLoop loop;
        TaskCallback const callback = [&left, &loop](CmdPack const& reply) {
            if (reply.value(Protocol::Key::Data).toBitArray().size() != ReplyBits)
                qFatal("another reply");
            if (--left == 0)
                loop.quit();
        };
        session->setWorkerMode(true); // requests that nobody sends
        for (int i = 0; i < count; ++i)
            session->createTask({}, callback);
        session->setWorkerMode(false);
        {
            auto client = std::make_unique<JtagClient>();
            session->switchSession({{}, client.get()});
            bench::SocketPair const pair(
                *client, [&frames](int descriptor) { bench::sendAll(descriptor, frames); });
            state.ResumeTiming();
            loop.exec();
            state.PauseTiming();
            session->switchSession({});
            client.reset();
        }
        session->cancelAll();
        state.ResumeTiming();
    }
}

/// The limit: the same frames decoded from memory.
void decodeReplies(benchmark::State& state)
{
    int const count = int(state.range(0));
    QByteArray const& frames = replyFrames(count);
    for (auto _ : state) {
        QDataStream stream(frames);
        stream.setVersion(Protocol::StreamVersion);
        for (int i = 0; i < count; ++i) {
            quint32 size = 0;
            CmdPack pack;
            stream >> size >> pack;
            if (pack.value(Protocol::Key::Data).toBitArray().size() != ReplyBits)
                qFatal("another reply");
        }
    }
}

Comparison receiving()
{
    Comparison comparison;
    comparison.name = "receiving and routing 65,536 replies";
    comparison.aim = 2.5;
    comparison.size = Frames;
    comparison.otherSize = Frames / 10;
    comparison.work = receive;
    comparison.limit = decodeReplies;
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    return bench::run({sending(), receiving()}, argc, argv);
}
