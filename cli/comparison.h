#pragma once

#include "cli/capturefile.h"

#include <QJsonObject>
#include <QMap>

namespace VEK::Cli {

/// What is compared of two captures.
struct ComparisonSettings
{
    std::optional<int> from;        ///< First sample, counted from the trigger.
    std::optional<int> to;          ///< Last sample, counted from the trigger.
    QStringList ignored;            ///< Names of signals and buses.
    QMap<QString, QBitArray> masks; ///< By name; bits that are set count, the highest first.
};

/// How a signal or a bus came out.
struct SignalOutcome
{
    enum Kind { Same, Differs, Missing, Added };

    QString name;
    Kind kind = Same;
    int differing = 0;       ///< Number of samples.
    int first = 0;           ///< The first of them, counted from the trigger.
    QList<QBitArray> golden; ///< The highest bit first; empty when it is added.
    QList<QBitArray> made;   ///< The same; empty when it is missing.
};

/// Compares one window with its golden one, both aligned on the samples given.
///
/// Signals go together by their names. Buses are compared as numbers; one that is a bus on one side
/// only, net by net. Samples that only one side has within the range count as a difference.
class Comparison
{
public:
    /// Throws a Failure for a name to ignore or mask that neither has, and a range that holds no
    /// sample.
    Comparison(CapturedWindow const& golden, int goldenAt, CapturedWindow const& made, int madeAt,
               ComparisonSettings const& settings);

    bool isEqual() const;
    QList<SignalOutcome> const& outcomes() const { return m_outcomes; }
    /// What differs in length, in words; empty when nothing does.
    QString lengths() const { return m_lengths; }

    /// For people: a line for each difference, and a table around the first one.
    QStringList lines() const;
    /// As in a manifest's comparisons, docs/manifest.schema.json.
    QJsonObject json() const;
    /// The test cases of a JUnit suite.
    QByteArray cases(QString const& className) const;
    int failures() const;

private:
    void pairUp(CapturedWindow const& golden, CapturedWindow const& made,
                ComparisonSettings const& settings);
    void compare(SignalOutcome outcome, QBitArray const& mask);
    void setRange(int goldenLength, int madeLength, ComparisonSettings const& settings);
    /// Values around the first sample that differs.
    struct Excerpt
    {
        struct Row
        {
            QString name;
            QStringList golden; ///< A value a sample.
            QStringList made;
        };
        int from = 0; ///< First sample, counted from the trigger.
        QList<Row> rows;
    };

    Excerpt excerpt() const;
    QStringList table() const;
    QString valueText(QList<QBitArray> const& bits, int at, int sample) const;

    int m_goldenAt;
    int m_madeAt;
    int m_from = 0; ///< First sample that both have, counted from the trigger.
    int m_to = 0;   ///< One past the last.
    QString m_lengths;
    QList<SignalOutcome> m_outcomes;
};

} // namespace VEK::Cli
