// A dump of ours or of a simulator, made into a session, which has to be read as the same.

#include "fuzz/input.h"

#include "cli/capturefile.h"
#include "cli/exitstatus.h"
#include "cli/knowncores.h"
#include "results/sessionfile.h"
#include "results/windowbuilder.h"

#include <QFile>

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const path = scratchPath(QStringLiteral("in.vcd"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(FuzzInput(data, size).bytes) < 0)
        qFatal("no file");
    file.close();
    Cli::CaptureHints hints;
    hints.clock = QStringLiteral("clk");
    try {
        Cli::CoreCapture const core = Cli::readCaptureFile(path, hints).cores.first();
        CapturedWindow const& window = core.windows.first();
        QDomDocument document;
        QList<SessionWindow> const windows{
            {0, windowElement(document, 0, window.layout,
                              namedSignals(flatSignals(window.layout), window.samples))}};
        QString error;
        QString const out = scratchPath(QStringLiteral("out.rsx"));
        QByteArray const made = Cli::KnownCores::made(core.module, core.clock, core.windows).text();
        if (window.length() < 4096 && writeSession(out, made, windows, QString(), error) &&
            Cli::readCaptureFile(out, {}).cores.first().windows.first().samples != window.samples)
            qFatal("read otherwise than written");
    } catch (Cli::Failure const& failure) {
        if (failure.message.isEmpty())
            qFatal("refused without a reason");
    }
    return 0;
}
