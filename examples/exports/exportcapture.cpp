// Turns a captured window into a VCD or PRN file, as a host application would:
//
//     export_capture capture.csv capture.vcd 64    a file that veksh left, and its trigger sample
//     export_capture results.rsx capture.prn       the first Window element of a results file
//
// The row at time t of the CSV file is the clock's rising edge at t microseconds of the VCD file.
// The exit status is 0 when all of it was written.

#include "results/prnexport.h"
#include "results/vcdexport.h"
#include "results/wholefile.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"
#include "support/csvwindow.h"

#include <QFile>

#include <cstdio>

using namespace VEK;

namespace {

QDomElement windowFromResults(QString const& path, QDomDocument& document)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return {};
    return document.elementsByTagName(DOM_TAG_WINDOW).at(0).toElement();
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc < 3)
        return std::fputs("usage: export_capture CSV|RSX VCD|PRN [TRIGGER]\n", stderr), 2;
    QString const source = QString::fromLocal8Bit(argv[1]);
    QString const target = QString::fromLocal8Bit(argv[2]);
    int const given = argc > 3 ? QByteArray(argv[3]).toInt() : -1;
    QDomDocument document;
    QDomElement const window = source.endsWith(QLatin1String(".csv"))
                                   ? windowFromCsv(source, given, document)
                                   : windowFromResults(source, document);
    if (window.isNull())
        return std::fprintf(stderr, "export_capture: no capture in %s\n", argv[1]), 1;

    int const trigger = elementText(window.firstChildElement(DOM_TAG_TRIGGER_POSITION)).toInt();
    auto const write = [&](QIODevice& file) {
        if (!target.endsWith(QLatin1String(".vcd")))
            return exportPRN(file, QStringLiteral("us"), 1, window, PrnAllColumns);
        return exportVCD(file, QStringLiteral("capture"), QStringLiteral("sample_clock"), true,
                         QStringLiteral("ns"), 1000, trigger, window);
    };
    QString error;
    if (writeWholeFile(target, write, error))
        return 0;
    std::fprintf(stderr, "export_capture: can't write %s: %s\n", argv[2], qPrintable(error));
    return 1;
}
