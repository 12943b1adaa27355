#include "benchmarks/comparison.h"
#include "results/dataformatter.h"

#include <QRandomGenerator>

#include <array>
#include <cstring>
#include <map>
#include <memory>

using bench::Comparison;
using WaveMonitor::DataFormat;

namespace {

constexpr int Values = 256; ///< Converted in an iteration.

/// A value as the formatter takes it, and for the limits.
struct Value
{
    QBitArray bits;
    std::vector<quint64> limbs; ///< The lowest first, and an empty one behind them.
};

using ValueList = std::vector<Value>;

Value randomValue(QRandomGenerator& random, int width)
{
    Value value;
    value.bits = QBitArray(width);
    value.limbs.resize(std::size_t(width + 63) / 64 + 1);
    for (int i = 0; i < width; ++i) {
        if (random.generate() & 1) {
            value.bits.setBit(width - 1 - i);
            value.limbs[std::size_t(i) / 64] |= quint64(1) << (i % 64);
        }
    }
    return value;
}

std::shared_ptr<ValueList> randomValues(int width)
{
    QRandomGenerator random(quint32(width) + 1);
    auto values = std::make_shared<ValueList>();
    for (int i = 0; i < Values; ++i)
        values->push_back(randomValue(random, width));
    return values;
}

/// Digits of `Bits` bits each, two looked up at a time.
template <int Bits, int Step>
auto const& digitTable()
{
    static auto const table = [] {
        std::array<std::array<ushort, Step>, 1 << (Bits * Step)> digits;
        for (std::size_t i = 0; i < digits.size(); ++i) {
            for (int k = 0; k < Step; ++k) {
                std::size_t const digit = i >> (Bits * (Step - 1 - k)) & ((1 << Bits) - 1);
                digits[i][std::size_t(k)] = ushort("0123456789ABCDEF"[digit]);
            }
        }
        return digits;
    }();
    return table;
}

/// The limit of a radix of 2 to the power of `Bits`: a loop over packed bits, led by a table.
template <int Bits, int Step>
QString tableText(Value const& value)
{
    constexpr quint64 Mask = (1u << (Bits * Step)) - 1;
    auto const& table = digitTable<Bits, Step>();
    int const width = value.bits.size();
    int left = (width + Bits - 1) / Bits;
    QString text(left, Qt::Uninitialized);
    auto* out = reinterpret_cast<ushort*>(text.data());
    auto const digitsAt = [&](int bit) {
        std::size_t const limb = std::size_t(bit) / 64;
        quint64 const low = value.limbs[limb] >> (bit % 64);
        return (low | value.limbs[limb + 1] << 1 << (63 - bit % 64)) & Mask;
    };
    if (int const odd = left % Step) {
        left -= odd;
        auto const& digits = table[digitsAt(left * Bits)];
        out = std::copy(digits.end() - odd, digits.end(), out);
    }
    while (left) {
        left -= Step;
        std::memcpy(out, table[digitsAt(left * Bits)].data(), Step * sizeof(ushort));
        out += Step;
    }
    return text;
}

QString asciiText(Value const& value)
{
    static auto const table = [] {
        std::array<ushort, 256> characters;
        for (std::size_t i = 0; i < 256; ++i)
            characters[i] = ushort(i >= 32 && i < 127 ? i : ' ');
        return characters;
    }();
    int const count = (value.bits.size() + 7) / 8;
    QString text(count + 2, Qt::Uninitialized);
    auto* out = reinterpret_cast<ushort*>(text.data());
    auto const* const bytes = reinterpret_cast<unsigned char const*>(value.limbs.data());
    *out++ = '"';
    for (int i = count; i-- > 0;)
        *out++ = table[bytes[i]];
    *out = '"';
    return text;
}

using Convert = std::function<QString(Value const&)>;

bench::Body converting(std::map<int, std::shared_ptr<ValueList>> const& values,
                       Convert const& convert)
{
    return [=](benchmark::State& state) {
        ValueList const& list = *values.at(int(state.range(0)));
        for (auto _ : state) {
            for (Value const& value : list)
                benchmark::DoNotOptimize(convert(value));
        }
    };
}

Comparison comparisonOf(char const* name, int width, DataFormat::Type type, double aim,
                        Convert const& limit, int otherWidth = 0)
{
    WaveMonitor::DataFormatter const formatter(type);
    Convert const work = [formatter](Value const& value) { return formatter.format(value.bits); };
    std::map<int, std::shared_ptr<ValueList>> values{{width, randomValues(width)}};
    if (otherWidth)
        values.emplace(otherWidth, randomValues(otherWidth));
    Comparison comparison;
    comparison.name = std::string(name) + ", " + std::to_string(Values) + " values of " +
                      std::to_string(width) + " bits";
    comparison.aim = aim;
    comparison.size = width;
    comparison.otherSize = otherWidth;
    comparison.work = converting(values, work);
    comparison.limit = converting(values, limit);
    comparison.agree = [=] {
        ValueList const& list = *values.at(width);
        return std::all_of(list.begin(), list.end(),
                           [&](Value const& value) { return work(value) == limit(value); });
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    constexpr int Widths[] = {54, 64, 128, 256, 512, 1024, 4096};
    std::vector<Comparison> comparisons;
    struct Radix
    {
        char const* name;
        DataFormat::Type type;
        Convert limit;
    };
    Radix const radices[] = {{"hexadecimal", DataFormat::Hexadecimal, tableText<4, 2>},
                             {"binary", DataFormat::Binary, tableText<1, 8>},
                             {"octal", DataFormat::Octal, tableText<3, 4>},
                             {"ASCII", DataFormat::Ascii, asciiText}};
    for (Radix const& radix : radices) {
        for (int width : Widths)
            comparisons.push_back(comparisonOf(radix.name, width, radix.type, 2, radix.limit,
                                               width == 4096 ? 40960 : 0));
    }
    return bench::run(comparisons, argc, argv);
}
