#include "cli/dialogue.h"

#include "cli/matchtext.h"
#include "image/registermap.h"
#include "model/bits.h"

#include <algorithm>

namespace VEK::Cli {
namespace {

constexpr int SelectBits = 5;
constexpr int HeadBits = Opcode::Bits + Opcode::AddressBits;

/// The last 64 bits of a field as a number.
quint64 numberOf(QBitArray const& bits, int start)
{
    quint64 number = 0;
    for (int i = std::max(start, bits.size() - 64); i < bits.size(); ++i)
        number = number << 1 | quint64(bits.testBit(i));
    return number;
}

bool hasOpcode(QBitArray const& bits, char const* opcode)
{
    return bits.size() >= HeadBits && bit2str(sub(bits, 0, Opcode::Bits)) == QLatin1String(opcode);
}

QString startText(quint64 value)
{
    switch (value) {
    case StartValue::Arm:
        return QStringLiteral("arm");
    case StartValue::Force:
        return QStringLiteral("force");
    default:
        return QStringLiteral("stop");
    }
}

/// Names of the registers that a core has once.
QString registerName(int address, bool isLite)
{
    switch (address) {
    case Register::Start:
        return QStringLiteral("start");
    case Register::CaptureInitLite:
        return isLite ? QStringLiteral("initial data") : QString();
    case Register::CaptureInit:
        return isLite ? QString() : QStringLiteral("initial data");
    case Register::ExpressionCount:
        return QStringLiteral("expressions - 1");
    case Register::CaptureAmount:
        return QStringLiteral("samples - 1");
    case Register::AfterTrigger:
        return QStringLiteral("samples after the trigger");
    case Register::WindowCount:
        return QStringLiteral("windows - 1");
    default:
        return QString();
    }
}

bool isUnitAddress(int address)
{
    return address >= Register::MatchUnitBase &&
           address < Register::MatchUnitBase + CoreUnitCount * Register::MatchUnitStep;
}

} // namespace

ImageRow Dialogue::take(CmdPack const& request, QByteArray const& frame)
{
    ImageRow row;
    row.request = request.value(Protocol::Key::Oprate).toString();
    if (row.request.isEmpty())
        row.request = request.value(Protocol::Key::Cmd).toString();
    row.frame = frame;
    if (request.value(Protocol::Key::Cmd) == Protocol::Cmd::Write) {
        row.bits = request.value(Protocol::Key::Data).toBitArray();
        takeWord(row);
    } else if (request.value(Protocol::Key::Cmd) == Protocol::Cmd::Read) {
        row.size = request.value(Protocol::Key::Size).toInt();
        describeRead(request, row);
    } else if (request.value(Protocol::Key::Cmd) == Protocol::Cmd::WriteInfor) {
        row.meaning = QStringLiteral("records of %1 bits, fields of %2")
                          .arg(request.value(Protocol::Key::MemDataWidth).toInt())
                          .arg(request.value(Protocol::Key::ShiftWidth).toInt());
    } else if (request.value(Protocol::Key::Cmd) == Protocol::Cmd::Open) {
        row.meaning = QStringLiteral("open the chain");
    } else if (request.value(Protocol::Key::Cmd) == Protocol::Cmd::Close) {
        row.meaning = QStringLiteral("close the chain");
    }
    if (m_core)
        row.core = m_core->index;
    return row;
}

void Dialogue::selectCore(ImageRow& row)
{
    int const select = int(numberOf(row.bits, 1));
    auto const core = std::find_if(m_cores.begin(), m_cores.end(), [select](SxCore const* core) {
        return (core->index & 15) == select;
    });
    m_core = core == m_cores.end() ? nullptr : *core;
    row.headBits = 1;
    row.meaning = QStringLiteral("turn the chain to core %1").arg(select);
}

void Dialogue::takeWord(ImageRow& row)
{
    if (row.bits.size() == SelectBits) {
        selectCore(row);
        return;
    }
    row.headBits = std::min(HeadBits, row.bits.size());
    row.address = int(numberOf(sub(row.bits, 0, row.headBits), Opcode::Bits));
    row.registerName = registerName(row.address, m_cores.isEmpty());
    quint64 const number = numberOf(row.bits, row.headBits);
    if (hasOpcode(row.bits, Opcode::Write)) {
        describeWrite(row, number);
    } else if (hasOpcode(row.bits, Opcode::Burst)) {
        row.registerName = QStringLiteral("memory");
        row.meaning =
            m_cores.isEmpty()
                ? QStringLiteral("read from sample %1 on").arg(row.address)
                : QStringLiteral("read %1 records from %2 on").arg(number).arg(row.address);
    } else if (hasOpcode(row.bits, Opcode::Select)) {
        row.meaning = QStringLiteral("look at it next");
    }
}

void Dialogue::describeWrite(ImageRow& row, quint64 number)
{
    if (row.address == Register::Start)
        row.meaning = startText(number);
    else if (isUnitAddress(row.address))
        describeUnit(row, number);
    else if (row.address >= Register::ExpressionTable)
        describeTable(row, number);
    else
        row.meaning = QString::number(number);
}

void Dialogue::describeUnit(ImageRow& row, quint64 number)
{
    static QStringList const parts{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"),
                                   QStringLiteral("control"), QStringLiteral("counter")};
    int const place = row.address - Register::MatchUnitBase;
    int const index = place / Register::MatchUnitStep;
    int const part = place % Register::MatchUnitStep;
    row.registerName = QStringLiteral("M%1 %2").arg(index).arg(parts.value(part));
    MatchUnit const* const unit = m_core ? m_core->matchUnit(index) : nullptr;
    if (!unit || !unit->trigger)
        return;
    if (part == Register::MatchUnitA)
        row.meaning = QStringLiteral("M%1: %2").arg(index).arg(matchText(*unit));
    else if (part == Register::MatchUnitControl)
        row.meaning =
            func2string(unit->func) + (number & 8 ? QStringLiteral(", in a row") : QString());
    else if (part == Register::MatchUnitCounter)
        row.meaning = QStringLiteral("fires at each match number %1").arg(number + 1);
}

void Dialogue::describeTable(ImageRow& row, quint64 combination)
{
    int const place = row.address - Register::ExpressionTable;
    row.registerName = QStringLiteral("table %1").arg(place / Register::ExpressionTableStep);
    QStringList units;
    int site = 0;
    for (MatchUnit const* unit : m_core ? m_core->matchUnits : QList<MatchUnit*>()) {
        if (!unit->enabled || !unit->trigger || unit->trigger->signalList.isEmpty())
            continue;
        units << QStringLiteral("M%1=%2").arg(unit->index).arg(combination >> site & 1);
        ++site;
    }
    row.meaning = QStringLiteral("%1 -> %2").arg(units.join(QLatin1Char(' '))).arg(place & 1);
}

void Dialogue::describeRead(CmdPack const& request, ImageRow& row)
{
    if (row.request == Protocol::Oprate::ReadStartReg) {
        row.meaning = QStringLiteral("%1 bits, zero once the capture is there").arg(row.size);
    } else if (row.request == Protocol::Oprate::ReadCaptureInit) {
        row.meaning = QStringLiteral("%1 bits").arg(row.size);
    } else {
        int const total = request.value(Protocol::Key::SectionCount).toInt();
        int const section = m_sections % std::max(total, 1) + 1;
        ++m_sections;
        row.meaning = QStringLiteral("%1 bits: window %2, section %3 of %4")
                          .arg(row.size)
                          .arg(request.value(Protocol::Key::Window).toInt())
                          .arg(section)
                          .arg(total);
    }
}

} // namespace VEK::Cli
