#pragma once

#include "cli/capturefile.h"

#include <QDomDocument>

/// A core as a monitor shows it.
struct ViewedCore
{
    QString name;
    VEK::Cli::CoreCapture capture; ///< Its windows have the same signals and lengths.
    QDomElement window;            ///< As its session has it; null when it comes from elsewhere.
};

/// What the viewer shows side by side with others: one file, or the windows of one run.
struct ViewedCapture
{
    QString title;
    QStringList files;
    QList<ViewedCore> cores; ///< Not empty.
    QStringList warnings;
    QDomDocument document; ///< That the windows lie in.
};

/// Which files are one capture: those whose names differ in the numbers of core and window only, as
/// a run gives them. In order of the numbers; captures in order of their first files.
QList<QStringList> filesByCapture(QStringList const& files);

/// Reads the files of one capture. Throws a VEK::Cli::Failure.
ViewedCapture readViewedCapture(QStringList const& files, VEK::Cli::CaptureHints const& hints);
