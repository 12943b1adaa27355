// The kind of a configuration file.

#include "fuzz/input.h"

#include "model/vekfile.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    VekMode const mode = vekModeFromVekConfigFile(FuzzInput(data, size).path());
    if (mode != VekModeStandard && mode != VekModeLite && mode != VekModeUnknown)
        qFatal("no mode: %d", int(mode));
    return 0;
}
