#include "results/vcdexport.h"

#include "model/bits.h"
#include "results/outputbuffer.h"
#include "results/packedtext.h"
#include "results/valuetext.h"
#include "results/windowreader.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QtAlgorithms>

#include <algorithm>
#include <cmath>
#include <vector>

namespace VEK {
namespace {

const QByteArray ClockCode = "!";
constexpr int Block = PackedText::Block;

/// One variable of the dump.
struct Variable
{
    QByteArray code;
    QByteArray label;
    PackedText samples;
    quint64 word = 0; ///< Of the block of samples at hand.
};

std::vector<Variable> variablesOf(QDomElement const& window)
{
    std::vector<Variable> variables;
    for (Signal const& signal : signalListFromDom(window)) {
        int const value = int(variables.size()) + 1; // 0 is the clock
        variables.push_back({VCD::vcdIDForSignalAtIndex(value).toUtf8(), signal.label.toUtf8(),
                             PackedText(signal.data)});
    }
    return variables;
}

/// Samples 64 * `block` and on that differ from the one before; sample 0 always does. A variable
/// that is shorter than its place in the list is left out: deliberate.
quint64 changedSamples(PackedText const& samples, int block, int place)
{
    if (place >= samples.size())
        return 0;
    quint64 changes = 0;
    int const first = block * Block;
    int const count = std::min(Block, samples.size() - first);
    if (samples.isBinary()) {
        quint64 const word = samples.word(block);
        quint64 const before = block ? samples.word(block - 1) >> (Block - 1) : ~word & 1;
        changes = word ^ (word << 1 | before);
        if (count < Block)
            changes &= count < 1 ? 0 : (quint64(1) << count) - 1;
        return changes;
    }
    for (int i = 0; i < count; ++i) {
        int const at = first + i;
        changes |= quint64(at == 0 || samples.at(at) != samples.at(at - 1)) << i;
    }
    return changes;
}

void writeHeader(OutputBuffer& out, QString const& moduleName, QString const& clockName,
                 QString const& timeUnit, std::vector<Variable> const& variables)
{
    // plain digits, which the user's locale may not have
    QString const date =
        QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("dd/MM/yyyy hh:mm:ss"));
    auto const block = [&out](char const* name, QByteArray const& line) {
        VCD::Tag const tag(out, name);
        out.append(line + '\n');
    };
    block("comment", "  Captured on the chip");
    block("date", "  " + date.toUtf8());
    block("timescale", "  1 " + timeUnit.toUtf8());
    block("scope", "module " + moduleName.toUtf8());
    block("var", "reg 1 " + ClockCode + ' ' + clockName.toUtf8());
    for (Variable const& variable : variables)
        block("var", "reg 1 " + variable.code + ' ' + variable.label);
    VCD::Tag(out, "upscope");
    VCD::Tag(out, "enddefinitions");
}

void writeStart(OutputBuffer& out, char level, std::vector<Variable> const& variables)
{
    out.append("#0\n");
    VCD::Tag const tag(out, "dumpvars");
    out.append(level + ClockCode + '\n');
    for (Variable const& variable : variables)
        out.append('X' + variable.code + '\n');
}

void writeTime(OutputBuffer& out, unsigned long long time)
{
    constexpr int MaxLine = 22;
    char* place = out.reserve(MaxLine);
    *place++ = '#';
    place = writeDecimal(place, time);
    *place++ = '\n';
    out.commit(place);
}

/// (i + 0.5) times the step without the loss of a floating-point product.
unsigned long long halfStepTime(int i, unsigned long long step)
{
    return step * static_cast<unsigned long long>(i) + step / 2;
}

void writeComments(OutputBuffer& out, int i, int count, int triggerIndex)
{
    auto const comment = [&out](int number, char const* what) {
        out.append("$comment Sample " + QByteArray::number(number) + " (" + what + ") $end\n");
    };
    if (i == 0)
        comment(0, "Start");
    if (i == count - 1)
        comment(count, "End"); // the count, deliberately not the index
    if (i == triggerIndex)
        comment(triggerIndex, "Trigger");
}

/// Which variables to write at each sample of a block. They are few of many.
class Changes
{
public:
    explicit Changes(std::vector<Variable> const& variables)
        : m_groups((variables.size() + Block - 1) / Block)
    {}

    /// Takes over the samples of a block, which also go into the variables.
    void load(std::vector<Variable>& variables, int block)
    {
        m_groups.assign(m_groups.size(), Group());
        for (std::size_t i = 0; i < variables.size(); ++i) {
            variables[i].word = variables[i].samples.word(block);
            m_groups[i / Block].changed[i % Block] =
                changedSamples(variables[i].samples, block, int(i));
        }
        for (Group& group : m_groups)
            transpose(group.changed);
    }

    /// Calls `write` with the place of each variable that changes at sample `bit` of the block.
    template <typename Write>
    void forEach(int bit, Write write) const
    {
        for (std::size_t i = 0; i < m_groups.size(); ++i) {
            for (quint64 left = m_groups[i].changed[bit]; left; left &= left - 1)
                write(i * Block + qCountTrailingZeroBits(left));
        }
    }

private:
    /// First a word of samples for each of 64 variables, then a word of variables for each sample.
    struct Group
    {
        BitBlock changed = {};
    };

    std::vector<Group> m_groups;
};

void writeChange(OutputBuffer& out, int i, Variable const& variable)
{
    if (!variable.samples.isBinary()) {
        out.append(QString(variable.samples.at(i)).toUtf8() + variable.code + '\n');
        return;
    }
    char* place = out.reserve(variable.code.size() + 2);
    *place++ = char('0' + ((variable.word >> (i % Block)) & 1));
    place = std::copy(variable.code.begin(), variable.code.end(), place);
    *place++ = '\n';
    out.commit(place);
}

} // namespace

namespace VCD {

Tag::Tag(OutputBuffer& out, QByteArray const& name) : m_out(out)
{
    m_out.append('$' + name + '\n');
}

Tag::~Tag()
{
    m_out.append("$end\n");
}

QString vcdIDForSignalAtIndex(int n)
{
    constexpr double Base = 94;
    constexpr int First = 33;
    QString code;
    double rest = n;
    for (int p = n < Base ? 0 : 1; p >= 0; --p) {
        double const weight = std::pow(Base, p);
        int const digit = int(rest / weight);
        rest -= digit * weight;
        code.append(QChar(ushort(digit + First)));
    }
    return code;
}

} // namespace VCD

bool exportVCD(QIODevice& device, QString const& moduleName, QString const& clockName,
               bool clockLevel, QString const& timeUnit, unsigned long long timeStep,
               int triggerIndex, QDomElement const& window)
{
    std::vector<Variable> variables = variablesOf(window);
    char const level = clockLevel ? '1' : '0';
    QByteArray const edgeAway = (clockLevel ? '0' : '1') + ClockCode + '\n';
    QByteArray const edgeBack = level + ClockCode + "\n\n";
    OutputBuffer out(device);
    writeHeader(out, moduleName, clockName, timeUnit, variables);
    writeStart(out, level, variables);
    Changes changes(variables);
    int const count = variables.empty() ? 0 : variables.front().samples.size();
    for (int i = 0; i < count && !out.failed(); ++i) {
        if (i % Block == 0)
            changes.load(variables, i / Block);
        writeTime(out, halfStepTime(i, timeStep));
        writeComments(out, i, count, triggerIndex);
        out.append(edgeAway);
        changes.forEach(i % Block,
                        [&](std::size_t place) { writeChange(out, i, variables[place]); });
        writeTime(out, timeStep * (static_cast<unsigned long long>(i) + 1));
        out.append(edgeBack);
    }
    writeTime(out, timeStep * (static_cast<unsigned long long>(count) + 1));
    return out.finish();
}

bool exportVCD(QString const& path, QString const& moduleName, QString const& clockName,
               bool clockLevel, QString const& timeUnit, unsigned long long timeStep,
               int triggerIndex, QDomElement const& window)
{
    QFile file(path);
    if (!openForExport(file))
        return false;
    exportVCD(file, moduleName, clockName, clockLevel, timeUnit, timeStep, triggerIndex, window);
    return true;
}

} // namespace VEK
