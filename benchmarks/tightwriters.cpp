#include "benchmarks/tightwriters.h"

#include "benchmarks/transpose.h"

#include <QFile>

#include <array>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace bench {
namespace {

/// More than any line of a table or all lines of a sample in a dump need.
constexpr std::size_t MostLine = 512;

char* writeTime(char* out, quint64 time)
{
    return std::to_chars(out, out + 20, time).ptr;
}

/// The hexadecimal digits of eight bits, the lowest of them the most significant.
std::array<std::array<char, 2>, 256> hexTable()
{
    std::array<std::array<char, 2>, 256> table;
    for (unsigned i = 0; i < 256; ++i) {
        unsigned value = 0;
        for (int k = 0; k < 8; ++k)
            value |= (i >> k & 1) << (7 - k);
        table[i] = {"0123456789ABCDEF"[value >> 4], "0123456789ABCDEF"[value & 15]};
    }
    return table;
}

} // namespace

TightWriter::TightWriter(Samples const& samples, int busWidth)
    : m_samples(samples), m_busWidth(busWidth), m_buffer(std::size_t(samples.rows + 10) * MostLine)
{}

void TightWriter::loadBlock(int block)
{
    for (std::size_t i = 0; i < 64; ++i)
        m_rows[i] = i < m_samples.columns.size() ? m_samples.columns[i][std::size_t(block)] : 0;
    transpose(m_rows);
}

bool TightWriter::flush(QString const& path, char const* end) const
{
    int const file =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ssize_t const size = end - m_buffer.data();
    bool const ok = file >= 0 && ::write(file, m_buffer.data(), std::size_t(size)) == size;
    ::close(file);
    return ok;
}

template <int SeparatorSize>
bool TightWriter::writeTable(QString const& path, QByteArray const& head, char const* separator,
                             QByteArray const& end, quint64 firstTime)
{
    constexpr int Cells = 8 * (SeparatorSize + 1);
    static auto const hex = hexTable();
    static auto const cells = [separator] {
        std::array<std::array<char, Cells>, 256> table;
        for (unsigned i = 0; i < 256; ++i) {
            for (unsigned k = 0; k < 8; ++k) {
                char* const cell = table[i].data() + k * (SeparatorSize + 1);
                std::memcpy(cell, separator, SeparatorSize);
                cell[SeparatorSize] = char('0' + (i >> k & 1));
            }
        }
        return table;
    }();
    char* out = m_buffer.data();
    out = std::copy(head.begin(), head.end(), out);
    int const bytes = int(m_samples.columns.size()) / 8;
    for (int row = 0; row < m_samples.rows; ++row) {
        if (row % 64 == 0)
            loadBlock(row / 64);
        quint64 bits = m_rows[row % 64];
        out = writeTime(out, firstTime + quint64(row));
        for (int i = 0; i < bytes; ++i, bits >>= 8) {
            if (m_busWidth && i % 2 == 0) {
                std::memcpy(out, separator, SeparatorSize);
                out += SeparatorSize;
                std::memcpy(out, hex[bits & 0xff].data(), 2);
                std::memcpy(out + 2, hex[bits >> 8 & 0xff].data(), 2);
                out += 4;
            }
            std::memcpy(out, cells[bits & 0xff].data(), Cells);
            out += Cells;
        }
        std::memcpy(out, end.constData(), 2);
        out += 2;
    }
    return flush(path, out);
}

template bool TightWriter::writeTable<1>(QString const&, QByteArray const&, char const*,
                                         QByteArray const&, quint64);
template bool TightWriter::writeTable<2>(QString const&, QByteArray const&, char const*,
                                         QByteArray const&, quint64);

bool TightWriter::writeDump(QString const& path, QByteArray const& head, quint64 timeStep)
{
    constexpr quint64 CodeBase = 33;
    quint64 const all = ~quint64(0) >> (64 - m_samples.columns.size());
    auto const time = [](char* out, quint64 value) {
        *out++ = '#';
        out = writeTime(out, value);
        *out++ = '\n';
        return out;
    };
    auto const comment = [](char* out, int number, char const* what) {
        return out + std::sprintf(out, "$comment Sample %d (%s) $end\n", number, what);
    };
    char* out = m_buffer.data();
    out = std::copy(head.begin(), head.end(), out);
    quint64 before = 0;
    for (int row = 0; row < m_samples.rows; ++row) {
        if (row % 64 == 0)
            loadBlock(row / 64);
        quint64 const bits = m_rows[row % 64];
        out = time(out, quint64(row) * timeStep + timeStep / 2);
        if (row == 0)
            out = comment(out, 0, "Start");
        if (row == m_samples.rows - 1)
            out = comment(out, m_samples.rows, "End");
        std::memcpy(out, "0!\n", 3);
        out += 3;
        for (quint64 changes = row ? bits ^ before : all; changes; changes &= changes - 1) {
            unsigned const signal = unsigned(__builtin_ctzll(changes));
            quint64 const line =
                ('0' + (bits >> signal & 1)) | (CodeBase + 1 + signal) << 8 | quint64('\n') << 16;
            std::memcpy(out, &line, 4);
            out += 3;
        }
        before = bits;
        out = time(out, quint64(row + 1) * timeStep);
        std::memcpy(out, "1!\n\n", 4);
        out += 4;
    }
    out = time(out, quint64(m_samples.rows + 1) * timeStep);
    return flush(path, out);
}

} // namespace bench
