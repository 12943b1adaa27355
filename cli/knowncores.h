#pragma once

#include "model/capturecore.h"
#include "results/capturedwindow.h"

#include <QDomDocument>

#include <optional>

namespace VEK::Cli {

/// What a configuration says of the cores that captures come from.
class KnownCores
{
public:
    struct Core
    {
        int index = 0;
        QString module;
        QString clock;
        QList<SignalItem> layout;
    };

    /// Reads a configuration, `.vek` or `.rsx`. Throws a Failure.
    static KnownCores fromFile(QString const& path);
    /// From a parsed session.
    static KnownCores fromDocument(QDomDocument const& document);
    /// A configuration with one core, that could have captured these windows.
    static KnownCores made(QString const& module, QString const& clock,
                           QList<CapturedWindow> const& windows);

    QList<Core> const& cores() const { return m_cores; }
    /// As a run writes it into a session.
    QByteArray const& text() const { return m_text; }
    /// The place of the core that is meant: the one with the index, or the only one. Throws a
    /// Failure when that is none.
    int placeOf(std::optional<int> const& index) const;

private:
    static KnownCores take(QList<SxCore*> const& standard, QList<SXCore_Lite*> const& lite);

    QList<Core> m_cores;
    QByteArray m_text;
};

/// Puts a window's samples in the order of a core's signals, with its names: by their labels, as
/// well as the format of the file has kept them, or by place where it has kept their number only.
/// Throws a Failure that begins with `path` when the window is not of that core.
CapturedWindow withLayout(CapturedWindow const& window, QList<SignalItem> const& layout,
                          QString const& path);

} // namespace VEK::Cli
