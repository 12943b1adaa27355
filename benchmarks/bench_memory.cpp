#include "benchmarks/comparison.h"
#include "benchmarks/samples.h"
#include "results/csvexport.h"
#include "results/prnexport.h"
#include "results/vcdexport.h"

#include <QFile>

#include <cstring>
#include <functional>
#include <malloc.h>

namespace {

constexpr int Rows = 1000000;
constexpr int SignalCount = 32;
constexpr double MiB = 1024 * 1024;

/// A line of the process's own account, in MiB.
double memory(char const* what)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (QByteArray const& line : file.readAll().split('\n')) {
        if (line.startsWith(what))
            return line.mid(int(std::strlen(what))).trimmed().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

/// From here on the peak counts anew.
void forgetPeak()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

std::string text(double mib)
{
    return std::to_string(int(mib + 0.5)) + " MiB";
}

} // namespace

/// The peak of each export beside what it may take: the document that stands in memory anyway, one
/// copy of its text, and 64 MiB.
int main(int argc, char** argv)
{
    if (argc < 2 || std::strcmp(argv[1], "--rows") != 0)
        bench::printHead();
    bench::WindowInMemory const window =
        bench::windowOf(bench::togglingSamples(SignalCount, Rows), 0);
    QDomElement const& element = window.element;
    QString const unit = QStringLiteral("us");
    QString const path = bench::memoryFile(QStringLiteral("vekbench-memory"));
    struct Export
    {
        char const* name;
        std::function<bool()> write;
    };
    Export const exports[] = {
        {"exportCSV", [&] { return VEK::exportCSV(path, unit, 1, element); }},
        {"exportPRN", [&] { return VEK::exportPRN(path, unit, 1, element, VEK::PrnAllColumns); }},
        {"exportVCD",
         [&] { return VEK::exportVCD(path, unit, unit, true, unit, 10, -1, element); }}};
    double const textSize = double(Rows) * SignalCount * sizeof(QChar) / MiB;
    for (Export const& one : exports) {
        forgetPeak();
        double const allowed = memory("VmRSS:") + textSize + 64;
        if (!one.write())
            return 1;
        double const peak = memory("VmHWM:");
        bench::printRow(std::string(one.name) + " 1,000,000 x 32, peak memory", text(peak),
                        text(allowed), peak / allowed, 1, peak > 0 && peak <= allowed);
    }
    QFile::remove(path);
    return 0;
}
