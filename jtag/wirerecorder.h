#pragma once

#include "jtag/wirefile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>

namespace VEK {

/// Records a connection into a file: its `tap` is to be set on a client, or in the settings of a
/// run. What came more than a second ago is in the file, however the process ends.
class WireRecorder : public QObject
{
    Q_OBJECT

public:
    /// Nothing is touched before `start`.
    explicit WireRecorder(QString const& path);

    /// Begins the file. Replaces a recording; anything else that is at the path stays. False with
    /// an `error` when that is so, or the file can't be written.
    bool start(WireHeader const& header, QString& error);

    /// Hands everything to this object, which must outlive it.
    WireTap tap();

    /// Ends the file. False with an `error` when not all of the recording is in it.
    bool finish(QString& error);

    QString path() const { return m_file.fileName(); }

Q_SIGNALS:
    /// The file can't be written any more; told once, possibly from inside a request. The rest is
    /// not recorded.
    void failed(QString const& error);

private:
    void add(WireEvent event, QByteArray const& frame);
    void check(bool isWritten);

    QFile m_file;
    WireWriter m_writer;
    QElapsedTimer m_clock;
    QTimer m_flush;
    QString m_error;
};

} // namespace VEK
