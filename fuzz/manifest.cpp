// What vek report takes from a manifest, of any file.

#include "fuzz/input.h"

#include "cli/reportfacts.h"

using namespace VEK::Cli;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const bytes(reinterpret_cast<char const*>(data), int(size));
    try {
        ManifestRun const facts = manifestRun(bytes, QStringLiteral("name"));
        bool const isPassed = facts.run.outcome == Outcome::Passed;
        if (isPassed && !facts.run.message.isEmpty())
            qFatal("a run that passed tells why it did not");
        if (facts.run.outcome != Outcome::Unfinished && facts.run.duration < 0)
            qFatal("a run that ended took no time");
        printable(facts.run.label);
        lastComparisons(facts.root);
    } catch (BadManifest const& bad) {
        if (bad.reason.isEmpty())
            qFatal("a broken manifest without a reason");
    } catch (OtherDocument const&) {
    }
    return 0;
}
