#pragma once

#include <QString>

#include <vector>

namespace VEK::Simulator {

/// A function of the outputs of 16 match units: one bit for each of their combinations.
class TruthTable
{
public:
    static constexpr int Units = 16;

    /// False everywhere.
    TruthTable() : m_words(WordCount) {}
    /// True wherever unit `unit` is; bit i of a combination is unit i.
    static TruthTable ofUnit(int unit);

    bool at(unsigned combination) const
    {
        return m_words[combination >> 6 & (WordCount - 1)] >> (combination & 63) & 1;
    }
    void set(unsigned combination, bool value);

    void invert();
    TruthTable& operator&=(TruthTable const& other);
    TruthTable& operator|=(TruthTable const& other);
    TruthTable& operator^=(TruthTable const& other);

private:
    static constexpr unsigned WordCount = (1u << Units) / 64;

    std::vector<quint64> m_words;
};

/// What a static core was built with: the operands M0 to M15, "!", "&", "^" and "|" in falling
/// priority, and brackets. What is none of these and no capital letter is skipped, such as blanks
/// or the last digit of "M16". `units` gets a bit for each operand in the text. False with an
/// `error` for a text that is no expression, and for a capital letter that is no unit.
bool compileExpression(QString const& text, TruthTable& table, unsigned& units, QString& error);

} // namespace VEK::Simulator
