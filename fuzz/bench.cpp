// The bench file of the simulated chip.

#include "fuzz/input.h"

#include "simulator/bench.h"

using namespace VEK::Simulator;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Bench bench;
    QString error;
    bool const ok = parseBench(FuzzInput(data, size).bytes, QStringLiteral("/"), bench, error);
    if (ok != error.isEmpty())
        qFatal("a result without a reason, or a reason without one");
    return 0;
}
