#include "jtag/wirerecorder.h"

#include <QFileInfo>

namespace VEK {
namespace {

constexpr int FlushDelay = 1000; // ms

/// Whether a regular file that is no recording is there. One without content is nobody's loss.
bool isInTheWay(QString const& path)
{
    QFileInfo const info(path);
    if (!info.isFile() || info.size() == 0)
        return info.isDir();
    QFile file(path);
    WireHeader header;
    WireReader reader(file);
    return !file.open(QIODevice::ReadOnly) || reader.begin(header) == WireReader::State::Refused;
}

} // namespace

WireRecorder::WireRecorder(QString const& path) : m_file(path), m_writer(m_file)
{
    m_flush.setSingleShot(true);
    m_flush.setInterval(FlushDelay);
    connect(&m_flush, &QTimer::timeout, this, [this] { check(m_writer.flush()); });
}

bool WireRecorder::start(WireHeader const& header, QString& error)
{
    m_error.clear();
    if (isInTheWay(m_file.fileName()))
        m_error = QStringLiteral("something that is no recording is in the way");
    else if (!m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !m_writer.begin(header))
        m_error = m_file.errorString();
    m_clock.start();
    error = m_error;
    return error.isEmpty();
}

WireTap WireRecorder::tap()
{
    return [this](WireEvent event, QByteArray const& frame) { add(event, frame); };
}

void WireRecorder::add(WireEvent event, QByteArray const& frame)
{
    if (!m_file.isOpen())
        return;
    if (!m_flush.isActive())
        m_flush.start();
    check(m_writer.add({event, m_clock.nsecsElapsed() / 1000, frame}));
}

void WireRecorder::check(bool isWritten)
{
    if (isWritten)
        return;
    m_error = m_file.errorString();
    m_file.close();
    emit failed(m_error);
}

bool WireRecorder::finish(QString& error)
{
    m_flush.stop();
    if (m_file.isOpen()) {
        check(m_writer.finish());
        m_file.close();
    }
    error = m_error;
    return error.isEmpty();
}

} // namespace VEK
