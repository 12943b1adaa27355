#include "simulator/benchstimulus.h"

namespace VEK::Simulator {
namespace {

/// The name that the dump has for a name of the design: mapped whole, or the part in front of its
/// index, or the same within the scope.
QString dumpName(Bench const& bench, QString const& name)
{
    auto const whole = bench.names.constFind(name);
    if (whole != bench.names.constEnd())
        return whole.value();
    int const bracket = name.lastIndexOf(QLatin1Char('['));
    if (bracket > 0) {
        auto const vector = bench.names.constFind(name.left(bracket).trimmed());
        if (vector != bench.names.constEnd())
            return vector.value() + name.mid(bracket);
    }
    return bench.scope.isEmpty() ? name : bench.scope + QLatin1Char('.') + name;
}

bool samplePatterns(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::SampledStimulus& stimulus, QString& error)
{
    qint64 bytes = 0;
    for (WatchedCore const& core : cores)
        bytes += bench.pattern.samples * Dump::SampleTable::wordsFor(core.signalNames.size()) * 8;
    if (bytes > Dump::MaxTableBytes) {
        error = QStringLiteral("the pattern takes more than %1 bytes").arg(Dump::MaxTableBytes);
        return false;
    }
    for (WatchedCore const& core : cores)
        stimulus.tables.push_back(samplePattern(bench.pattern, core.signalNames.size()));
    return true;
}

bool streamPatterns(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::RowSink const& take)
{
    bool goesOn = true;
    for (std::size_t i = 0; i < cores.size() && goesOn; ++i)
        streamPattern(bench.pattern, cores[i].signalNames.size(),
                      [&](quint64 const* row) { return goesOn = take(int(i), row); });
    return goesOn;
}

/// What the cores ask of the bench's dump.
bool makeRequests(Bench const& bench, std::vector<WatchedCore> const& cores,
                  std::vector<Dump::SampleRequest>& requests, QString& error)
{
    for (WatchedCore const& core : cores) {
        Dump::SampleRequest request;
        for (QString const& name : core.signalNames)
            request.signalNames.append(dumpName(bench, name));
        request.clock = bench.clock.isEmpty() ? dumpName(bench, core.sampleClock) : bench.clock;
        if (bench.clock.isEmpty() && core.sampleClock.isEmpty()) {
            error = QStringLiteral("a core has no sample clock, nor has the bench");
            return false;
        }
        requests.push_back(request);
    }
    return true;
}

} // namespace

bool sampleStimulus(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::SampledStimulus& stimulus, QString& error)
{
    if (bench.vcd.isEmpty())
        return samplePatterns(bench, cores, stimulus, error);
    std::vector<Dump::SampleRequest> requests;
    return makeRequests(bench, cores, requests, error) &&
           Dump::sampleVcdFile(bench.vcd, requests, stimulus, error);
}

bool streamStimulus(Bench const& bench, std::vector<WatchedCore> const& cores,
                    Dump::RowSink const& take, QString& warning, QString& error)
{
    if (bench.vcd.isEmpty())
        return streamPatterns(bench, cores, take);
    std::vector<Dump::SampleRequest> requests;
    return makeRequests(bench, cores, requests, error) &&
           Dump::streamVcdFile(bench.vcd, requests, take, warning, error);
}

} // namespace VEK::Simulator
