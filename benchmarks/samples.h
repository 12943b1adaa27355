#pragma once

#include <QDomDocument>
#include <QString>

#include <vector>

namespace bench {

/// The samples of a window, packed: one list a signal, the first sample in the lowest bit.
struct Samples
{
    int rows;
    std::vector<std::vector<quint64>> columns;
};

/// Signals that change from one sample to the next in one of eight cases. From a fixed seed.
Samples togglingSamples(int signalCount, int rows);

/// A window as it stands in memory before an export.
struct WindowInMemory
{
    QDomDocument document;
    QDomElement element;
};

/// The window of those samples. With `busWidth` all signals are grouped into buses of that width;
/// with 0 none is.
WindowInMemory windowOf(Samples const& samples, int busWidth);

/// A path in memory, if the machine has such a folder.
QString memoryFile(QString const& name);

} // namespace bench
