#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

#include <array>

namespace VEK::Cli {

/// How a run came out.
enum class Outcome : quint8 {
    Passed,
    Differed,
    NoTrigger,
    BoardError,
    Stopped,
    OutputError,
    Unfinished,
};

/// A row of the table that all forms of the report name outcomes by.
struct OutcomeRow
{
    char const* word;  ///< In JSON and the database.
    char const* title; ///< For people.
};

/// By `Outcome`.
constexpr std::array<OutcomeRow, 7> OutcomeTable{{
    {"passed", "passed"},
    {"differed", "differed"},
    {"no-trigger", "no trigger"},
    {"board-error", "board error"},
    {"stopped", "stopped"},
    {"output-error", "output error"},
    {"unfinished", "unfinished"},
}};

inline OutcomeRow const& rowOf(Outcome outcome)
{
    return OutcomeTable[std::size_t(outcome)];
}

/// What is kept of a run: little, since there may be a hundred thousand. Texts are UTF-8.
struct ReportRun
{
    QByteArray label;          ///< Names the capture; several attempts share it.
    QByteArray path;           ///< Of the manifest.
    QByteArray message;        ///< Why it did not pass; empty for one that did.
    qint64 started = 0;        ///< ms since 1970, UTC.
    qint32 duration = Unknown; ///< ms.
    int configuration = 0;     ///< Among the report's.
    int board = 0;             ///< Among the report's.
    int attempt = 0;
    Outcome outcome = Outcome::Unfinished;
    quint8 status = 0;       ///< The exit status.
    bool isCompared = false; ///< With a golden capture.
    bool isLast = false;     ///< The last attempt, the one that counts.

    static constexpr qint32 Unknown = -1;
};

/// A manifest or folder that can't be read.
struct BrokenManifest
{
    QByteArray path;
    QByteArray reason;
};

/// What several runs share, once, by number.
class SharedTexts
{
public:
    int numberOf(QByteArray const& text)
    {
        auto const found = m_numbers.constFind(text);
        if (found != m_numbers.constEnd())
            return *found;
        m_texts << text;
        return *m_numbers.insert(text, m_texts.size() - 1);
    }
    QVector<QByteArray> const& texts() const { return m_texts; }
    QByteArray const& at(int number) const { return m_texts.at(number); }
    int size() const { return m_texts.size(); }

private:
    QVector<QByteArray> m_texts;
    QHash<QByteArray, int> m_numbers;
};

/// Everything that was read.
struct Report
{
    QVector<ReportRun> runs;    ///< By label, and the attempts of one by their start.
    SharedTexts configurations; ///< By what tells them apart: name, overrides, SHA-256.
    SharedTexts boards;         ///< By their titles.
    QVector<BrokenManifest> broken;
    QVector<QByteArray> missing; ///< Labels that were expected, and have no run.
    bool isExpecting = false;    ///< There was a list of labels to expect.
    int unexpected = 0;          ///< Labels that are not on the list.
    int copies = 0;              ///< Manifests of a run that was read before; left out.
    int others = 0;              ///< Files in JSON that are no manifests; left out.

    /// Name, overrides, and where there are several of that name the beginning of the SHA-256.
    QVector<QByteArray> configurationTitles() const;
    /// Whether every capture passed, and nothing is missing or broken.
    bool isAllPassed() const;
};

/// Text from outside as it may stand in a terminal, in XML and in a page: control characters and
/// those that turn the direction of the text become U+FFFD.
QString printable(QByteArray const& utf8);

} // namespace VEK::Cli
