#pragma once

#include "dump/sampletable.h"
#include "simulator/bitfield.h"
#include "simulator/chip.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace VEK::Simulator {

/// One lite core as it was built into the design.
struct BuiltLiteCore
{
    int amount = 1;           ///< A: samples of a capture; fixed in the design.
    bool isRotated = false;   ///< Sample k stands one address further, the last one at 0.
    bool captureInit = false; ///< Has captured once when power is there.
    QString sampleClock;
    QStringList signalNames; ///< What is captured; the number of them is the width of everything.
};

/// Reads the lite core of a design from its `.vek` file; false with an `error` for a file that does
/// not hold exactly one that can have been built. `device` decides whether it is rotated.
bool readLiteDesign(QString const& path, QString const& device, BuiltLiteCore& core,
                    QString& error);

/// A chip with one lite core. It captures from the sample after its arming on, without a trigger,
/// and there is nothing to select.
class LiteChip : public Chip
{
public:
    /// `samples` has at least one row, of the core's signals.
    LiteChip(BuiltLiteCore core, Dump::SampleTable samples);

    void powerUp() override;
    void write(QBitArray const& word) override;
    QBitArray read(int size) override;

private:
    int width() const { return m_core.signalNames.size(); }
    void capture();
    QBitArray burst(int size);
    void putRecord(BitWriter& writer, qint64 address);

    BuiltLiteCore m_core;
    Dump::SampleTable m_samples;
    qint64 m_next = 0;   ///< Stimulus row of the next sample.
    qint64 m_first = -1; ///< Stimulus row of sample 0; -1: nothing was captured.
    bool m_initFlag = true;
    std::vector<bool> m_isRead; ///< Rows of the initial capture that were read.
    qint64 m_unread = 0;
    unsigned m_address = 0;
    bool m_isBurst = false;
};

} // namespace VEK::Simulator
