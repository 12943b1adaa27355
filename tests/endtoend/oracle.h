#pragma once

#include "stimulus.h"

#include <QVector>

/// Where one window's capture lies, in samples of the core's clock counted from power-up.
struct ExpectedWindow
{
    int core;
    int window;
    int start;   ///< The first sample that the window looked at.
    int trigger; ///< The sample that fired.
    QByteArray csv;
};

/// Says from a setup and the waves alone which samples its cores capture, and what text they make;
/// it works on the meaning of the settings: no image, no registers, no stream. One capture for each
/// window of each core; those that the waves don't fire are missing. `waves` gives the stimulus by
/// sample clock.
QVector<ExpectedWindow> expectedCaptures(QByteArray const& vek, QMap<QString, Waves> const& waves);

/// The text of the first core's result file that shows these samples of the waves, Lite or not.
QByteArray csvOf(QByteArray const& vek, Waves const& waves, QVector<int> const& samples);
