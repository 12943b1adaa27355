// A golden table of any kind, read as a window. The first byte chooses the kind.

#include "fuzz/input.h"

#include "results/windowtables.h"

#include <QBuffer>

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const input = FuzzInput(data, size).bytes;
    if (input.isEmpty())
        return 0;
    QByteArray bytes = input.mid(1);
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    CapturedWindow window;
    QString error;
    bool ok = false;
    switch (input.at(0)) {
    case 'c':
        ok = readCsvWindow(device, window, error);
        break;
    case 'p':
        ok = readPlainCsvWindow(device, window, error);
        break;
    case 't':
        ok = readPrnWindow(device, window, error);
        break;
    default:
        ok = readRawWindow(device, "0=a,1=b,2=c,3=d,4=e,5=f,6=g,7=h,8=i", window, error);
    }
    if (ok == !error.isEmpty())
        qFatal("refused without a reason, or taken with one");
    if (ok && window.samples.size() != flatSignals(window.layout).size())
        qFatal("signals without samples");
    for (QBitArray const& bits : qAsConst(window.samples)) {
        if (ok && bits.size() != window.length())
            qFatal("signals of different lengths");
    }
    return 0;
}
