#include "cli/report.h"

#include <algorithm>

namespace VEK::Cli {
namespace {

constexpr int ShaDigits = 8;

/// Turns the direction of what follows it, which then reads as something else.
bool turnsText(QChar letter)
{
    ushort const code = letter.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

} // namespace

QVector<QByteArray> Report::configurationTitles() const
{
    QVector<QByteArray> titles;
    QHash<QByteArray, int> uses;
    for (QByteArray const& text : configurations.texts()) {
        titles << text.left(text.lastIndexOf('\n'));
        ++uses[titles.last()];
    }
    for (int i = 0; i < titles.size(); ++i) {
        if (uses.value(titles.at(i)) > 1) {
            QByteArray const& text = configurations.at(i);
            titles[i] += " (" + text.mid(text.lastIndexOf('\n') + 1, ShaDigits) + ')';
        }
    }
    return titles;
}

bool Report::isAllPassed() const
{
    return !runs.isEmpty() && broken.isEmpty() && missing.isEmpty() &&
           std::all_of(runs.begin(), runs.end(), [](ReportRun const& run) {
               return !run.isLast || run.outcome == Outcome::Passed;
           });
}

QString printable(QByteArray const& utf8)
{
    QString text = QString::fromUtf8(utf8);
    for (int i = 0; i < text.size(); ++i) {
        QChar const letter = text.at(i);
        bool const isPair =
            letter.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (letter.category() == QChar::Other_Control || letter.isSurrogate() ||
                 letter.isNonCharacter() || turnsText(letter))
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace VEK::Cli
