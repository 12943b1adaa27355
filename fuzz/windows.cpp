// A Window element through its readers and every export. The first byte chooses what an export may
// be told: time step, clock level, trigger, columns.

#include "fuzz/input.h"

#include "model/vekfile.h"
#include "results/csvexport.h"
#include "results/csvimport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"
#include "results/windowreader.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const input = FuzzInput(data, size).bytes;
    if (input.isEmpty())
        return 0;
    int const choice = static_cast<unsigned char>(input.at(0));
    ParsedDocument const parsed = parseVekDocument(input.mid(1));
    if (!parsed.isOk())
        return 0;
    QDomElement const window = parsed.document.documentElement();
    baseSignalListFromDom(window);
    signalListFromDom(window);
    qDeleteAll(signalDataFromDom(window, choice & 1));
    int const buses = getBusNames(window).size();

    QString const out = scratchPath(QStringLiteral("out"));
    exportCSV(out, QStringLiteral("us"), choice & 3, window);
    QList<SignalItem> items;
    QList<QBitArray> columns;
    readCsv(out, items, columns);
    exportPRN(out, QStringLiteral("us"), 1, window, choice & 3);
    exportPRN(out, QStringLiteral("us"), 1, window, QList<int>{choice & 7, buses - 1});
    exportVCD(out, QStringLiteral("dut"), QStringLiteral("clk"), choice & 1, QStringLiteral("us"),
              quint64(choice & 12), choice - 64, window);
    return 0;
}
