#include "benchmarks/comparison.h"
#include "image/expressionimage.h"
#include "image/truthtable.h"
#include "model/capturecore.h"

#include <array>
#include <cstring>
#include <memory>

using namespace VEK;
using bench::Comparison;

namespace {

constexpr int Rows = 65536;
/// All 16 units, and as many operators as a text may hold whose whole length counts.
const QString Expression =
    QStringLiteral("!M0&M1|M2^(M3|!M4)&M5^M6|M7&(M8|M9)^M10&M11|M12^M13&(M14|M15)");
constexpr int DataSignals = 32; ///< Fields of 33 bits.
constexpr int WordBits = 5 + 16 + 33;

/// The characters of eight table entries, the first in the lowest bit.
using Characters = std::array<ushort, 8>;

std::array<Characters, 256> characterTable()
{
    std::array<Characters, 256> table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        for (std::size_t k = 0; k < 8; ++k)
            table[i][k] = ushort('0' + (i >> k & 1));
    }
    return table;
}

/// For each unit its bit of the row numbers, a bit a row.
using Columns = std::array<std::array<quint64, Rows / 64>, 16>;

std::shared_ptr<Columns> unitColumns()
{
    auto columns = std::make_shared<Columns>();
    for (std::size_t unit = 0; unit < columns->size(); ++unit) {
        for (std::size_t row = 0; row < Rows; ++row)
            (*columns)[unit][row / 64] |= quint64(row >> unit & 1) << (row % 64);
    }
    return columns;
}

/// The limit of a truth table: `Expression` as the compiler translates it, on ready columns.
QString compiledTable(Columns const& m)
{
    static auto const characters = characterTable();
    QString text(Rows, Qt::Uninitialized);
    auto* out = reinterpret_cast<ushort*>(text.data());
    std::array<quint64, Rows / 64> words;
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = (~m[0][i] & m[1][i]) | (m[2][i] ^ ((m[3][i] | ~m[4][i]) & m[5][i]) ^ m[6][i]) |
                   ((m[7][i] & (m[8][i] | m[9][i])) ^ (m[10][i] & m[11][i])) |
                   (m[12][i] ^ (m[13][i] & (m[14][i] | m[15][i])));
    }
    for (quint64 word : words) {
        for (int i = 0; i < 8; ++i, word >>= 8, out += 8)
            std::memcpy(out, characters[word & 0xff].data(), sizeof(Characters));
    }
    return text;
}

Comparison truthTable()
{
    auto const columns = unitColumns();
    Comparison comparison;
    comparison.name = "logicTruthTable of 16 variables";
    comparison.aim = 4;
    comparison.size = 16;
    comparison.work = [](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(logicTruthTable(Expression));
    };
    comparison.limit = [columns](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(compiledTable(*columns));
    };
    comparison.agree = [columns] { return logicTruthTable(Expression) == compiledTable(*columns); };
    return comparison;
}

/// A dynamic core that uses all its units in each of `expressions` expressions.
std::shared_ptr<SxCore> coreWith(int expressions)
{
    auto core = std::make_shared<SxCore>(0);
    core->expressionType = ExpressionDynamic;
    SignalItem signal;
    signal.name = QStringLiteral("data");
    for (int i = 0; i < DataSignals; ++i)
        core->dataSignalList.append(signal);
    for (MatchUnit* unit : qAsConst(core->matchUnits)) {
        unit->enabled = true;
        unit->trigger = core->getTrigger(unit->index);
        unit->trigger->signalList = {signal};
    }
    for (int i = 0; i < expressions; ++i)
        core->addExpression(Expression);
    return core;
}

QList<QBitArray> bitArrays(int count)
{
    QList<QBitArray> arrays;
    for (int i = 0; i < count; ++i)
        arrays.append(QBitArray(WordBits));
    return arrays;
}

Comparison expressionImage()
{
    Comparison comparison;
    comparison.name = "expression image, 65,536 words of 33 bits";
    comparison.aim = 2;
    comparison.size = 1; // expressions
    comparison.otherSize = 10;
    comparison.work = [](benchmark::State& state) {
        auto const core = coreWith(int(state.range(0)));
        for (auto _ : state)
            benchmark::DoNotOptimize(generateExpressionBit(core.get()));
    };
    comparison.limit = [](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(bitArrays(int(state.range(0)) * Rows));
    };
    comparison.agree = [] {
        QList<QBitArray> const words = generateExpressionBit(coreWith(1).get());
        return words.size() == Rows && words.first().size() == WordBits;
    };
    return comparison;
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run({truthTable(), expressionImage()}, argc, argv);
}
