#include "cli/command.h"
#include "cli/configuration.h"
#include "cli/coreoptions.h"
#include "cli/dialogue.h"
#include "cli/dryrun.h"
#include "cli/exitstatus.h"
#include "cli/imageprinter.h"
#include "jtag/frame.h"

#include <memory>

namespace VEK::Cli {
namespace {

constexpr int LengthBytes = 4; ///< In front of a frame's body.

struct Words
{
    std::string configuration;
    std::string device;
    CoreWords core;
    bool frames = false;
    bool json = false;
};

int image(Words const& words)
{
    Capture capture;
    openConfiguration(textOf(words.configuration), capture);
    QList<int> const places = placesOf(capture, coresOf(words.core));
    for (QString const& note : apply(overridesOf(words.core), capture, places))
        printWarning(note);
    for (QString const& warning : checkCores(capture, places))
        printWarning(warning);
    CaptureSettings settings;
    settings.device = textOf(words.device);
    settings.places = places;
    auto const printer = makeImagePrinter(words.json, words.frames);
    printer->begin(capture, places);
    Dialogue dialogue(capture.cores());
    ImageTotals totals;
    runDry(capture, settings, [&](QByteArray const& frame) {
        CmdPack request;
        packFromBody(frame.mid(LengthBytes), request);
        ImageRow const row = dialogue.take(request, frame);
        totals.add(row);
        printer->row(row);
    });
    printer->end(totals);
    if (!printer->isWritten())
        throw Failure{Status::Output, QStringLiteral("standard output can't be written")};
    return int(Status::Done);
}

} // namespace

void addImageCommand(CLI::App& program, Command& chosen)
{
    CLI::App* const command = program.add_subcommand(
        "image", "Print what a run would send to the chip, word by word, without one");
    auto const words = std::make_shared<Words>();
    command->add_option("configuration", words->configuration, "Configuration, .vek or .rsx")
        ->required()
        ->type_name("FILE");
    addCoreOptions(*command, words->core);
    command->add_option("--device", words->device, "Model of the device")
        ->envname("VEK_DEVICE")
        ->type_name("MODEL");
    command->add_flag("--frames", words->frames, "With the bytes of the protocol, hexadecimal");
    command->add_flag("--json", words->json, "Print one JSON object");
    command->callback([&chosen, words] { chosen = [words] { return image(*words); }; });
}

} // namespace VEK::Cli
