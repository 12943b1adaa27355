#pragma once

#include <QString>

#include <memory>

class QModelIndex;

namespace WaveMonitor {

/// A stream for diagnostics: what copies of one object gather goes as one message to Qt's message
/// handler when the last of them is gone. Off unless enabled, one object at a time or for all new
/// ones by the logging category "vek.wavemonitor"; then nothing is gathered or written.
class MLog
{
public:
    explicit MLog(QtMsgType type = QtDebugMsg);

    /// Whether a space goes between the items; off at first.
    MLog& setSpacing(bool on);
    MLog& setEnabled(bool on);
    bool isEnabled() const { return m_stream->enabled; }

    MLog& operator<<(char const* text); ///< UTF-8; null writes nothing.
    MLog& operator<<(QString const& text);
    MLog& operator<<(int number);
    MLog& operator<<(QModelIndex const& index); ///< "QModelIndex(row,column)"

private:
    struct Stream
    {
        ~Stream();

        QString text;
        QtMsgType type = QtDebugMsg;
        bool spacing = false;
        bool enabled = false;
        bool written = false;
    };

    std::shared_ptr<Stream> m_stream;
};

} // namespace WaveMonitor
