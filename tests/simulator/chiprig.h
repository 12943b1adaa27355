#pragma once

#include "tests/support/bittext.h"
#include "simulator/standardchip.h"

/// A chip with one core, spoken to in words that are put together here from the bit layout, and
/// read back as text. Texts hold one '0' or '1' a bit, first on the wire first.
class ChipRig
{
public:
    ChipRig(VEK::Simulator::BuiltCore const& core, QByteArrayList const& rows,
            bool takesOneMore = false)
        : m_core(core), m_chip({core}, {table(rows)}, takesOneMore)
    {
        m_chip.powerUp();
        select(unsigned(core.index));
    }

    VEK::Simulator::StandardChip& chip() { return m_chip; }

    void send(QByteArray const& word) { m_chip.write(bits(word)); }
    void select(unsigned core) { send('1' + number(core, 4)); }
    void write(unsigned address, quint64 value) { writeField(address, number(value, 64)); }
    /// The text stands at the end of the field.
    void writeField(unsigned address, QByteArray const& text)
    {
        QByteArray const filled = QByteArray(m_core.shiftWidth, '0') + text;
        send("01001" + number(address, 16) + filled.right(m_core.shiftWidth));
    }
    QByteArray read(int size) { return text(m_chip.read(size)); }
    QByteArray readRegister(unsigned address)
    {
        send("01101" + number(address, 16));
        return read(m_core.shiftWidth);
    }
    bool isRunning() { return readRegister(0).contains('1'); }

    /// Registers 32 to 35 as a host fills them.
    void setUp(int expressions, int amount, int position, int windows, int lower = 0)
    {
        write(32, quint64(qint64(expressions) - 1));
        write(33, quint64(qint64(amount) - 1));
        write(34, quint64(qint64(amount) - position - (m_core.isDynamic ? 4 : 3) - lower));
        write(35, quint64(qint64(windows) - 1));
    }
    void setUnit(unsigned unit, QByteArray const& a, QByteArray const& b, QByteArray const& c,
                 unsigned control, int counter = 1)
    {
        unsigned const base = 256 + 16 * unit;
        writeField(base, a);
        writeField(base + 1, b);
        writeField(base + 2, c);
        write(base + 3, control);
        write(base + 4, quint64(counter - 1));
    }
    /// A unit that compares its whole port with a text.
    void setLevel(unsigned unit, QByteArray const& level)
    {
        setUnit(unit, level, QByteArray(level.size(), '1'), "0", 0);
    }
    /// One character for each combination of the used units.
    void setTable(unsigned expression, QByteArray const& values)
    {
        for (int i = 0; i < values.size(); ++i)
            write(43776 + 16 * expression + (values.at(i) == '1'), quint64(i));
    }

    /// The records from an address on, mark first, in the order of their addresses. Checks what
    /// stands around them: an empty list tells that it is wrong.
    QByteArrayList records(unsigned address, int count)
    {
        int const width = m_core.shiftWidth;
        send("00111" + number(address, 16) + number(unsigned(count), 16));
        QByteArray const stream = read(32 + count * width + 1);
        QByteArray const filler(width - m_core.dataCount - 1, '1');
        QByteArrayList result;
        bool isSound = stream.startsWith(number(0xA5A5A5A5, 32)) && stream.endsWith('1');
        for (int i = 0; i < count; ++i) {
            QByteArray const record = stream.mid(32 + (count - 1 - i) * width, width);
            isSound = isSound && record.startsWith(filler);
            result.append(record.mid(filler.size()));
        }
        return isSound ? result : QByteArrayList();
    }

    /// A window in time order as the host unrolls it, without the marks.
    QByteArrayList window(unsigned base, int amount, int position)
    {
        QByteArrayList ring;
        for (int i = 0; i < amount; i += 128)
            ring += records(base + unsigned(i), qMin(128, amount - i));
        int mark = ring.size();
        for (int i = ring.size() - 1; i >= 0; --i) {
            if (ring.at(i).startsWith('1'))
                mark = i;
        }
        int const trigger = m_core.isDynamic ? (mark == 0 ? ring.size() : mark) - 1 : mark;
        QByteArrayList result;
        for (int i = 0; i < ring.size(); ++i)
            result += ring.at((trigger - position + i + 2 * ring.size()) % ring.size()).mid(1);
        return result;
    }

private:
    VEK::Simulator::BuiltCore m_core;
    VEK::Simulator::StandardChip m_chip;
};
