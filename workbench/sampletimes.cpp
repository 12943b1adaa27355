#include "workbench/sampletimes.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>

namespace {

struct Unit
{
    char const* name;
    double seconds;
};

constexpr Unit Units[] = {{"s", 1}, {"ms", 1e-3}, {"us", 1e-6}, {"ns", 1e-9}, {"ps", 1e-12}};

QString count(int samples)
{
    return samples == 1 ? QStringLiteral("1 sample") : QStringLiteral("%1 samples").arg(samples);
}

} // namespace

QString durationText(double seconds)
{
    Unit const* unit = std::begin(Units);
    while (unit + 1 != std::end(Units) && std::abs(seconds) < 0.9999995 * unit->seconds)
        ++unit;
    return QStringLiteral("%1 %2").arg(QLocale::c().toString(seconds / unit->seconds, 'g', 4),
                                       QLatin1String(unit->name));
}

SampleTimes::SampleTimes(int length, int windows, int trigger, VEK::SampleClock const& clock)
    : m_length(length), m_windowLength(qMax(1, length / qMax(1, windows))), m_trigger(trigger),
      m_clock(clock)
{}

int SampleTimes::windowOf(int sample) const
{
    return sample / m_windowLength;
}

int SampleTimes::fromTrigger(int sample) const
{
    return sample % m_windowLength - m_trigger;
}

int SampleTimes::nextTrigger(int sample) const
{
    int trigger = windowOf(sample) * m_windowLength + m_trigger;
    if (trigger <= sample)
        trigger += m_windowLength;
    return trigger < m_length ? trigger : m_trigger;
}

QString SampleTimes::withTime(QString const& text, int samples) const
{
    if (!m_clock.isKnown())
        return text;
    return QStringLiteral("%1 (%2)").arg(text, durationText(samples * m_clock.period()));
}

QString SampleTimes::distance(int from, int to) const
{
    QString const text = count(qAbs(to - from));
    return windowOf(from) == windowOf(to) ? withTime(text, qAbs(to - from))
                                          : text + QStringLiteral(" across windows");
}

QString SampleTimes::place(int sample) const
{
    QString text = QStringLiteral("sample %1").arg(sample);
    if (m_length > m_windowLength)
        text += QStringLiteral(" in window %1").arg(windowOf(sample));
    int const offset = fromTrigger(sample);
    if (offset == 0)
        return text + QStringLiteral(", the trigger");
    return withTime(text + (offset > 0 ? QStringLiteral(", %1 behind the trigger")
                                       : QStringLiteral(", %1 before the trigger"))
                               .arg(qAbs(offset)),
                    qAbs(offset));
}

std::optional<int> SampleTimes::parse(QString const& text, int near) const
{
    static QRegularExpression const form(
        QStringLiteral("\\A\\s*([+-]?)(\\d{1,10}(?:\\.\\d{1,12})?)\\s*(s|ms|us|ns|ps)?\\s*\\z"));
    QRegularExpressionMatch const match = form.match(text);
    bool const isTime = !match.captured(3).isEmpty();
    bool const isWhole = !match.captured(2).contains(QLatin1Char('.'));
    if (!match.hasMatch() || (isTime ? !m_clock.isKnown() : !isWhole))
        return std::nullopt;
    double samples = match.captured(2).toDouble();
    for (Unit const& unit : Units)
        if (match.captured(3) == QLatin1String(unit.name))
            samples = std::round(samples * unit.seconds / m_clock.period());
    if (match.captured(1) == QLatin1String("-"))
        samples = -samples;
    if (isTime || !match.captured(1).isEmpty())
        samples += windowOf(near) * m_windowLength + m_trigger;
    if (samples < 0 || samples >= m_length)
        return std::nullopt;
    return int(samples);
}
