#include "dump/vcdnames.h"

#include <QRegularExpression>

namespace VEK::Dump {
namespace {

/// A name of a design in the form of `VcdVariable::path`.
QByteArray normalised(QString const& name)
{
    QByteArray path = name.trimmed().toUtf8();
    path.replace('/', '.');
    path.replace(".\\", ".");
    return path.startsWith('\\') ? path.mid(1) : path;
}

QByteArray tail(QByteArray const& path)
{
    return path.mid(path.lastIndexOf('.') + 1);
}

bool endsAtSeparator(QByteArray const& path, QByteArray const& name)
{
    return path.endsWith(name) && path.at(path.size() - name.size() - 1) == '.';
}

} // namespace

void VcdNames::want(QString const& name)
{
    static QRegularExpression const indexed(QStringLiteral(R"(\A(.+?)\s*\[\s*(-?\d{1,9})\s*\]\z)"),
                                            QRegularExpression::DotMatchesEverythingOption);
    Wanted wanted;
    wanted.full = normalised(name);
    int const place = int(m_wanted.size());
    m_byTail.insert(tail(wanted.full), place);
    QRegularExpressionMatch const match = indexed.match(QString::fromUtf8(wanted.full));
    if (match.hasMatch()) {
        wanted.base = match.captured(1).toUtf8();
        wanted.index = match.captured(2).toInt();
        m_byTail.insert(tail(wanted.base), place);
    }
    m_wanted.push_back(wanted);
}

void VcdNames::visit(VcdVariable const& variable)
{
    if (variable.isBits)
        m_declared.add(variable.path);
    QByteArray const key = tail(variable.path);
    for (auto it = m_byTail.constFind(key); it != m_byTail.constEnd() && it.key() == key; ++it) {
        Wanted& wanted = m_wanted[std::size_t(it.value())];
        if (!wanted.base.isEmpty())
            offer(wanted, variable, wanted.base, true);
        offer(wanted, variable, wanted.full, false);
    }
}

void VcdNames::offer(Wanted& wanted, VcdVariable const& variable, QByteArray const& name,
                     bool hasIndex)
{
    bool const isWhole = variable.path == name;
    if (!isWhole && !(variable.path.size() > name.size() && endsAtSeparator(variable.path, name)))
        return;
    int const low = qMin(variable.msb, variable.lsb);
    int const high = qMax(variable.msb, variable.lsb);
    bool const hasBit =
        hasIndex ? wanted.index >= low && wanted.index <= high : variable.width == 1;
    if (!variable.isBits || variable.width < 1 || !hasBit) {
        wanted.unfit = true;
        return;
    }
    Match match;
    match.bit.code = variable.code;
    match.bit.bit = hasIndex ? qAbs(wanted.index - variable.lsb) : 0;
    match.path = variable.path;
    match.line = variable.line;
    match.isWhole = isWhole;
    Match& best = wanted.match;
    if (best.bit.code < 0 || (isWhole && !best.isWhole))
        best = match;
    else if (best.isWhole == isWhole &&
             (best.bit.code != match.bit.code || best.bit.bit != match.bit.bit)) {
        best.rival = variable.path;
        best.rivalLine = variable.line;
    }
}

std::vector<VcdBit> VcdNames::bits() const
{
    std::vector<VcdBit> bits;
    for (Wanted const& wanted : m_wanted)
        bits.push_back(wanted.match.bit);
    return bits;
}

QString VcdNames::problems() const
{
    QStringList missing;
    QStringList texts;
    for (Wanted const& wanted : m_wanted) {
        QString const name = QString::fromUtf8(wanted.full);
        Match const& match = wanted.match;
        if (match.bit.code < 0 && wanted.unfit)
            texts.append(QStringLiteral("%1 is not one bit of its variable").arg(name));
        else if (match.bit.code < 0)
            missing.append(name.isEmpty() ? QStringLiteral("(a signal without a name)") : name);
        else if (!match.rival.isEmpty() && match.rival == match.path)
            texts.append(QStringLiteral("%1 may be the %2 of line %3 or that of line %4")
                             .arg(name, QString::fromUtf8(match.path))
                             .arg(match.line)
                             .arg(match.rivalLine));
        else if (!match.rival.isEmpty())
            texts.append(
                QStringLiteral("%1 may be %2 or %3 (the whole path or a scope tells)")
                    .arg(name, QString::fromUtf8(match.path), QString::fromUtf8(match.rival)));
    }
    // A net that several cores or ports watch is wanted more than once.
    missing.removeDuplicates();
    texts.removeDuplicates();
    if (!missing.isEmpty())
        texts =
            QStringList(QStringLiteral("it has no %1").arg(missing.join(QStringLiteral(", ")))) +
            hints() + texts;
    return texts.join(QStringLiteral("; "));
}

/// What the first missing names may have meant; one hint for all bits of a vector.
QStringList VcdNames::hints() const
{
    constexpr int MaxHints = 8; // a wrong scope misses them all
    QStringList hints;
    QByteArray last;
    for (Wanted const& wanted : m_wanted) {
        QByteArray const& name = wanted.base.isEmpty() ? wanted.full : wanted.base;
        if (wanted.match.bit.code >= 0 || wanted.unfit || name.isEmpty() || name == last)
            continue;
        last = name;
        QStringList nearest;
        for (QByteArray const& path : m_declared.nearest(name))
            nearest.append(QString::fromUtf8(path));
        if (!nearest.isEmpty())
            hints.append(QStringLiteral("nearest to %1: %2")
                             .arg(QString::fromUtf8(name), nearest.join(QStringLiteral(", "))));
        if (hints.size() == MaxHints)
            break;
    }
    return hints;
}

} // namespace VEK::Dump
