#include "simulator/standardcore.h"

#include "image/registermap.h"
#include "jtag/protocol.h"
#include "model/capturecore.h"
#include "simulator/chainword.h"
#include "simulator/log.h"

#include <algorithm>

namespace VEK::Simulator {
namespace {

constexpr int CountBits = 16;

/// Registers lie below this address, tables above.
constexpr unsigned RegisterEnd =
    Register::MatchUnitBase + BuiltCore::Units * Register::MatchUnitStep;

/// More windows than addresses can't be told apart.
constexpr quint64 MaxWindows = 0x10000;

/// What stands in front of and behind the records of a burst: a host that takes them for samples
/// is caught. The same goes for the filler in front of a record, which is ones.
constexpr quint32 BurstHead = 0xA5A5A5A5;

} // namespace

StandardCore::StandardCore(BuiltCore const& built, Dump::SampleTable const& samples,
                           bool takesOneMore)
    : m_built(built), m_samples(samples), m_takesOneMore(takesOneMore), m_memory(1)
{}

void StandardCore::powerUp()
{
    m_capture.reset();
    m_registers.clear();
    m_tables.clear();
    m_usedUnits = 0;
    m_memory = SampleMemory(m_built.storageDepth);
    m_stimulus = Stimulus{&m_samples, 0};
    m_isRunning = false;
    m_initFlag = m_built.hasCaptureInit;
    m_address = 0;
    m_isBurst = false;
}

void StandardCore::write(QBitArray const& word)
{
    ChainWord const head(word);
    int const width = m_built.shiftWidth;
    if (head.is(Opcode::Select, 0)) {
        m_address = head.address;
        m_isBurst = false;
    } else if (head.is(Opcode::Burst, CountBits)) {
        m_address = head.address;
        m_isBurst = true;
        m_burstCount = unsigned(fieldNumber(word, word.size() - CountBits, CountBits));
    } else if (head.is(Opcode::Write, width)) {
        QBitArray field(width);
        for (int i = 0; i < width; ++i)
            field.setBit(i, word.testBit(word.size() - width + i));
        writeRegister(head.address, field);
    } else {
        qCDebug(lcSimulator) << "core" << m_built.index << "drops the word" << word;
    }
}

void StandardCore::writeRegister(unsigned address, QBitArray const& field)
{
    if (address >= Register::ExpressionTable) {
        unsigned const table =
            (address - Register::ExpressionTable) / Register::ExpressionTableStep;
        m_tables[table].set(registerNumber(field) & 0xFFFF, address & 1);
        return;
    }
    if (address >= RegisterEnd) {
        qCDebug(lcSimulator) << "core" << m_built.index << "has no register" << address;
        return;
    }
    m_registers.insert(address, field);
    if (address == Register::Start) {
        writeStart(registerNumber(field));
    } else if (address == Register::ExpressionCount) {
        m_usedUnits = 0; // a new image begins
    } else if (address >= Register::MatchUnitBase) {
        unsigned const unit = (address - Register::MatchUnitBase) / Register::MatchUnitStep;
        unsigned const offset = (address - Register::MatchUnitBase) % Register::MatchUnitStep;
        if (offset == Register::MatchUnitControl)
            m_usedUnits |= 1u << unit;
    }
}

void StandardCore::writeStart(quint32 value)
{
    m_initFlag = false;
    switch (value) {
    case StartValue::Stop:
        m_isRunning = false;
        break;
    case StartValue::Arm:
        arm();
        m_isRunning = !m_capture->run(false);
        break;
    case StartValue::Force:
        if (!m_isRunning)
            arm();
        m_isRunning = !m_capture->run(true);
        break;
    default:
        qCDebug(lcSimulator) << "core" << m_built.index << "ignores the start value" << value;
    }
}

void StandardCore::arm()
{
    m_capture = std::make_unique<Capture>(captureSetup(), trigger(), m_stimulus, m_memory);
}

TriggerLogic StandardCore::trigger() const
{
    TriggerSetup trigger;
    trigger.field = [this](unsigned address) { return field(address); };
    trigger.usedUnits = m_usedUnits;
    trigger.tables = &m_tables;
    trigger.stages = quint64(number(Register::ExpressionCount)) + 1;
    return TriggerLogic(m_built, trigger);
}

CaptureSetup StandardCore::captureSetup() const
{
    int const fieldBits = std::min(m_built.shiftWidth, 32);
    quint64 const fieldMask = (quint64(1) << fieldBits) - 1;
    qint64 const ring = qint64(number(Register::CaptureAmount)) + 1;
    qint64 const room = ring - 1 - (m_built.isDynamic ? 1 : 0);
    // The host counts the records behind the mark two lower, in the width of the register.
    quint64 const sent = number(Register::AfterTrigger);
    qint64 after = qint64((sent + 2 + (m_takesOneMore ? 1 : 0)) & fieldMask);
    if (after > room)
        after = 0;

    CaptureSetup setup;
    setup.ring = quint64(ring);
    setup.after = quint64(after);
    setup.lead = quint64(std::max<qint64>(room - after, 0));
    setup.windows = quint32(std::min(quint64(number(Register::WindowCount)) + 1, MaxWindows));
    setup.share = setup.windows > quint32(m_built.storageDepth)
                      ? 0
                      : quint32(m_built.storageDepth) / fixedWindowNum(setup.windows);
    setup.holdsOff = m_built.hasCaptureInit;
    setup.answersLate = m_built.isDynamic;
    return setup;
}

quint32 StandardCore::number(unsigned address) const
{
    return registerNumber(field(address));
}

QBitArray StandardCore::field(unsigned address) const
{
    auto const it = m_registers.constFind(address);
    return it == m_registers.constEnd() ? QBitArray(m_built.shiftWidth) : it.value();
}

QBitArray StandardCore::read(int size) const
{
    if (m_isBurst)
        return burst(size);
    QBitArray const content = registerContent();
    QBitArray bits(size);
    for (int i = 1; i <= std::min(size, content.size()); ++i)
        bits.setBit(size - i, content.testBit(content.size() - i));
    return bits;
}

QString StandardCore::reason() const
{
    if (!m_isRunning) // otherwise a capture has run to the end of the stimulus
        return QString();
    return QStringLiteral("core %1: the stimulus has ended, after %2 samples, without a trigger "
                          "(windows that have triggered: %3 of %4)")
        .arg(m_built.index)
        .arg(m_samples.rowCount())
        .arg(m_capture->windowsDone())
        .arg(m_capture->windows());
}

QBitArray StandardCore::registerContent() const
{
    if (m_address == Register::Start)
        return numberField(m_isRunning, m_built.shiftWidth);
    if (m_address == Register::CaptureInit)
        return numberField(m_initFlag, m_built.shiftWidth);
    return field(m_address);
}

/// A head, the records from the highest address down, one tail bit.
QBitArray StandardCore::burst(int size) const
{
    QBitArray bits(size);
    if (size < Protocol::RamTailBits)
        return bits;
    qint64 const width = m_built.shiftWidth;
    qint64 const room = size - Protocol::RamTailBits;
    // those that have no room, not even in part, are not looked at
    qint64 const records = std::min<qint64>(m_burstCount, (room + width - 1) / width);
    BitWriter writer(bits, room - records * width - Protocol::RamHeadBits);
    writer.put(quint64(BurstHead) << 32, Protocol::RamHeadBits);
    for (qint64 i = records; i-- > 0;)
        putRecord(writer, quint64(m_address + i));
    writer.fill(true, Protocol::RamTailBits);
    return bits;
}

/// Filler, mark and signals of one record.
void StandardCore::putRecord(BitWriter& writer, quint64 address) const
{
    SampleMemory::Record const record = m_memory.record(address);
    writer.fill(true, m_built.shiftWidth - m_built.dataCount - 1);
    writer.fill(record.mark, 1);
    if (record.row >= 0)
        writer.putRow(m_samples.row(record.row), m_built.dataCount);
    else
        writer.fill(false, m_built.dataCount);
}

} // namespace VEK::Simulator
