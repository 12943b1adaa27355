// A session, read and written again; what comes out has to be read as the same.

#include "fuzz/input.h"

#include "cli/capturefile.h"
#include "cli/exitstatus.h"
#include "results/sessionfile.h"
#include "results/windowbuilder.h"

#include <QFile>

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const path = scratchPath(QStringLiteral("in.rsx"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(FuzzInput(data, size).bytes) < 0)
        qFatal("no file");
    file.close();
    try {
        Cli::CaptureFile const capture = Cli::readCaptureFile(path, {});
        for (Cli::CoreCapture const& core : capture.cores) {
            CapturedWindow const& window = core.windows.first();
            QDomDocument document;
            QList<SessionWindow> const windows{
                {core.place,
                 windowElement(document, window.trigger.value_or(0), window.layout,
                               namedSignals(flatSignals(window.layout), window.samples))}};
            QString error;
            QString const out = scratchPath(QStringLiteral("out.rsx"));
            if (writeSession(out, capture.configuration, windows, QString(), error) &&
                Cli::readCaptureFile(out, {}).cores.first().windows.first().samples !=
                    window.samples)
                qFatal("read otherwise than written");
        }
    } catch (Cli::Failure const& failure) {
        if (failure.message.isEmpty())
            qFatal("refused without a reason");
    }
    return 0;
}
