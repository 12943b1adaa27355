#include "image/matchvalue.h"

#include "model/capturecore.h"

#include <QRegularExpression>

#include <gmpxx.h>
#include <limits>

namespace VEK {

namespace {

bool isRadix(int radix)
{
    return radix == 2 || radix == 8 || radix == 10 || radix == 16;
}

QString zeros(int width)
{
    return QString(qMax(width, 0), QLatin1Char('0'));
}

} // namespace

int digitCount(int width, int radix)
{
    switch (radix) {
    case 2:
        return width;
    case 8:
        return (width + 2) / 3;
    case 10:
        return int(width * 0.3010299956639812) + 1;
    case 16:
        return (width + 3) / 4;
    default:
        return 0;
    }
}

QString lettersAllowed(int radix, int func, int matchType)
{
    if (radix != 2 || func > FuncNotEqual)
        return QString();
    bool const edges = matchType == MatchBasicEdges || matchType == MatchExtendedEdges ||
                       matchType == MatchRangeEdges;
    return edges ? QStringLiteral("XRFBN") : QStringLiteral("X");
}

QString valuePattern(int radix, int func, int matchType)
{
    switch (radix) {
    case 8:
        return QStringLiteral("[0-7]*");
    case 10:
        return QStringLiteral("[0-9]*");
    case 16:
        return QStringLiteral("[A-F0-9]*");
    default:
        return QStringLiteral("[01%1]*").arg(lettersAllowed(radix, func, matchType));
    }
}

bool holdsLetters(QString const& text)
{
    static QRegularExpression const letters(QStringLiteral("[XRFBN]"));
    return text.contains(letters);
}

QString BitWidthAdjust(QString const& text, int n)
{
    return n < 1 ? QString() : text.right(n).rightJustified(n, QLatin1Char('0'));
}

bool checkExcessBitWidth(QString const& text, int n)
{
    return n >= text.size();
}

QString changeRadix(const QString& text, int from, int to, int width)
{
    // GMP would take blanks and a sign as well
    static QRegularExpression const digits(QStringLiteral("\\A[0-9A-Fa-f]+\\z"));
    mpz_class number;
    if (!isRadix(from) || !isRadix(to) || !digits.match(text).hasMatch() ||
        number.set_str(text.toStdString(), from) != 0)
        return zeros(width);
    return QString::fromStdString(number.get_str(to == 16 ? -16 : to)); // minus: capital letters
}

QString bitsOfText(QString const& text, int radix, int width)
{
    return BitWidthAdjust(radix == 2 ? text : changeRadix(text, radix, 2, width), width);
}

QString textOfBits(QString const& bits, int radix)
{
    int const width = bits.size();
    if (radix == 2)
        return bits;
    return BitWidthAdjust(changeRadix(bits, 2, radix, width), digitCount(width, radix));
}

int counterLimit(int counterWidth)
{
    if (counterWidth >= std::numeric_limits<int>::digits)
        return std::numeric_limits<int>::max();
    return counterWidth > 0 ? 1 << counterWidth : 1;
}

} // namespace VEK
