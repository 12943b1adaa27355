#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

namespace VEK::Cli {

/// What a run is doing, on standard error: one line that is rewritten on a terminal, a line a step
/// elsewhere when that is wanted, otherwise nothing.
class Progress : public QObject
{
    Q_OBJECT

public:
    explicit Progress(bool plainLines);

    /// Another step, told at once.
    void step(QString const& text);
    /// A step whose elapsed time is told; begins with the first call.
    void wait(QString const& text);
    /// A step within which a figure changes often: told on a terminal only.
    void figure(QString const& text);
    /// Takes the line away, for another line of output or the end. The next step shows it again.
    void clear();

private:
    enum class Form { Silent, Lines, Terminal };

    void show(QString const& text);
    void showWait();

    Form m_form;
    QTimer m_tick;
    QElapsedTimer m_waiting;
    QElapsedTimer m_sinceFigure;
    QString m_waitText;
    bool m_isShown = false;
};

} // namespace VEK::Cli
