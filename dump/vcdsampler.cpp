#include "dump/vcdsampler.h"

#include "dump/vcdnames.h"
#include "dump/vcdvalue.h"

#include <QFile>

#include <algorithm>

namespace VEK::Dump {
namespace {

/// One core's view of the dump while it is read.
struct Tap
{
    std::vector<quint64> before; ///< Values at the end of the last time.
    std::vector<quint64> now;
    bool changed = false;
    bool clockBefore = false;
    bool clockNow = false;
    bool clockKnown = false;
    bool hasClock = false;
    bool hasRow = false;
};

/// Where bits of a variable that lie side by side go, the highest one first.
struct Target
{
    static constexpr int Clock = -1;

    int tap = 0;
    int position = 0; ///< Of the highest in the row, or `Clock`; all lie in one word of the row.
    int bit = 0;      ///< The lowest of the variable's bits.
    int count = 1;
};

/// What becomes of an identifier code.
struct Use
{
    std::vector<Target> targets;
    std::size_t words = 0; ///< That hold the bits that are wanted of its value.
};

quint64 lowest(int count)
{
    return count == 64 ? ~quint64(0) : (quint64(1) << count) - 1;
}

/// `count` bits from `bit` on; what lies behind the words is zero.
quint64 field(std::vector<quint64> const& words, int bit, int count)
{
    std::size_t const word = std::size_t(bit / 64);
    int const shift = bit % 64;
    quint64 bits = words[word] >> shift;
    if (shift > 0 && word + 1 < words.size())
        bits |= words[word + 1] << (64 - shift);
    return bits & lowest(count);
}

class Sampler
{
public:
    Sampler(QIODevice& device, std::vector<SampleRequest> const& requests, RowSink const& take)
        : m_reader(device), m_requests(requests), m_take(take)
    {}

    bool run(QString& warning, QString& error)
    {
        bool const ok = prepare() && readValues() && checkRows();
        if (m_isCut)
            warning = QStringLiteral("%1; its last time is left out").arg(m_reader.error());
        QStringList problems{m_error, m_reader.error()};
        problems.removeAll(QString());
        error = ok ? QString() : problems.join(QStringLiteral("; "));
        return ok;
    }

private:
    bool prepare();
    void addTarget(int code, Target const& target);
    bool readValues();
    bool checkRows();
    void change();
    void changeClock(Tap& tap, bool value);
    bool endOfTime();

    VcdReader m_reader;
    std::vector<SampleRequest> const& m_requests;
    RowSink const& m_take;
    std::vector<Tap> m_taps;
    std::vector<Use> m_uses;      ///< By identifier code.
    std::vector<quint64> m_value; ///< Of the change, packed.
    bool m_suspended = false;
    bool m_hasTime = false;
    bool m_isCut = false;
    QString m_error;
};

bool Sampler::prepare()
{
    VcdNames names;
    std::vector<Target> wanted;
    for (SampleRequest const& request : m_requests) {
        int const tap = int(m_taps.size());
        if (!request.clock.isEmpty()) {
            names.want(request.clock);
            wanted.push_back({tap, Target::Clock, 0});
        }
        for (int i = 0; i < request.signalNames.size(); ++i) {
            names.want(request.signalNames.at(i));
            wanted.push_back({tap, i, 0});
        }
        m_taps.emplace_back();
        m_taps.back().hasClock = !request.clock.isEmpty();
        m_taps.back().before.resize(std::size_t(SampleTable::wordsFor(request.signalNames.size())));
        m_taps.back().now = m_taps.back().before;
    }
    if (!m_reader.readHeader([&names](VcdVariable const& variable) { names.visit(variable); }))
        return false;
    m_error = names.problems();
    if (!m_error.isEmpty())
        return false;
    m_uses.resize(std::size_t(m_reader.codeCount()));
    std::vector<VcdBit> const bits = names.bits();
    for (std::size_t i = 0; i < bits.size(); ++i) {
        wanted[i].bit = bits[i].bit;
        addTarget(bits[i].code, wanted[i]);
    }
    return true;
}

/// One bit, which may continue the ones before.
void Sampler::addTarget(int code, Target const& target)
{
    Use& use = m_uses[std::size_t(code)];
    use.words = std::max(use.words, std::size_t(target.bit / 64 + 1));
    if (!use.targets.empty() && target.position != Target::Clock && target.position % 64 != 0) {
        Target& last = use.targets.back();
        if (last.tap == target.tap && last.position != Target::Clock &&
            last.position + last.count == target.position && last.bit == target.bit + 1) {
            last.bit = target.bit;
            ++last.count;
            return;
        }
    }
    use.targets.push_back(target);
}

bool Sampler::readValues()
{
    for (;;) {
        switch (m_reader.next()) {
        case VcdReader::Event::Time:
            if (!endOfTime())
                return false;
            m_hasTime = true;
            break;
        case VcdReader::Event::Change:
            change();
            break;
        case VcdReader::Event::DumpOff:
            m_suspended = true;
            for (Tap& tap : m_taps)
                tap.clockKnown = false;
            break;
        case VcdReader::Event::DumpOn:
            m_suspended = false;
            break;
        case VcdReader::Event::End:
            return endOfTime();
        case VcdReader::Event::Cut:
            m_isCut = true;
            return true;
        case VcdReader::Event::Error:
            return false;
        }
    }
}

void Sampler::change()
{
    Use const& use = m_uses[std::size_t(m_reader.code())];
    if (use.targets.empty())
        return;
    m_value.resize(use.words);
    packValue(m_reader.value(), m_value);
    for (Target const& target : use.targets) {
        Tap& tap = m_taps[std::size_t(target.tap)];
        quint64 const bits = field(m_value, target.bit, target.count);
        if (target.position == Target::Clock) {
            changeClock(tap, bits);
            continue;
        }
        int const shift = 64 - target.position % 64 - target.count;
        quint64 const mask = lowest(target.count) << shift;
        quint64& word = tap.now[std::size_t(target.position / 64)];
        word = (word & ~mask) | bits << shift;
        tap.changed = true;
    }
}

void Sampler::changeClock(Tap& tap, bool value)
{
    if (m_suspended)
        return;
    tap.clockNow = value;
    if (!tap.clockKnown)
        tap.clockBefore = true; // no edge, whatever follows at this time
    tap.clockKnown = true;
}

bool Sampler::endOfTime()
{
    for (std::size_t i = 0; i < m_taps.size(); ++i) {
        Tap& tap = m_taps[i];
        bool const isEdge = tap.clockKnown && !tap.clockBefore && tap.clockNow;
        if (tap.hasClock ? isEdge : tap.changed && m_hasTime) {
            tap.hasRow = true;
            if (!m_take(int(i), tap.hasClock ? tap.before.data() : tap.now.data()))
                return false;
        }
        tap.clockBefore = tap.clockNow;
        if (tap.changed && tap.hasClock)
            tap.before = tap.now;
        tap.changed = tap.changed && !tap.hasClock && !m_hasTime;
    }
    return true;
}

bool Sampler::checkRows()
{
    for (std::size_t i = 0; i < m_taps.size(); ++i) {
        if (!m_taps[i].hasRow) {
            m_error =
                m_taps[i].hasClock
                    ? QStringLiteral("the clock %1 has no rising edge").arg(m_requests[i].clock)
                    : QStringLiteral("no signal has a value");
            return false;
        }
    }
    return true;
}

/// Opens a file for `read`, and names it in what that tells.
bool readFile(QString const& path, std::function<bool(QIODevice&)> const& read, QString& warning,
              QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    bool const ok = read(file);
    for (QString* text : {&warning, &error}) {
        if (!text->isEmpty())
            *text = QStringLiteral("%1: %2").arg(path, *text);
    }
    return ok;
}

} // namespace

bool streamVcd(QIODevice& device, std::vector<SampleRequest> const& requests, RowSink const& take,
               QString& warning, QString& error)
{
    warning.clear();
    return Sampler(device, requests, take).run(warning, error);
}

bool streamVcdFile(QString const& path, std::vector<SampleRequest> const& requests,
                   RowSink const& take, QString& warning, QString& error)
{
    auto const stream = [&](QIODevice& device) {
        return streamVcd(device, requests, take, warning, error);
    };
    return readFile(path, stream, warning, error);
}

bool sampleVcd(QIODevice& device, std::vector<SampleRequest> const& requests,
               SampledStimulus& stimulus, QString& error)
{
    stimulus = SampledStimulus();
    for (SampleRequest const& request : requests)
        stimulus.tables.emplace_back(request.signalNames.size());
    qint64 bytes = 0;
    RowSink const append = [&](int request, quint64 const* row) {
        SampleTable& table = stimulus.tables[std::size_t(request)];
        bytes += qint64(table.wordsPerRow()) * 8;
        if (bytes <= MaxTableBytes)
            table.append(row);
        return bytes <= MaxTableBytes;
    };
    bool const ok = streamVcd(device, requests, append, stimulus.warning, error);
    if (bytes > MaxTableBytes)
        error = QStringLiteral("more than %1 bytes of samples").arg(MaxTableBytes);
    return ok;
}

bool sampleVcdFile(QString const& path, std::vector<SampleRequest> const& requests,
                   SampledStimulus& stimulus, QString& error)
{
    auto const sample = [&](QIODevice& device) {
        return sampleVcd(device, requests, stimulus, error);
    };
    return readFile(path, sample, stimulus.warning, error);
}

} // namespace VEK::Dump
