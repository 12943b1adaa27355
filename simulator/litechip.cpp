#include "simulator/litechip.h"

#include "image/registermap.h"
#include "jtag/protocol.h"
#include "model/capturecore.h"
#include "model/litefile.h"
#include "simulator/chainword.h"
#include "simulator/devices.h"
#include "simulator/log.h"

#include <algorithm>
#include <utility>

namespace VEK::Simulator {
namespace {

constexpr int MaxAmount = 1 << 22;
constexpr int MaxSignals = 1 << 16;

QString whyNotBuilt(SXCore_Lite const& core)
{
    if (core.captureAmount < 1 || core.captureAmount > MaxAmount)
        return QStringLiteral("the capture amount %1 is not between 1 and %2")
            .arg(core.captureAmount)
            .arg(MaxAmount);
    int const count = core.dataSignals().size();
    if (count < 1 || count > MaxSignals)
        return QStringLiteral("it captures %1 signals, not 1 to %2").arg(count).arg(MaxSignals);
    return QString();
}

} // namespace

bool readLiteDesign(QString const& path, QString const& device, BuiltLiteCore& core, QString& error)
{
    error.clear();
    bool ok = false;
    QString id;
    QList<SXCore_Lite*> const read = readVEKConfigFromXml_Lite(path, id, &ok, &error);
    if (ok && read.size() != 1)
        error = QStringLiteral("there are %1 lite cores in it, not one").arg(read.size());
    if (error.isEmpty())
        error = whyNotBuilt(*read.first());
    if (error.isEmpty()) {
        SXCore_Lite const& built = *read.first();
        core = {built.captureAmount, built.implemention == 0 && rotatesSamples(device),
                built.captureInitDataEnabled, built.sampleClock, built.dataSignals()};
    }
    qDeleteAll(read);
    if (error.isEmpty())
        return true;
    error = QStringLiteral("%1: %2").arg(path, error);
    return false;
}

LiteChip::LiteChip(BuiltLiteCore core, Dump::SampleTable samples)
    : m_core(std::move(core)), m_samples(std::move(samples))
{}

void LiteChip::powerUp()
{
    m_next = 0;
    m_first = -1;
    m_address = 0;
    m_isBurst = false;
    m_initFlag = !m_core.captureInit;
    m_unread = m_core.captureInit ? m_core.amount : 0;
    m_isRead.assign(std::size_t(m_core.amount), false);
    if (m_core.captureInit)
        capture();
}

void LiteChip::write(QBitArray const& word)
{
    ChainWord const head(word);
    if (head.is(Opcode::Select, 0)) {
        m_address = head.address;
        m_isBurst = false;
    } else if (head.is(Opcode::Burst, width())) {
        m_address = head.address;
        m_isBurst = true;
    } else if (head.is(Opcode::Write, width())) {
        if (head.address != Register::Start)
            return; // there is no other register to write
        m_initFlag = true;
        if (fieldNumber(word, word.size() - std::min(width(), 64), std::min(width(), 64)))
            capture();
    } else {
        qCDebug(lcSimulator) << "the lite core drops the word" << word;
    }
}

/// The capture is whole at once; after the end of the stimulus its last row stands.
void LiteChip::capture()
{
    m_first = m_next;
    m_next = std::min(m_first + m_core.amount, m_samples.rowCount());
}

QBitArray LiteChip::read(int size)
{
    if (m_isBurst)
        return burst(size);
    // the start register is 0 at all times: no capture is ever under way
    return numberField(m_address == Register::CaptureInitLite && m_initFlag, size);
}

/// Records from the highest address down, then one tail bit.
QBitArray LiteChip::burst(int size)
{
    QBitArray bits(size);
    if (size < Protocol::RamTailBits)
        return bits;
    qint64 const room = size - Protocol::RamTailBits;
    BitWriter writer(bits, room % width());
    for (qint64 i = room / width(); i-- > 0;)
        putRecord(writer, m_address + i);
    writer.fill(true, Protocol::RamTailBits);
    return bits;
}

/// Zeros beyond the amount, and for what was never captured.
void LiteChip::putRecord(BitWriter& writer, qint64 address)
{
    bool const isThere = address < m_core.amount;
    if (isThere && m_unread && !m_isRead[std::size_t(address)]) {
        m_isRead[std::size_t(address)] = true;
        m_initFlag = --m_unread == 0 || m_initFlag;
    }
    if (!isThere || m_first < 0) {
        writer.fill(false, width());
        return;
    }
    qint64 const sample =
        m_core.isRotated ? (address + m_core.amount - 1) % m_core.amount : address;
    qint64 const row = std::min(m_first + sample, m_samples.rowCount() - 1);
    writer.putRow(m_samples.row(row), width());
}

} // namespace VEK::Simulator
