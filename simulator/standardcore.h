#pragma once

#include "simulator/bitfield.h"
#include "simulator/capture.h"

#include <QHash>

#include <memory>

namespace VEK::Simulator {

/// One standard core: its registers, tables and sample memory behind the words of the chain.
class StandardCore
{
public:
    /// The references must outlive this object. `takesOneMore`: the device takes one record more
    /// than its register says.
    StandardCore(BuiltCore const& built, Dump::SampleTable const& samples, bool takesOneMore);

    void powerUp();
    /// An opcode, an address and what the opcode needs; words of a wrong length are dropped.
    void write(QBitArray const& word);
    /// `size` bits of the register or of the burst that was selected last, right-justified.
    QBitArray read(int size) const;
    /// That the stimulus has ended without a trigger; empty while nobody waits for one.
    QString reason() const;

    BuiltCore const& built() const { return m_built; }
    /// The capture and the trigger as the registers set them up now. The trigger must not outlive
    /// this object, nor a further write.
    CaptureSetup captureSetup() const;
    TriggerLogic trigger() const;

private:
    void writeRegister(unsigned address, QBitArray const& field);
    void writeStart(quint32 value);
    void arm();
    quint32 number(unsigned address) const;
    QBitArray field(unsigned address) const;
    QBitArray registerContent() const;
    QBitArray burst(int size) const;
    void putRecord(BitWriter& writer, quint64 address) const;

    BuiltCore const& m_built;
    Dump::SampleTable const& m_samples;
    bool m_takesOneMore;

    QHash<unsigned, QBitArray> m_registers; ///< What was written, by address.
    TableMap m_tables;
    unsigned m_usedUnits = 0;
    SampleMemory m_memory;
    Stimulus m_stimulus;
    std::unique_ptr<Capture> m_capture; ///< The last arming.
    bool m_isRunning = false;
    bool m_initFlag = false;
    unsigned m_address = 0; ///< The read pointer.
    bool m_isBurst = false;
    unsigned m_burstCount = 0;
};

} // namespace VEK::Simulator
