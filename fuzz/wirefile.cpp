// A recording of the wire, replayed. The first byte says what the rest is: 0 a whole file, anything
// else the records in it, which are given blocks whose checks are right. Each request of a
// recording that can be replayed is found in it again.

#include "fuzz/input.h"

#include "jtag/frame.h"
#include "simulator/wirereplay.h"

#include <QBuffer>

using namespace VEK;

namespace {

QByteArray fileOf(QByteArray const& records)
{
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    WireBlockWriter writer(file);
    if (!writer.begin("vekwire 1\n\n") || !writer.append(records) || !writer.finish())
        qFatal("a buffer takes no file");
    return file.data();
}

/// Asks for everything once more.
void askAgain(QBuffer& file, Simulator::WireReplay& replay)
{
    file.seek(0);
    WireReader reader(file);
    WireHeader header;
    WireFrame frame;
    for (auto state = reader.begin(header); state == WireReader::State::Ok;) {
        state = reader.next(frame);
        CmdPack request, reply;
        if (state != WireReader::State::Ok || frame.event != WireEvent::Request)
            continue;
        if (!packFromBody(frame.bytes.mid(4), request))
            qFatal("a request without a message is replayed");
        if (replay.serve(request, reply) && reply.value(Protocol::Key::RequestId).toUInt() !=
                                                request.value(Protocol::Key::RequestId).toUInt())
            qFatal("a reply to another request");
    }
    if (replay.unrecorded() > 0)
        qFatal("a recorded request was never recorded");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const input = FuzzInput(data, size).bytes;
    if (input.isEmpty())
        return 0;
    QBuffer file;
    file.setData(input.at(0) ? fileOf(input.mid(1)) : input.mid(1));
    file.open(QIODevice::ReadOnly);
    Simulator::WireReplay replay;
    QString error;
    bool const ok = replay.load(file, true, error);
    if (ok != error.isEmpty())
        qFatal("a result without a reason, or a reason without one");
    if (ok)
        askAgain(file, replay);
    return 0;
}
