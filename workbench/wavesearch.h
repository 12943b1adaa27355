#pragma once

#include "model/capturecore.h"
#include "trigger/syntax.h"

#include <QBitArray>
#include <QHash>

/// What a search looks through: signals and buses by their names, and the samples of each signal.
struct SearchedSamples
{
    QList<VEK::SignalItem> items; ///< The nets of signals and members are keys of `samples`.
    QHash<QString, QBitArray> samples;
    int length = 0;       ///< Samples of each.
    int windowLength = 1; ///< Windows lie one after the other; an edge lies within one.
};

struct SearchResult
{
    QVector<int> hits; ///< Samples, ascending.
    QList<VEK::TriggerError> errors;
};

/// Where a condition, written as a trigger without counts and sequences, begins to hold for more
/// than `longerThan` samples; each window begins anew.
SearchResult findSamples(QString const& text, int longerThan, SearchedSamples const& searched);

/// The text for rows: one that begins with an operator, "in", "not in", "rises", "falls" or
/// "changes" is about each of `names`. Any other stays.
QString textForRows(QString const& text, QStringList const& names);
