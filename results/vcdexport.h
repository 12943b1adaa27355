#pragma once

#include <QByteArray>
#include <QDomElement>
#include <QString>

class QIODevice;

namespace VEK {

class OutputBuffer;

namespace VCD {

/// A block of a VCD header: the line "$" and the name at its start, the line "$end" at its end.
class Tag
{
public:
    Tag(OutputBuffer& out, QByteArray const& name);
    ~Tag();

private:
    Q_DISABLE_COPY(Tag)

    OutputBuffer& m_out;
};

/// Identifier code of value `n`: base 94 in the printable characters from "!" on, one digit below
/// 94, else two, the more significant first. From 94 * 94 on the first runs past the printable
/// ones.
QString vcdIDForSignalAtIndex(int n);

} // namespace VCD

/// Writes one `Window` element as a value change dump in UTF-8: a clock that stands in for the
/// sample clock, and every signal as a variable of one bit. Sample i changes half a step before
/// time (i + 1) * `timeStep`, together with the clock's edge away from `clockLevel`; `triggerIndex`
/// gets a comment. The device must be open for writing. False once it has refused bytes, as on a
/// full disk; it holds what went before.
bool exportVCD(QIODevice& device, QString const& moduleName, QString const& clockName,
               bool clockLevel, QString const& timeUnit, unsigned long long timeStep,
               int triggerIndex, QDomElement const& window);

/// The same into a file. False only if it could not be opened; what happens to it later is not
/// reported.
bool exportVCD(QString const& path, QString const& moduleName, QString const& clockName,
               bool clockLevel, QString const& timeUnit, unsigned long long timeStep,
               int triggerIndex, QDomElement const& window);

} // namespace VEK
