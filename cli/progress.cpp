#include "cli/progress.h"

#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace VEK::Cli {
namespace {

constexpr int Tick = 1000;         ///< ms between two looks at the time that has passed.
constexpr int FigureInterval = 50; ///< ms between two figures on a terminal.

int columns()
{
    winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : 80;
}

} // namespace

Progress::Progress(bool plainLines)
    : m_form(plainLines                ? Form::Lines
             : ::isatty(STDERR_FILENO) ? Form::Terminal
                                       : Form::Silent)
{
    m_tick.setInterval(Tick);
    connect(&m_tick, &QTimer::timeout, this, &Progress::showWait);
}

void Progress::step(QString const& text)
{
    m_tick.stop();
    m_waiting.invalidate();
    show(text);
}

void Progress::wait(QString const& text)
{
    if (m_form == Form::Silent)
        return;
    bool const isNew = !m_waiting.isValid() || text != m_waitText;
    if (!m_waiting.isValid())
        m_waiting.start();
    m_waitText = text;
    if (!isNew)
        return;
    if (m_form == Form::Terminal)
        m_tick.start();
    showWait();
}

void Progress::showWait()
{
    if (m_form == Form::Terminal)
        show(QStringLiteral("%1 (%2 s)").arg(m_waitText).arg(m_waiting.elapsed() / 1000));
    else
        show(m_waitText);
}

void Progress::figure(QString const& text)
{
    bool const isDue = !m_sinceFigure.isValid() || m_sinceFigure.hasExpired(FigureInterval);
    if (m_form != Form::Terminal || !isDue)
        return;
    m_sinceFigure.start();
    step(text);
}

void Progress::show(QString const& text)
{
    if (m_form == Form::Lines)
        std::fprintf(stderr, "vek: %s\n", qPrintable(text));
    else if (m_form == Form::Terminal)
        std::fprintf(stderr, "\r\033[K%s", qPrintable(text.left(columns() - 1)));
    m_isShown = m_form == Form::Terminal;
    std::fflush(stderr);
}

void Progress::clear()
{
    m_tick.stop();
    if (m_isShown)
        std::fputs("\r\033[K", stderr);
    m_isShown = false;
    std::fflush(stderr);
}

} // namespace VEK::Cli
