#include "programmer/programmerprocess.h"

#include <QCoreApplication>
#include <QDir>

namespace VEK {

namespace {

constexpr int MostOutput = 4 * 1024 * 1024; // of a run; what it said last counts

QString programmerPath()
{
    QString const folder =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../../Programmer/bin/");
    return QDir::toNativeSeparators(QDir::cleanPath(folder) + QStringLiteral("/loader_cli"));
}

} // namespace

bool tellsError(QByteArray const& output)
{
    return output.contains("Error") || output.contains("error");
}

ProgrammerProcess::ProgrammerProcess(QObject* parent)
    : QObject(parent), m_process(new QProcess(this))
{
    m_process->setStandardErrorFile(QProcess::nullDevice());
    connect(m_process, &QProcess::readyReadStandardOutput, this, &ProgrammerProcess::collectOutput);
    connect(m_process, &QProcess::errorOccurred, this, &ProgrammerProcess::failed);
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this](int code, QProcess::ExitStatus status) {
                collectOutput();
                Q_EMIT finished(code, status);
            });
}

ProgrammerProcess::~ProgrammerProcess()
{
    // ending the process must not call back into what is going
    m_process->disconnect(this);
    if (isRunning()) {
        m_process->kill();
        m_process->waitForFinished();
    }
}

void ProgrammerProcess::start(QStringList const& arguments)
{
    m_output.clear();
    m_droppedError = false;
    m_process->start(m_program.isEmpty() ? programmerPath() : m_program, arguments,
                     QIODevice::ReadWrite);
}

/// Keeps the pipe of the process empty, and the memory bounded.
void ProgrammerProcess::collectOutput()
{
    if (m_process->isOpen())
        m_output += m_process->readAllStandardOutput();
    if (m_output.size() > 2 * MostOutput)
        dropHead();
}

/// Keeps the tail of the output, from the begin of a line if there is one. The programmer goes on:
/// it may be writing a flash.
void ProgrammerProcess::dropHead()
{
    int cut = m_output.size() - MostOutput;
    int const line = m_output.indexOf('\n', cut) + 1;
    if (line > 0 && line < m_output.size())
        cut = line;
    m_droppedError = m_droppedError || tellsError(m_output.left(cut + 4)); // one that is cut, too
    m_output.remove(0, cut);
}

QByteArray ProgrammerProcess::takeOutput()
{
    if (m_output.size() > MostOutput)
        dropHead();
    QByteArray output;
    output.swap(m_output);
    return output;
}

} // namespace VEK
