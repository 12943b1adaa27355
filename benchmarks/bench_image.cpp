#include "benchmarks/comparison.h"
#include "image/expressionimage.h"
#include "image/truthtable.h"
#include "model/capturecore.h"

#include <QByteArray>

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

/// The limit of a truth table: its expression, in postfix already, for 64 rows a step. Letter A is
/// bit 15 of the row.
QString parallelTable(QByteArray const& postfix)
{
    static auto const characters = characterTable();
    constexpr quint64 Columns[] = {0xAAAAAAAAAAAAAAAAu, 0xCCCCCCCCCCCCCCCCu, 0xF0F0F0F0F0F0F0F0u,
                                   0xFF00FF00FF00FF00u, 0xFFFF0000FFFF0000u, 0xFFFFFFFF00000000u};
    QString text(Rows, Qt::Uninitialized);
    auto* out = reinterpret_cast<ushort*>(text.data());
    quint64 stack[17];
    for (unsigned step = 0; step < Rows / 64; ++step) {
        quint64* top = stack;
        for (char const token : postfix) {
            int const bit = 'A' + 15 - token;
            switch (token) {
            case '!':
                top[-1] = ~top[-1];
                break;
            case '&':
                --top;
                top[-1] &= *top;
                break;
            case '|':
                --top;
                top[-1] |= *top;
                break;
            case '^':
                --top;
                top[-1] ^= *top;
                break;
            default:
                *top++ = bit < 6 ? Columns[bit] : 0 - quint64(step >> (bit - 6) & 1);
            }
        }
        quint64 word = stack[0];
        for (int i = 0; i < 8; ++i, word >>= 8, out += 8)
            std::memcpy(out, characters[word & 0xff].data(), sizeof(Characters));
    }
    return text;
}

QByteArray postfixOf(QString const& expression)
{
    QByteArray const infix = changeExpItem(expression).toLatin1();
    QByteArray postfix(infix.size() + 1, '\0');
    translet(infix.constData(), postfix.data());
    return postfix.constData();
}

Comparison truthTable()
{
    QByteArray const postfix = postfixOf(Expression);
    Comparison comparison;
    comparison.name = "logicTruthTable of 16 variables";
    comparison.aim = 1.5;
    comparison.size = 16;
    comparison.work = [](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(logicTruthTable(Expression));
    };
    comparison.limit = [postfix](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(parallelTable(postfix));
    };
    comparison.agree = [postfix] { return logicTruthTable(Expression) == parallelTable(postfix); };
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
