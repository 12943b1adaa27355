// An exported CSV file, read back.

#include "fuzz/input.h"

#include "results/csvimport.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QList<SignalItem> items;
    QList<QBitArray> columns;
    if (!readCsv(FuzzInput(data, size).path(), items, columns) &&
        (!items.isEmpty() || !columns.isEmpty()))
        qFatal("a refused file gave something");
    return 0;
}
