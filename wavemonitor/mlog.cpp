#include "wavemonitor/mlog.h"

#include <QLoggingCategory>
#include <QModelIndex>

namespace WaveMonitor {

Q_LOGGING_CATEGORY(lcMonitor, "vek.wavemonitor", QtFatalMsg)

MLog::MLog(QtMsgType type) : m_stream(std::make_shared<Stream>())
{
    m_stream->type = type;
    m_stream->enabled = lcMonitor().isEnabled(type);
}

MLog::Stream::~Stream()
{
    if (enabled && written)
        qt_message_output(type, QMessageLogContext(nullptr, 0, nullptr, lcMonitor().categoryName()),
                          text);
}

MLog& MLog::setSpacing(bool on)
{
    m_stream->spacing = on;
    return *this;
}

MLog& MLog::setEnabled(bool on)
{
    m_stream->enabled = on;
    return *this;
}

MLog& MLog::operator<<(QString const& text)
{
    if (!m_stream->enabled)
        return *this;
    if (m_stream->spacing && m_stream->written)
        m_stream->text += QLatin1Char(' ');
    m_stream->text += text;
    m_stream->written = true;
    return *this;
}

MLog& MLog::operator<<(char const* text)
{
    return m_stream->enabled && text ? *this << QString::fromUtf8(text) : *this;
}

MLog& MLog::operator<<(int number)
{
    return m_stream->enabled ? *this << QString::number(number) : *this;
}

MLog& MLog::operator<<(QModelIndex const& index)
{
    if (!m_stream->enabled)
        return *this;
    return *this << QStringLiteral("QModelIndex(%1,%2)").arg(index.row()).arg(index.column());
}

} // namespace WaveMonitor
