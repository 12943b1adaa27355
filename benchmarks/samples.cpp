#include "benchmarks/samples.h"

#include "results/windowbuilder.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

namespace bench {

Samples togglingSamples(int signalCount, int rows)
{
    QRandomGenerator random(20);
    Samples samples{rows, {}};
    std::size_t const words = std::size_t(rows + 63) / 64;
    for (int i = 0; i < signalCount; ++i) {
        std::vector<quint64> column(words);
        quint64 level = 0;
        for (quint64& word : column) {
            quint64 const toggles = random.generate64() & random.generate64() & random.generate64();
            for (int k = 0; k < 64; ++k) {
                level ^= toggles >> k & 1;
                word |= level << k;
            }
        }
        if (rows % 64)
            column.back() &= (quint64(1) << (rows % 64)) - 1;
        samples.columns.push_back(std::move(column));
    }
    return samples;
}

WindowInMemory windowOf(Samples const& samples, int busWidth)
{
    QList<VEK::SignalItem> layout;
    QList<QBitArray> arrays;
    int const signalCount = int(samples.columns.size());
    for (int i = 0; i < signalCount; ++i) {
        VEK::SignalItem item;
        item.name = QStringLiteral("top/data[%1]").arg(i);
        auto const* const bytes =
            reinterpret_cast<char const*>(samples.columns[std::size_t(i)].data());
        arrays.append(QBitArray::fromBits(bytes, samples.rows));
        if (busWidth && i % busWidth == 0) {
            VEK::SignalItem bus;
            bus.name = QStringLiteral("bus%1").arg(i / busWidth);
            layout.append(bus);
        }
        if (busWidth)
            layout.last().signalList.append(item);
        else
            layout.append(item);
    }
    WindowInMemory window;
    window.element = VEK::windowElement(window.document, 0, layout,
                                        VEK::namedSignals(VEK::flatSignals(layout), arrays));
    return window;
}

QString memoryFile(QString const& name)
{
    QString const folder = QStringLiteral("/dev/shm");
    return QDir(QFileInfo(folder).isWritable() ? folder : QDir::tempPath()).filePath(name);
}

} // namespace bench
