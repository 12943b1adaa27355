// Frames off a socket. The first byte says how the rest is cut: pieces of that many bytes, or all
// at once for 0. However a stream is cut, the same messages come out of it.

#include "fuzz/input.h"

#include "jtag/frame.h"

#include <QBuffer>

using namespace VEK;

namespace {

/// What a stream gives: messages, and nulls for frames that hold none.
QList<CmdPack> received(QByteArray const& stream, int piece)
{
    QList<CmdPack> packs;
    QByteArray bytes;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    quint32 blockSize = 0;
    for (int at = 0; at < stream.size(); at += piece) {
        bytes += stream.mid(at, piece);
        for (bool more = true; more;) {
            CmdPack pack;
            FrameState const state = takeFrame(device, blockSize, pack);
            more = state != FrameState::Incomplete;
            if (more)
                packs.append(state == FrameState::Complete ? pack : CmdPack());
        }
    }
    return packs;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const input = FuzzInput(data, size).bytes;
    if (input.isEmpty())
        return 0;
    QByteArray const stream = input.mid(1);
    QList<CmdPack> const whole = received(stream, qMax(1, stream.size()));
    int const piece = static_cast<unsigned char>(input.at(0));
    if (piece && received(stream, piece).size() != whole.size())
        qFatal("pieces of %d bytes give other frames", piece);
    for (CmdPack const& pack : whole) {
        CmdPack again;
        if (!packFromBody(frameFromPack(pack).mid(4), again) || again.keys() != pack.keys())
            qFatal("a message that was received can't be sent");
    }
    return 0;
}
