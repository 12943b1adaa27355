#pragma once

#include "cli/exitstatus.h"
#include "cli/outputfiles.h"

#include <QDateTime>
#include <QJsonObject>
#include <QMap>

#include <future>

namespace VEK::Cli {

/// What a run leaves about itself: one JSON document, described by docs/manifest.schema.json. It is
/// written with the state "running" once the cable is held, and replaced at the end, so that a run
/// that was killed shows.
///
/// Names of files are relative to the manifest's folder, times are UTC in ISO 8601.
class Manifest
{
public:
    /// Nothing is written with an empty path.
    explicit Manifest(QString const& path) : m_path(path) {}

    /// Files that the manifest of an earlier run with this prefix names, for a run to remove; what
    /// is of another prefix is left. Throws a Failure when something else than a manifest is there.
    QStringList earlierFiles(QString const& prefix) const;

    /// A member of the document.
    void set(QString const& key, QJsonValue const& value) { m_root.insert(key, value); }
    void setPrefix(QString const& prefix);

    /// A core is to run.
    void addCore(int place, int index, int windows, QString const& trigger);
    void noteArmed(int place);
    void noteFired(int place, bool forced);
    void noteStopped(int place);
    void noteLost(int place, int window);
    void noteRead(int place, int window, int samples, int triggerSample);
    void noteWritten(int place, int window, QList<WrittenFile> const& files);
    /// Of the whole run.
    void noteWritten(QList<WrittenFile> const& files);

    /// Writes it with the state "running". Throws a Failure.
    void begin();
    /// Replaces it by the one with how the run ended. Throws a Failure.
    void end(Status status, int exitStatus, QString const& message, QString const& reason);

private:
    /// A file whose digest is on its way.
    struct Digest
    {
        WrittenFile file;
        std::shared_future<QByteArray> sha256; ///< In hexadecimal.
    };
    struct Window
    {
        QDateTime read;
        int samples = 0;
        int triggerSample = 0;
        bool isLost = false;
        QList<Digest> files;
    };
    struct Core
    {
        int index = 0;
        int windowCount = 0;
        QString trigger; ///< As text.
        QDateTime armed;
        QDateTime triggered;
        QDateTime written;
        bool forced = false;
        bool stopped = false;
        QMap<int, Window> windows;
    };

    QList<Digest> digestsOf(QList<WrittenFile> const& files) const;
    QJsonObject fileJson(Digest const& file) const;
    QJsonArray filesJson(QList<Digest> const& files) const;
    QJsonObject coreJson(Core const& core) const;
    QString relative(QString const& path) const;
    void write() const;

    QString m_path;
    QJsonObject m_root;
    QMap<int, Core> m_cores; ///< By place.
    QList<Digest> m_files;
};

} // namespace VEK::Cli
