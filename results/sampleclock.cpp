#include "results/sampleclock.h"

#include <QRegularExpression>

namespace VEK {
namespace {

constexpr quint64 Micro = 1000000;
constexpr quint64 MaxMicrohertz = 1000000ULL * 1000000 * Micro; // 1 THz

struct Unit
{
    char const* name;
    quint64 perSecond;
};
constexpr Unit Units[] = {{"s", 1},
                          {"ms", 1000},
                          {"us", 1000 * 1000},
                          {"ns", 1000 * 1000 * 1000},
                          {"ps", 1000ULL * 1000 * 1000 * 1000}};

/// The unit of a clock's times: the first that is exact, else the last.
Unit const& unitOf(quint64 microhertz)
{
    for (Unit const& unit : Units) {
        if (unit.perSecond * Micro % microhertz == 0)
            return unit;
    }
    return Units[4];
}

/// 10 to the power of the prefix.
int prefixPower(QString const& prefix)
{
    if (prefix.isEmpty())
        return 0;
    switch (prefix.at(0).unicode()) {
    case 'k':
    case 'K':
        return 3;
    case 'M':
        return 6;
    default:
        return 9;
    }
}

} // namespace

bool SampleClock::parse(QString const& text)
{
    static QRegularExpression const form(
        QStringLiteral("\\A(\\d+)(?:\\.(\\d+))?\\s*(?:([kKMG]?)Hz|([kKMG]))?\\z"));
    QRegularExpressionMatch const match = form.match(text.trimmed());
    QString const whole = match.captured(1);
    QString fraction = match.captured(2);
    while (fraction.endsWith(QLatin1Char('0')))
        fraction.chop(1);
    int const zeros = prefixPower(match.captured(3) + match.captured(4)) + 6 - fraction.size();
    if (!match.hasMatch() || zeros < 0)
        return false;
    bool ok = false;
    quint64 const microhertz =
        (whole + fraction + QString(zeros, QLatin1Char('0'))).toULongLong(&ok);
    if (!ok || microhertz == 0 || microhertz > MaxMicrohertz)
        return false;
    m_microhertz = microhertz;
    return true;
}

bool SampleClock::setPeriod(quint64 step, QString const& unit)
{
    for (Unit const& known : Units) {
        quint64 const parts = known.perSecond * Micro;
        if (unit != QLatin1String(known.name) || step == 0 || parts % step != 0)
            continue;
        quint64 const microhertz = parts / step;
        if (microhertz > MaxMicrohertz || &unitOf(microhertz) != &known)
            return false;
        m_microhertz = microhertz;
        return true;
    }
    return false;
}

QString SampleClock::unit() const
{
    return isKnown() ? QString::fromLatin1(unitOf(m_microhertz).name) : QString();
}

SampleClock::Times::Times(SampleClock const& clock)
{
    if (!clock.isKnown())
        return;
    quint64 const parts = unitOf(clock.m_microhertz).perSecond * Micro;
    m_step = parts / clock.m_microhertz;
    m_rest = parts % clock.m_microhertz;
    m_parts = clock.m_microhertz;
    m_carry = m_parts / 2;
}

void SampleClock::Times::next()
{
    m_time += m_step;
    m_carry += m_rest;
    if (m_carry >= m_parts) {
        m_carry -= m_parts;
        ++m_time;
    }
}

} // namespace VEK
