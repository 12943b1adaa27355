#pragma once

#include "capture/capture.h"
#include "cli/windowwriter.h"
#include "results/sampleclock.h"

#include <QDomDocument>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

class QIODevice;

namespace VEK::Cli {

/// What a run writes, and where.
struct OutputSettings
{
    QString prefix;        ///< Of all names, with their folder.
    QString configuration; ///< The file that is read, and never replaced.
    QStringList formats;   ///< Of "csv", "vcd", "rsx", "raw".
    bool plain = false;    ///< The profiles for other tools.
    SampleClock clock;     ///< For the times of plain profiles; may be unknown.
};

/// A file that was written.
struct WrittenFile
{
    QString format;
    QString path;
    qint64 size = 0;
};

/// The files of one run: "<prefix>_core<n>_window<n>.<ext>", and "<prefix>.rsx". Each is written to
/// a temporary name and renamed when it is whole. All functions throw a Failure for what can't be
/// written.
class OutputFiles
{
public:
    OutputFiles(OutputSettings const& settings, Capture const& capture);

    /// The prefix for an output that was given, or an empty one, and a configuration's path.
    static QString prefixFor(QString const& output, QString const& configuration);

    /// Makes the folder, and removes what earlier runs with this prefix left, `earlier` being the
    /// files that their manifest names. Whatever else is in the way of the cores at `places` stays,
    /// and is refused.
    void prepare(QList<int> const& places, QStringList const& earlier) const;

    /// Writes a window in all formats but RSX, which keeps it for the end.
    QList<WrittenFile> writeWindow(int place, int window,
                                   QList<WaveMonitor::SignalData> const& samples);

    /// Writes the RSX file, if it was asked for and has windows. `notes` gets what it leaves out.
    QList<WrittenFile> writeSession(QStringList& notes);

private:
    struct CoreFacts
    {
        int index = 0;
        int triggerPos = 0;
        QString module;
        QString clock;
        QList<SignalItem> layout;
    };

    CoreFacts facts(int place) const;
    QString windowPath(int index, int window, QString const& format) const;
    QString sessionPath() const { return m_settings.prefix + QStringLiteral(".rsx"); }
    bool isOurSession() const;
    void removeEarlier(QStringList const& earlier) const;
    void refuseInTheWay(QList<int> const& places) const;
    FileWriter writerFor(QString const& ending, CoreFacts const& core,
                         QList<WaveMonitor::SignalData> const& samples) const;
    QByteArray configuration() const;
    QDomElement sessionElement(int place, QDomDocument& document, QStringList& notes) const;

    OutputSettings m_settings;
    Capture const& m_capture;
    QHash<int, QList<QList<WaveMonitor::SignalData>>> m_windows; ///< By place, for RSX.
};

} // namespace VEK::Cli
