// What readers put up with, of any file; and the trigger of each core as a text, there and back.

#include "fuzz/input.h"

#include "check/configurationcheck.h"
#include "model/standardfile.h"
#include "trigger/trigger.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const bytes(reinterpret_cast<char const*>(data), int(size));
    for (Finding const& finding : checkConfiguration(bytes))
        if (finding.message.isEmpty() || finding.line < 0)
            qFatal("a finding that says nothing");
    QString id;
    bool ok = false;
    QList<SxCore*> const cores =
        readVEKConfigFromString(QString::fromLatin1(bytes.constData()), id, &ok, nullptr);
    for (SxCore* const core : cores) {
        QString const text = triggerText(*core);
        triggerNotes(*core);
        CompiledTrigger const compiled = compileTrigger(text, *core);
        if (compiled.isOk())
            applyTrigger(compiled, *core);
        else
            triggerExcerpt(text, compiled.errors.first());
    }
    qDeleteAll(cores);
    return 0;
}
