#pragma once

#include <QString>
#include <QVector>

namespace VEK {

/// The samples of one signal, one bit each, for walks over all samples of many signals. A sample is
/// set where the character is "1"; a text that holds other characters than "0" and "1" keeps them.
class PackedText
{
public:
    /// Samples in a word.
    static constexpr int Block = 64;

    explicit PackedText(QString const& text);

    int size() const { return m_size; }

    /// Whether every character is "0" or "1", so that the words tell all.
    bool isBinary() const { return m_text.isNull(); }

    /// Samples 64 * `block` and on, the first in the lowest bit; 0 beyond the end.
    quint64 word(int block) const { return block < m_words.size() ? m_words.at(block) : 0; }

    bool bit(int index) const { return (word(index / Block) >> (index % Block)) & 1; }

    /// The character of a sample of this text.
    QChar at(int index) const;

private:
    QVector<quint64> m_words;
    QString m_text; ///< Null when the words tell all.
    int m_size;
};

} // namespace VEK
