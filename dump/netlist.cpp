#include "dump/netlist.h"

namespace VEK::Dump {
namespace {

/// What is known of the values of an identifier code.
class Activity
{
public:
    void change(quint64 time, bool one)
    {
        m_changes += m_isKnown;
        bool const rises = one && !m_isOne && m_isKnown;
        m_isKnown = true;
        m_isOne = one;
        if (rises)
            rise(time);
    }

    qint64 changes() const { return m_changes; }

    /// A few pauses of a gated clock don't matter.
    bool isRegular() const
    {
        return m_periods >= MinPeriods && m_regular * 100 >= m_periods * MinShare;
    }

private:
    static constexpr qint64 MinPeriods = 4;
    static constexpr qint64 MinShare = 90; ///< Per cent.

    void rise(quint64 time)
    {
        quint64 const period = time - m_lastRise;
        if (m_hasRisen) {
            m_regular += m_periods == 0 || period == m_period;
            m_period = period;
            ++m_periods;
        }
        m_lastRise = time;
        m_hasRisen = true;
    }

    qint64 m_changes = 0;
    qint64 m_periods = 0;
    qint64 m_regular = 0; ///< Periods like the one before.
    quint64 m_lastRise = 0;
    quint64 m_period = 0;
    bool m_isKnown = false;
    bool m_isOne = false;
    bool m_hasRisen = false;
};

bool readActivity(VcdReader& reader, std::vector<Activity>& activity, QString& warning)
{
    for (;;) {
        switch (reader.next()) {
        case VcdReader::Event::Change:
            if (!reader.value().empty()) // a real has no value of bits
                activity[std::size_t(reader.code())].change(
                    reader.time(), VcdReader::isOne(reader.value().back()));
            break;
        case VcdReader::Event::Time:
        case VcdReader::Event::DumpOff:
        case VcdReader::Event::DumpOn:
            break;
        case VcdReader::Event::Cut:
            warning = reader.error();
            return true;
        case VcdReader::Event::End:
            return true;
        case VcdReader::Event::Error:
            return false;
        }
    }
}

} // namespace

bool listNets(QIODevice& device, std::vector<Net>& nets, QString& warning, QString& error)
{
    VcdReader reader(device);
    std::vector<Activity> activity;
    bool const ok = reader.readHeader([&nets](VcdVariable const& variable) {
        nets.push_back({variable, 0, false});
    });
    activity.resize(std::size_t(reader.codeCount()));
    if (!ok || !readActivity(reader, activity, warning)) {
        error = reader.error();
        return false;
    }
    for (Net& net : nets) {
        Activity const& of = activity[std::size_t(net.variable.code)];
        net.changes = of.changes();
        net.looksLikeClock = net.variable.width == 1 && net.variable.isBits && of.isRegular();
    }
    return true;
}

NetPattern::NetPattern(QString const& pattern)
{
    QString form =
        QRegularExpression::escape(QString(pattern).replace(QLatin1Char('/'), QLatin1Char('.')));
    form.replace(QStringLiteral("\\*"), QStringLiteral(".*"))
        .replace(QStringLiteral("\\?"), QStringLiteral("."));
    m_form.setPattern(QStringLiteral("\\A(?:.*\\.)?(?:%1)\\z").arg(form));
    m_form.setPatternOptions(QRegularExpression::DotMatchesEverythingOption);
}

bool NetPattern::fits(QByteArray const& path) const
{
    return m_form.match(QString::fromUtf8(path)).hasMatch();
}

} // namespace VEK::Dump
