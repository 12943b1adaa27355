#include "benchmarks/widecapture.h"

#include "benchmarks/socketpair.h"
#include "jtag/frame.h"
#include "model/standardfile.h"

#include <QFile>

#include <array>

using namespace VEK;

namespace bench {
namespace {

constexpr int SectionSamples = 128;
constexpr int SectionsInFlight = 8;

/// A core whose trigger fires at the first sample.
SxCore* wideCore(int index)
{
    auto* const core = new SxCore(index);
    for (int i = 0; i < WideSignals; ++i) {
        SignalItem item;
        item.name = QStringLiteral("d[%1]").arg(i);
        item.captureEnable = true;
        core->allSignalList.append(item);
    }
    core->sampleClock = QStringLiteral("clk");
    core->storageDepth = WideSamples;
    core->captureAmount = WideSamples;
    core->triggers.first()->signalList = {core->allSignalList.first()};
    MatchUnit& unit = *core->matchUnits.first();
    unit.enabled = true;
    unit.trigger = core->triggers.first();
    unit.value0 = QStringLiteral("X");
    core->addExpression(QStringLiteral("M0"));
    return core;
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

} // namespace

QProcessEnvironment layWideCapture(QString const& folder, int cores, QByteArray const& more)
{
    QList<SxCore*> list;
    for (int index = 0; index < cores; ++index)
        list << wideCore(index);
    writeVEKConfigToXml(list, folder + QStringLiteral("/core.vek"));
    qDeleteAll(list);
    QFile file(folder + QStringLiteral("/bench.json"));
    file.open(QIODevice::WriteOnly);
    file.write(R"({"device": "TK-501", "design": "core.vek",
                   "stimulus": {"pattern": "lfsr", "samples": 70000})" +
               more + '}');
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), folder); // a socket of its own
    environment.insert(QStringLiteral("VEK_BENCH"), file.fileName());
    return environment;
}

void moveFrames()
{
    int const sections = WideSamples / SectionSamples;
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
    reply.insert(Protocol::Key::Data, QBitArray((WideSignals + 1) * SectionSamples + 33));
    QByteArray request = frameFromPack(write) + frameFromPack(read);
    QByteArray answer = frameFromPack(reply);
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

} // namespace bench
