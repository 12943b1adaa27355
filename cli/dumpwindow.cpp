#include "cli/dumpwindow.h"

#include "cli/exitstatus.h"
#include "dump/vcdreader.h"
#include "dump/vcdsampler.h"
#include "model/bits.h"
#include "results/packedrows.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace VEK::Cli {
namespace {

using Dump::VcdReader;
using Dump::VcdVariable;

constexpr int MaxNets = 1 << 17;

Failure usage(QString const& path, QString const& what)
{
    return {Status::Usage, path + QStringLiteral(": ") + what};
}

QString eachChangeWarning(QString const& path)
{
    return path +
           QStringLiteral(": no clock is given, so it has a sample for each time of a change");
}

SignalItem itemOf(QString const& name)
{
    SignalItem item;
    item.name = name;
    item.captureEnable = true;
    return item;
}

/// A variable as a signal, or a bus with its nets.
SignalItem itemOf(VcdVariable const& variable, QString const& name)
{
    SignalItem item = itemOf(name);
    int const step = variable.msb < variable.lsb ? 1 : -1;
    for (int i = 0; i < variable.width && variable.width > 1; ++i)
        item.signalList << itemOf(name + QStringLiteral("[%1]").arg(variable.msb + i * step));
    return item;
}

/// Reads a dump of ours.
class OwnDump
{
public:
    OwnDump(QString const& path, QIODevice& device, DumpSampling const& sampling)
        : m_path(path), m_sampling(sampling), m_reader(device)
    {
        m_reader.setSectionVisitor(
            [this](QByteArray const& name, QByteArray const& text) { visitSection(name, text); });
    }

    void readHeader()
    {
        if (!m_reader.readHeader([this](VcdVariable const& variable) { visit(variable); }))
            throw broken(m_reader.error());
    }
    DumpWindow::Kind kind() const { return m_dump.kind; }
    DumpWindow read();

    /// Names of all nets, those of a vector one by one.
    QStringList nets() const;
    QList<SignalItem> simulatedLayout() const;

private:
    /// Where the value of a code goes.
    struct Target
    {
        int first = 0;
        int width = 0;
        bool isKnown = false;
    };
    /// The values of a plain dump from a time on.
    struct State
    {
        quint64 time;
        std::vector<quint64> row;
    };

    Failure broken(QString const& what) const
    {
        return {Status::Configuration, m_path + QStringLiteral(": ") + what};
    }
    void visitSection(QByteArray const& name, QByteArray const& text);
    void visit(VcdVariable const& variable);
    void layOut();
    bool change();
    void readCaptured();
    void readPlain();
    void spread(std::vector<State> const& states, quint64 end);
    std::function<qint64(quint64)> sampleAt(std::vector<State> const& states, quint64 end);
    void takeRow(PackedRows& rows, std::vector<quint64> const& row) const;
    void leaveOutUnknown();

    QString m_path;
    DumpSampling const& m_sampling;
    VcdReader m_reader;
    DumpWindow m_dump;
    QString m_unit;
    quint64 m_unitsEach = 1;
    std::vector<VcdVariable> m_variables;
    std::vector<Target> m_targets; ///< By identifier code; of width 0 for the first variable.
    std::vector<quint64> m_now;
    int m_nets = 0;
    int m_lead = 0; ///< Code of the first variable: the clock, or the trigger.
    quint64 m_triggerTime = 0;
    bool m_hasTrigger = false;
};

void OwnDump::visitSection(QByteArray const& name, QByteArray const& text)
{
    static QRegularExpression const mark(QStringLiteral("\\ASample (\\d{1,9}) \\(Trigger\\)\\z"));
    static QRegularExpression const scale(QStringLiteral("\\A(\\d{1,9}) *([munpf]?s)\\z"));
    if (name == "$comment" && text == "Captured on the chip")
        m_dump.kind = DumpWindow::Captured;
    else if (name == "$version" && text == "vek")
        m_dump.kind = DumpWindow::Plain;
    QString const words = QString::fromUtf8(text);
    QRegularExpressionMatch const trigger = mark.match(words);
    if (name == "$comment" && trigger.hasMatch() && m_dump.kind == DumpWindow::Captured)
        m_dump.window.trigger = trigger.captured(1).toInt();
    QRegularExpressionMatch const times = scale.match(words);
    if (name == "$timescale" && times.hasMatch()) {
        m_unitsEach = times.captured(1).toULongLong();
        m_unit = times.captured(2);
    }
}

void OwnDump::visit(VcdVariable const& variable)
{
    if (!variable.isBits)
        return;
    m_nets += std::min(variable.width, MaxNets + 1);
    if (m_nets > MaxNets)
        throw broken(QStringLiteral("it has more than %1 nets").arg(MaxNets));
    m_variables.push_back(variable);
}

QStringList OwnDump::nets() const
{
    QStringList names;
    QList<SignalItem> const flat = flatSignals(simulatedLayout());
    for (SignalItem const& item : flat)
        names << item.name;
    return names;
}

/// A path may be declared several times, as by functions; the first one counts.
QList<SignalItem> OwnDump::simulatedLayout() const
{
    QList<SignalItem> layout;
    QSet<QString> seen;
    for (VcdVariable const& variable : m_variables) {
        QString path = QString::fromUtf8(variable.path);
        if (variable.width == 1 && variable.hasRange)
            path += QStringLiteral("[%1]").arg(variable.msb);
        if (!seen.contains(path))
            layout << itemOf(variable, path);
        seen << path;
    }
    return layout;
}

/// The first variable is the clock or the trigger, the others are the capture's.
void OwnDump::layOut()
{
    if (m_variables.size() < 2)
        throw broken(QStringLiteral("it has no signals"));
    VcdVariable const& lead = m_variables.front();
    QByteArray const scope = lead.scope;
    m_lead = lead.code;
    m_dump.module = QString::fromUtf8(scope.left(scope.size() - 1));
    if (m_dump.kind == DumpWindow::Captured)
        m_dump.clock = QString::fromUtf8(lead.name);
    m_targets.resize(std::size_t(m_reader.codeCount()));
    int place = 0;
    for (std::size_t i = 1; i < m_variables.size(); ++i) {
        VcdVariable const& variable = m_variables[i];
        Target& target = m_targets[std::size_t(variable.code)];
        if (target.width > 0 || variable.code == m_lead)
            throw broken(QStringLiteral("two variables have one code"));
        target = {place, variable.width, false};
        place += variable.width;
        QByteArray const name = variable.width > 1 ? variable.path : variable.scope + variable.name;
        bool const isBelow = name.startsWith(scope);
        m_dump.window.layout << itemOf(variable,
                                       QString::fromUtf8(isBelow ? name.mid(scope.size()) : name));
    }
    m_nets = place;
    m_now.resize(std::size_t(place + 63) / 64);
}

/// Takes a value over. True if it was the first variable's.
bool OwnDump::change()
{
    if (m_reader.code() == m_lead)
        return true;
    Target& target = m_targets[std::size_t(m_reader.code())];
    std::string_view const value = m_reader.value();
    for (int bit = 0; bit < target.width; ++bit) {
        bool const isThere = std::size_t(bit) < value.size();
        char const c = isThere ? value[value.size() - 1 - std::size_t(bit)] : '0';
        int const place = target.first + target.width - 1 - bit;
        quint64 const mask = quint64(1) << (place % 64);
        quint64& word = m_now[std::size_t(place / 64)];
        word = VcdReader::isOne(c) ? word | mask : word & ~mask;
        target.isKnown = target.isKnown || c == '0' || c == '1';
    }
    return false;
}

void OwnDump::takeRow(PackedRows& rows, std::vector<quint64> const& row) const
{
    std::copy(row.begin(), row.end(), rows.row());
    if (!rows.next())
        throw broken(QStringLiteral("these are more samples than a capture has"));
}

/// A sample stands in front of the clock's edge back to the level that it has at first.
void OwnDump::readCaptured()
{
    PackedRows rows(m_nets);
    char level = 0;
    char clock = 0;
    quint64 step = 0;
    for (VcdReader::Event event = m_reader.next(); event != VcdReader::Event::End;
         event = m_reader.next()) {
        if (event == VcdReader::Event::Cut || event == VcdReader::Event::Error)
            throw broken(m_reader.error());
        if (event != VcdReader::Event::Change || !change())
            continue;
        char const value = m_reader.value()[0];
        level = level ? level : value;
        if (clock && value == level && clock != level) {
            step = rows.count() ? step : m_reader.time();
            if (step == 0 || m_reader.time() != step * (quint64(rows.count()) + 1))
                throw broken(QStringLiteral("its clock has no edge at %1 times %2")
                                 .arg(rows.count() + 1)
                                 .arg(step));
            takeRow(rows, m_now);
        }
        clock = value;
    }
    if (rows.count() == 0 || m_reader.time() != step * (quint64(rows.count()) + 1))
        throw broken(QStringLiteral("it ends before its last time"));
    m_dump.window.samples = rows.take();
    m_dump.window.timeUnit = m_unit;
    m_dump.window.timeStep = step * m_unitsEach;
}

void OwnDump::readPlain()
{
    std::vector<State> states;
    quint64 end = 0;
    for (VcdReader::Event event = m_reader.next(); event != VcdReader::Event::End;
         event = m_reader.next()) {
        if (event == VcdReader::Event::Cut || event == VcdReader::Event::Error)
            throw broken(m_reader.error());
        end = m_reader.time();
        if (event != VcdReader::Event::Change)
            continue;
        if (change()) {
            m_triggerTime = end;
            m_hasTrigger = true;
        } else if (!states.empty() && states.back().time == end) {
            states.back().row = m_now;
        } else {
            states.push_back({end, m_now});
        }
        if (qint64(states.size() * m_now.size()) > (qint64(1) << 27))
            throw broken(QStringLiteral("these are more samples than a capture has"));
    }
    if (states.empty() || states.front().time != 0 || end <= states.back().time)
        throw broken(QStringLiteral("it ends before its last sample"));
    spread(states, end);
}

/// Gives what tells the sample of a time; times must come in order.
std::function<qint64(quint64)> OwnDump::sampleAt(std::vector<State> const& states, quint64 end)
{
    if (m_sampling.times.isKnown()) {
        m_dump.window.clock = m_sampling.times;
        return [times = SampleClock::Times(m_sampling.times), sample = qint64(0),
                this](quint64 time) mutable {
            for (; times.now() < time; ++sample) {
                if (sample == std::numeric_limits<int>::max())
                    throw broken(QStringLiteral("these are more samples than a capture has"));
                times.next();
            }
            if (times.now() != time)
                throw broken(QStringLiteral("no sample of that clock is at %1").arg(time));
            return sample;
        };
    }
    if (m_sampling.samples > 0) {
        long double const step = (long double)(end) / m_sampling.samples;
        if (end % quint64(m_sampling.samples) == 0)
            m_dump.window.clock.setPeriod(end / quint64(m_sampling.samples), m_unit);
        return [step](quint64 time) { return qint64(std::llround((long double)(time) / step)); };
    }
    quint64 divisor = end;
    for (State const& state : states)
        divisor = std::gcd(divisor, state.time);
    bool const isTold = divisor == 1 && m_unit == QLatin1String("ns");
    if (!isTold && m_sampling.eachChange) {
        m_dump.warnings << eachChangeWarning(m_path);
        return [&states, end](quint64 time) {
            auto const isBehind = [](quint64 t, State const& state) { return t < state.time; };
            auto const next = std::upper_bound(states.begin(), states.end(), time, isBehind);
            return qint64(next - states.begin()) - (time < end ? 1 : 0);
        };
    }
    if (!isTold)
        throw usage(m_path, QStringLiteral("its times don't tell the samples: --clock says the "
                                           "sample clock, such as --clock 50MHz (1GHz when a "
                                           "sample is a nanosecond)"));
    return [](quint64 time) {
        return qint64(std::min<quint64>(time, std::numeric_limits<qint64>::max()));
    };
}

void OwnDump::spread(std::vector<State> const& states, quint64 end)
{
    std::function<qint64(quint64)> at = sampleAt(states, end);
    PackedRows rows(m_nets);
    qint64 trigger = -1;
    for (std::size_t i = 0; i < states.size(); ++i) {
        bool const isLast = i + 1 == states.size();
        quint64 const stop = isLast ? end : states[i + 1].time;
        if (m_hasTrigger && m_triggerTime >= states[i].time && m_triggerTime < stop)
            trigger = at(m_triggerTime);
        for (qint64 const next = at(stop); rows.count() < next;)
            takeRow(rows, states[i].row);
    }
    if (rows.count() == 0)
        throw broken(QStringLiteral("there are no samples"));
    if (trigger >= 0)
        m_dump.window.trigger = int(trigger);
    m_dump.window.samples = rows.take();
}

/// The export leaves out signals of windows that are shorter than their list of signals.
void OwnDump::leaveOutUnknown()
{
    QList<SignalItem> layout;
    QList<QBitArray> samples;
    QStringList missing;
    for (int i = 0, place = 0; i < m_dump.window.layout.size(); ++i) {
        SignalItem const& item = m_dump.window.layout.at(i);
        int const width = std::max(1, item.signalList.size());
        if (m_targets[std::size_t(m_variables[std::size_t(i) + 1].code)].isKnown) {
            layout << item;
            samples << m_dump.window.samples.mid(place, width);
        } else {
            missing << item.name;
        }
        place += width;
    }
    if (samples.isEmpty())
        throw broken(QStringLiteral("no signal has a value"));
    if (!missing.isEmpty())
        m_dump.warnings << QStringLiteral("%1: no values of %2")
                               .arg(m_path, missing.join(QStringLiteral(", ")));
    m_dump.window.layout = layout;
    m_dump.window.samples = samples;
}

DumpWindow OwnDump::read()
{
    layOut();
    if (m_dump.kind == DumpWindow::Captured)
        readCaptured();
    else
        readPlain();
    leaveOutUnknown();
    return m_dump;
}

/// Lowest column first, as `PackedRows` has them.
QList<QBitArray> columnsOf(Dump::SampleTable const& table)
{
    PackedRows rows(table.signalCount());
    for (qint64 row = 0; row < table.rowCount(); ++row) {
        for (int word = 0; word < table.wordsPerRow(); ++word)
            rows.row()[word] = mirrored(table.row(row)[word]);
        rows.next(); // a table holds no more than these do
    }
    return rows.take();
}

DumpWindow readSimulated(QString const& path, OwnDump const& header, DumpSampling const& sampling)
{
    if (sampling.clock.isEmpty() && !sampling.eachChange)
        throw usage(path, QStringLiteral("it is a simulator's dump: --clock NAME says at which "
                                         "clock it is to be sampled"));
    DumpWindow dump;
    dump.clock = sampling.clock;
    Dump::SampleRequest request{sampling.nets, sampling.clock};
    if (request.signalNames.isEmpty()) {
        dump.window.layout = header.simulatedLayout();
        request.signalNames = header.nets();
    } else {
        for (QString const& net : sampling.nets)
            dump.window.layout << itemOf(net);
    }
    if (request.signalNames.isEmpty())
        throw Failure{Status::Configuration, path + QStringLiteral(": it has no signals")};
    Dump::SampledStimulus stimulus;
    QString error;
    if (!Dump::sampleVcdFile(path, {request}, stimulus, error))
        throw Failure{Status::Configuration, error};
    if (!stimulus.warning.isEmpty())
        dump.warnings << stimulus.warning;
    if (sampling.clock.isEmpty())
        dump.warnings << eachChangeWarning(path);
    dump.window.samples = columnsOf(stimulus.tables.front());
    return dump;
}

} // namespace

DumpWindow readDumpWindow(QString const& path, DumpSampling const& sampling)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure{Status::Configuration,
                      QStringLiteral("%1: %2").arg(path, file.errorString())};
    OwnDump dump(path, file, sampling);
    dump.readHeader();
    return dump.kind() == DumpWindow::Simulated ? readSimulated(path, dump, sampling) : dump.read();
}

} // namespace VEK::Cli
