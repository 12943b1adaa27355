#pragma once

#include "cli/report.h"

#include <QStringList>
#include <QVector>

namespace VEK::Cli {

/// A window of a capture that differs from its golden one, as its manifest tells.
struct Difference
{
    /// Values of a signal, one a sample.
    struct Row
    {
        QString name;
        QStringList golden;
        QStringList made;
    };

    int run = 0;           ///< Among the report's.
    QString window;        ///< Its title; empty when there is only one.
    QStringList sentences; ///< One a signal that differs.
    int from = 0;          ///< Of the values, counted from the trigger.
    QVector<Row> rows;     ///< Around the first sample that differs; empty when nothing tells.
    QString capture;       ///< A file with this window that is there; else empty.
    int sample = 0;        ///< The first that differs in it, from 0; only with `capture`.
    QByteArray picture;    ///< Of the waves around it, SVG; empty when there is none.
};

/// The first differences of captures that count, by label, read from their manifests again; of
/// those that have gone or changed since nothing comes.
QVector<Difference> differencesOf(Report const& report, int most);

/// Fills in pictures with one call of the viewer each. Where it is not installed, or fails, they
/// stay empty.
void takePictures(QVector<Difference>& differences);

} // namespace VEK::Cli
