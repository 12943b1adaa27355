#pragma once

#include "dump/vcdcodes.h"
#include "dump/vcdtokens.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QIODevice;

namespace VEK::Dump {

/// One `$var` declaration.
struct VcdVariable
{
    QByteArray path;       ///< Scopes and name joined with "."; "/" counts as ".", no leading "\".
    QByteArray scope;      ///< The part of it that the scopes make, with a closing ".".
    QByteArray name;       ///< As it is written, its parts joined with a blank.
    int code = 0;          ///< Number of its identifier code; several variables may share one.
    qint64 line = 0;       ///< Where it is declared, from 1.
    int width = 0;         ///< Bits; 0 is legal, such a variable has no value.
    int msb = 0;           ///< Index of the first bit of a value...
    int lsb = 0;           ///< ...and of its last bit; `msb` may be the smaller one.
    bool isBits = true;    ///< False for reals and strings.
    bool hasRange = false; ///< The declaration gave the indexes; else they are width-1 to 0.
};

/// Reads a value change dump as a stream. Memory depends on the declarations only.
///
/// First `readHeader`, then `next` until `End`, `Cut` or `Error`. After the latter two `error()`
/// tells what is wrong and in which line. What the declarations say about things that samples don't
/// depend on, such as the time scale, is not looked at, but handed to the section visitor.
class VcdReader
{
public:
    enum class Event {
        Time,    ///< A new, later time.
        Change,  ///< A variable of bits has a new value; see `code` and `value`.
        DumpOff, ///< Values are unknown until a `Change` behind the next `DumpOn`.
        DumpOn,
        End,
        Cut, ///< The file ends in the middle of something: what came since `Time` is not whole.
        Error
    };

    /// `device` must be open for reading and outlive this object.
    explicit VcdReader(QIODevice& device) : m_words(device) {}

    /// Has `visit` called for each section that this class does not look at, such as "$comment",
    /// with its words joined with a blank, of long ones the beginning. Set it before anything else.
    using SectionVisitor = std::function<void(QByteArray const& name, QByteArray const& text)>;
    void setSectionVisitor(SectionVisitor const& visit) { m_visitSection = visit; }

    /// Reads up to the end of the declarations and calls `visit` for each variable in file order.
    bool readHeader(std::function<void(VcdVariable const&)> const& visit);
    /// Number of different identifier codes; codes are numbered from 0 in order of appearance.
    int codeCount() const { return int(m_isBits.size()); }

    Event next();
    int code() const { return m_code; }
    /// The new value, highest bit first, one character a bit; see `isOne`. May be shorter than the
    /// variable (zeros in front) or longer (its head is void). Valid up to the next call.
    std::string_view value() const { return m_value; }

    /// The time that `Time` told, its whole units.
    quint64 time() const { return m_time; }

    /// Whether a value character stands for 1; x, z and their kin read as 0.
    static bool isOne(char c) { return c == '1' || c == 'h' || c == 'H'; }

    QString error() const { return m_error; }

private:
    bool fail(QString const& what);
    bool failAtEnd(QString const& where);
    bool nextWord(QString const& where);
    bool skipSection(QString const& name);
    bool sectionWords(QString const& name, std::vector<QByteArray>& words);
    bool readScope();
    bool readUpscope();
    bool readVariable(std::function<void(VcdVariable const&)> const& visit);
    int addCode(QByteArray const& text, bool isBits);
    bool isCutCode(std::string_view text) const;
    bool readKeyword(QByteArray const& word, Event& event);
    bool readTime(std::string_view text, bool& isNew);
    bool readUsualTime(std::string_view text, bool& isNew);
    bool readValue(std::string_view word);
    bool readLongValue(std::string_view word);
    bool nextCode();
    bool isCodeFine(std::string_view code);
    bool isValueFine();

    VcdTokens m_words;
    SectionVisitor m_visitSection;
    QByteArray m_scope;             ///< Path of the open scopes, with a closing ".".
    std::vector<int> m_scopeStarts; ///< Length of `m_scope` in front of each open scope.
    VcdCodes m_codes;
    std::vector<char> m_isBits; ///< For each code: at least one of its variables has bits.
    std::string_view m_value;
    char m_kind = '0';      ///< Of the value; of a scalar it is the value.
    quint64 m_time = 0;     ///< The current time, whole units...
    std::string m_fraction; ///< ...and the digits behind its point, without zeros at the end.
    bool m_hasTime = false;
    bool m_inDump = false; ///< Within $dumpvars and the like, before their $end.
    int m_code = 0;
    bool m_isCut = false;
    bool m_hasFailed = false;
    QString m_error;
};

} // namespace VEK::Dump
