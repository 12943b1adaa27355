// A Standard configuration file: read, programmed, written and read again.

#include "fuzz/input.h"

#include "image/registerimage.h"
#include "model/standardfile.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString id;
    QString error;
    bool ok = false;
    QList<SxCore*> const cores =
        readVEKConfigFromXml(FuzzInput(data, size).path(), id, &ok, &error);
    if (!ok && !cores.isEmpty())
        qFatal("a refused file gave cores");
    for (SxCore const* const core : cores)
        generateRegisterBit(core, QString(), FileKindVek);

    QString const written = writeVekConfigToString(cores);
    QList<SxCore*> const again = readVEKConfigFromString(written, id, &ok, &error);
    if (again.size() != cores.size())
        qFatal("%d cores were written, %d read: %s", cores.size(), again.size(), qPrintable(error));
    qDeleteAll(cores);
    qDeleteAll(again);
    return 0;
}
