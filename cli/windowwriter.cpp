#include "cli/windowwriter.h"

#include "results/csvexport.h"
#include "results/plainexport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"
#include "results/windowbuilder.h"

#include <QIODevice>
#include <QStringList>

namespace VEK::Cli {
namespace {

FileWriter plainWriter(QString const& ending, WindowFacts const& facts, SampleClock const& clock)
{
    PlainWindow const window =
        plainWindow(facts.module, facts.trigger, facts.layout, facts.samples);
    if (ending == QLatin1String("csv"))
        return [=](QIODevice& device) { return exportPlainCsv(device, window, clock); };
    if (ending == QLatin1String("vcd"))
        return [=](QIODevice& device) { return exportPlainVcd(device, window, clock); };
    if (ending == QLatin1String("raw"))
        return [=](QIODevice& device) { return exportPlainRaw(device, window); };
    QByteArray const channels = rawChannels(window);
    return [=](QIODevice& device) { return device.write(channels) == channels.size(); };
}

/// An odd step hides the sample clock in a dump: it becomes a thousand of the next unit.
void makeEven(QString& unit, quint64& step)
{
    static QStringList const units{QStringLiteral("s"),  QStringLiteral("ms"),
                                   QStringLiteral("us"), QStringLiteral("ns"),
                                   QStringLiteral("ps"), QStringLiteral("fs")};
    int const place = units.indexOf(unit);
    if (step % 2 == 0 || place < 0 || place + 1 == units.size())
        return;
    unit = units.at(place + 1);
    step *= 1000;
}

} // namespace

FileWriter windowWriter(QString const& ending, WindowFacts const& window, bool plain,
                        SampleClock const& clock)
{
    bool const isTable = ending == QLatin1String("csv") || ending == QLatin1String("prn");
    bool const hasProfiles = ending == QLatin1String("csv") || ending == QLatin1String("vcd");
    if ((plain && hasProfiles) || (!isTable && !hasProfiles))
        return plainWriter(ending, window, clock);
    QDomDocument document;
    QDomElement const element =
        windowElement(document, window.trigger, window.layout, window.samples);
    QString unit = window.timeUnit;
    int const step = window.timeStep;
    if (ending == QLatin1String("csv"))
        return [=](QIODevice& device) { return exportCSV(device, unit, step, element); };
    if (ending == QLatin1String("prn"))
        return [=](QIODevice& device) {
            return exportPRN(device, unit, unsigned(step), element, PrnAllColumns);
        };
    quint64 evenStep = quint64(step);
    makeEven(unit, evenStep);
    return [=, module = window.module, sampleClock = window.clock,
            trigger = window.trigger](QIODevice& device) {
        return exportVCD(device, module, sampleClock, true, unit, evenStep, trigger, element);
    };
}

QStringList endingsOf(QString const& format)
{
    if (format == QLatin1String("raw")) // with the names of what stands in it
        return {format, QStringLiteral("channels")};
    return {format};
}

} // namespace VEK::Cli
