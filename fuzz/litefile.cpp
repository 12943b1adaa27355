// A Lite configuration file: read, written and read again.

#include "fuzz/input.h"

#include "model/litefile.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString id;
    QString error;
    bool ok = false;
    QList<SXCore_Lite*> const cores =
        readVEKConfigFromXml_Lite(FuzzInput(data, size).path(), id, &ok, &error);
    if (!ok && !cores.isEmpty())
        qFatal("a refused file gave cores");
    QString const written = scratchPath(QStringLiteral("written"));
    writeVEKConfigToXml_Lite(cores, written);
    QList<SXCore_Lite*> const again = readVEKConfigFromXml_Lite(written, id, &ok, &error);
    if (again.size() != cores.size())
        qFatal("%d cores were written, %d read: %s", cores.size(), again.size(), qPrintable(error));
    qDeleteAll(cores);
    qDeleteAll(again);
    return 0;
}
