#include "image/truthtable.h"
#include "trigger/formula.h"

#include <QStringList>

#include <algorithm>

namespace VEK::Trigger {
namespace {

/// A product: which variables it looks at, and the values that it wants.
struct Product
{
    int mask = 0;
    int values = 0;
};

QBitArray half(QBitArray const& table, bool upper)
{
    int const size = table.size() / 2;
    QBitArray result(size);
    for (int i = 0; i < size; ++i)
        result.setBit(i, table.testBit(i + (upper ? size : 0)));
    return result;
}

/// Products that cover all of `least` and nothing outside of `most`; `covered` gets what they do.
/// The highest variable is decided first: by products that need it, then those that don't.
QVector<Product> products(QBitArray const& least, QBitArray const& most, QBitArray& covered)
{
    covered = QBitArray(least.size());
    if (least.count(true) == 0)
        return {};
    if (most.count(true) == most.size()) {
        covered.fill(true);
        return {Product()};
    }
    QBitArray const least0 = half(least, false);
    QBitArray const least1 = half(least, true);
    QBitArray const most0 = half(most, false);
    QBitArray const most1 = half(most, true);
    QBitArray covered0;
    QBitArray covered1;
    QBitArray coveredBoth;
    QVector<Product> result = products(least0 & ~most1, most0, covered0);
    int const firstHigh = result.size();
    result += products(least1 & ~most0, most1, covered1);
    int const top = least.size() / 2;
    for (int i = 0; i < result.size(); ++i) {
        result[i].mask |= top;
        result[i].values |= i < firstHigh ? 0 : top;
    }
    result += products((least0 & ~covered0) | (least1 & ~covered1), most0 & most1, coveredBoth);
    for (int i = 0; i < top; ++i) {
        covered.setBit(i, covered0.testBit(i) || coveredBoth.testBit(i));
        covered.setBit(i + top, covered1.testBit(i) || coveredBoth.testBit(i));
    }
    return result;
}

/// Whether the core's evaluation of a text does not even leave a value: told sooner than by its
/// whole table. A text of zeros ends before one of ones.
bool breaksOff(QString const& expression)
{
    QByteArray const infix = changeExpItem(expression).toLatin1();
    QByteArray postfix(infix.size() + 1, '\0');
    translet(infix.constData(), postfix.data());
    char letters['Z' - 'A' + 2];
    getOperand(postfix.constData(), letters);
    sort(letters);
    QByteArray const zeros(int(qstrlen(letters)), '0');
    return calcuate(postfix.constData(), letters, zeros.constData()) == 'x';
}

/// What a core's evaluation reads only near the beginning of a text.
int weight(Formula const& formula)
{
    int sum = formula.kind == Formula::Not || formula.kind == Formula::And;
    for (Formula const& child : formula.children)
        sum += weight(child);
    return sum;
}

class Writer
{
public:
    Writer(OperandText const& operand, Style const& style) : m_operand(operand), m_style(style) {}

    /// Brackets stand around what binds less than `least`.
    QString write(Formula const& formula, Formula::Kind least) const
    {
        Operand written = operandOf(formula);
        bool const needsBrackets = strength(written.kind) < strength(least);
        return needsBrackets ? QLatin1Char('(') + written.text + QLatin1Char(')') : written.text;
    }

private:
    static int strength(Formula::Kind kind)
    {
        switch (kind) {
        case Formula::Or:
            return 1;
        case Formula::Xor:
            return 2;
        case Formula::And:
            return 3;
        case Formula::Not:
            return 4;
        default:
            return 5;
        }
    }

    Operand operandOf(Formula const& formula) const
    {
        switch (formula.kind) {
        case Formula::False:
            return {QStringLiteral("never"), formula.kind};
        case Formula::True:
            return {QStringLiteral("always"), formula.kind};
        case Formula::Variable:
            return m_operand(formula.variable, false);
        case Formula::Not:
            if (formula.children.front().kind == Formula::Variable)
                return m_operand(formula.children.front().variable, true);
            return {QLatin1Char('!') + write(formula.children.front(), Formula::Variable),
                    formula.kind};
        default:
            return {joined(formula), formula.kind};
        }
    }

    QString joined(Formula const& formula) const
    {
        std::vector<Formula> children = formula.children;
        if (m_style.isSorted)
            std::stable_sort(
                children.begin(), children.end(),
                [](Formula const& a, Formula const& b) { return weight(a) > weight(b); });
        QString const sign = formula.kind == Formula::Or    ? QStringLiteral("|")
                             : formula.kind == Formula::And ? QStringLiteral("&")
                                                            : QStringLiteral("^");
        QStringList texts;
        for (Formula const& child : children)
            texts.append(write(child, formula.kind));
        if (!m_style.isNestedRight)
            return texts.join(m_style.space + sign + m_style.space);
        QString const between = m_style.space + sign + m_style.space;
        QString const bracketed = between + QLatin1Char('(');
        QString const last = texts.takeLast();
        return texts.join(bracketed) + between + last + QString(texts.size() - 1, QLatin1Char(')'));
    }

    OperandText const& m_operand;
    Style const& m_style;
};

} // namespace

Formula sumOfProducts(QBitArray const& table, QVector<int> const& variables)
{
    QBitArray covered;
    std::vector<Formula> terms;
    for (Product const& product : products(table, table, covered)) {
        std::vector<Formula> factors;
        for (int i = 0; i < variables.size(); ++i) {
            Formula const variable = Formula::of(variables.at(i));
            if (product.mask >> i & 1)
                factors.push_back(product.values >> i & 1 ? variable : variable.negated());
        }
        terms.push_back(Formula::join(Formula::And, factors));
    }
    return Formula::join(Formula::Or, terms);
}

QString textOf(Formula const& formula, OperandText const& operand, Style const& style)
{
    return Writer(operand, style).write(formula, Formula::Or);
}

QBitArray coreTable(QString const& expression, QVector<int> const& units)
{
    QString const table = logicTruthTable(expression);
    QVector<int> places;
    for (int unit : unitsOf(expression))
        places.append(units.indexOf(unit));
    QBitArray result(1 << units.size());
    for (int row = 0; row < result.size(); ++row) {
        int index = 0;
        for (int i = 0; i < places.size(); ++i)
            index |= (row >> places.at(i) & 1) << i;
        result.setBit(row, index < table.size() && table.at(index) == QLatin1Char('1'));
    }
    return result;
}

QString expressionFor(Formula const& formula)
{
    auto const unit = [](int number, bool isNegated) -> Operand {
        QString const name = QStringLiteral("M%1").arg(number);
        return {isNegated ? QLatin1Char('!') + name : name,
                isNegated ? Formula::Not : Formula::Variable};
    };
    QVector<int> const units = variablesOf(formula);
    QBitArray const wanted = tableOf(formula, units);
    auto const firstRight = [&](Formula const& candidate) {
        for (Style const& style : {Style{}, Style{QString(), false, true},
                                   Style{QString(), true, false}, Style{QString(), true, true}}) {
            QString const text = textOf(candidate, unit, style);
            if (!breaksOff(text) && coreTable(text, units) == wanted)
                return text;
        }
        return QString();
    };
    QString text = firstRight(formula);
    auto const tryNext = [&](auto const& make) {
        if (text.isEmpty())
            text = firstRight(make());
    };
    auto const opposite = [](Formula const& inner) { return Formula{Formula::Not, 0, {inner}}; };
    tryNext([&] { return opposite(formula.negated()); });
    tryNext([&] { return sumOfProducts(wanted, units); });
    tryNext([&] { return opposite(sumOfProducts(~wanted, units)); });
    return text;
}

} // namespace VEK::Trigger
