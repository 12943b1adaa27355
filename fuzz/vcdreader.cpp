// A stimulus dump, sampled. The names are those of the corpus.

#include "fuzz/input.h"

#include "dump/vcdsampler.h"

#include <QBuffer>

using namespace VEK::Dump;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray bytes = FuzzInput(data, size).bytes;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    SampleRequest request;
    request.signalNames =
        QStringList{QStringLiteral("a"), QStringLiteral("d[1]"), QStringLiteral("d[0]")};
    request.clock = QStringLiteral("clk");
    SampledStimulus stimulus;
    QString error;
    if (!sampleVcd(device, {request}, stimulus, error) && error.isEmpty())
        qFatal("refused without a reason");
    return 0;
}
