#pragma once

#include "oracle.h"
#include "tests/support/tempfolder.h"

#include <QProcess>

/// How a run of the batch tool should end. Nothing on standard error and no process left behind go
/// without saying.
struct Outcome
{
    int status = 0;
    QByteArray out;
    QMap<QString, QByteArray> files; ///< Result files by name, none but these.
};

/// A run that captures all of this, into files whose names begin with `prefix`.
Outcome captured(QVector<ExpectedWindow> const& captures, QString const& prefix);

/// A private install root with the built programs in it, and a private folder for their sockets:
/// desks don't see one another, so tests run in parallel.
class Desk
{
public:
    Desk();

    /// A file of the folder that the runs work in.
    void write(QString const& name, QByteArray const& content) const
    {
        m_folder.write("run/" + name, content);
    }
    /// The regular files that runs have left there, by name.
    QMap<QString, QByteArray> results() const;

    /// Writes "setup.vek", its stimulus, and a bench file with both, an FT2CH cable at location 7
    /// and an LPT cable. `more` is appended to the members of the bench file.
    void lay(QByteArray const& vek, Waves const& waves, QByteArray const& more = QByteArray(),
             QByteArray const& device = "TK-501");

    /// Where a program of the root lies, such as "Programmer/bin/scanbridge".
    QString program(QString const& name) const { return m_folder.path(name); }

    void start(QProcess& process, QStringList const& arguments,
               QString const& name = "Analyzer/bin/veksh") const;
    /// Runs the batch tool to its end, and says what was not as expected; empty when all was.
    QString problem(QStringList const& arguments, Outcome const& expected) const;
    /// The same for a run that was started before.
    QString problem(QProcess& process, Outcome const& expected) const;
    /// Runs vek on "setup.vek", and says where its files differ from those that the batch tool
    /// left; empty when they don't.
    QString problemOfVek(QStringList const& options = {}) const;
    /// Processes that run a program of this desk, the batch tool and servers alike.
    QStringList processes() const;

    QString bench; ///< The bench file of the simulated chip, by absolute path.

private:
    TempFolder m_folder;
};
