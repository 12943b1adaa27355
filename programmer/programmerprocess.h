#pragma once

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QStringList>

namespace VEK {

/// One run of the command-line programmer after the other, with what it prints. The memory for that
/// is bounded: of a run that prints more than 4 MB the end is kept.
class ProgrammerProcess : public QObject
{
    Q_OBJECT

public:
    explicit ProgrammerProcess(QObject* parent = nullptr);
    /// Kills a run, without a signal.
    ~ProgrammerProcess() override;

    /// Path of the programmer in the place of "../../Programmer/bin/loader_cli" beside the
    /// application; empty for that one.
    void setProgram(QString const& path) { m_program = path; }

    bool isRunning() const { return m_process->state() != QProcess::NotRunning; }
    /// `finished` follows, or `failed`, or both after a crash.
    void start(QStringList const& arguments);

    /// What the run has printed and nobody has taken.
    QByteArray takeOutput();
    void dropOutput() { m_output.clear(); }
    /// Whether what was not kept told of an error.
    bool hasDroppedError() const { return m_droppedError; }

Q_SIGNALS:
    void finished(int code, QProcess::ExitStatus status);
    void failed();

private:
    void collectOutput();
    void dropHead();

    QProcess* const m_process;
    QString m_program;
    QByteArray m_output;
    bool m_droppedError = false;
};

/// Whether the programmer's words tell of an error.
bool tellsError(QByteArray const& output);

} // namespace VEK
