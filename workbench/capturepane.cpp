#include "workbench/capturepane.h"

#include "results/sessionfile.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "wavemonitor/waveview.h"
#include "workbench/savedview.h"

#include <QFileInfo>
#include <QLabel>
#include <QScrollBar>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;

CapturePane::CapturePane(QString const& path, Cli::CaptureHints const& hints, QWidget* parent)
    : QWidget(parent), m_path(path), m_cores(new QTabWidget(this))
{
    Cli::CaptureFile const file = Cli::readCaptureFile(path, hints);
    m_warnings = file.warnings;
    auto* const title = new QLabel(QFileInfo(path).fileName(), this);
    title->setTextFormat(Qt::PlainText);
    title->setToolTip(path);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(title);
    layout->addWidget(m_cores);
    m_cores->setDocumentMode(true);
    m_cores->setTabBarAutoHide(true);
    showCores(file);
    if (file.format == QLatin1String("rsx"))
        showSession();
}

WaveMonitorWidget* CapturePane::monitor() const
{
    return qobject_cast<WaveMonitorWidget*>(m_cores->currentWidget());
}

void CapturePane::showCores(Cli::CaptureFile const& file)
{
    for (Cli::CoreCapture const& core : file.cores) {
        auto* const shown = new WaveMonitorWidget(m_cores);
        shown->setTitle(0, core.index);
        shown->setWindowsNum(core.windows.size());
        for (int i = 0; i < core.windows.size(); ++i) {
            CapturedWindow const& window = core.windows.at(i);
            QDomDocument document;
            QDomElement element =
                windowElement(document, window.trigger.value_or(0), window.layout,
                              namedSignals(flatSignals(window.layout), window.samples));
            element.setAttribute(DOM_ATTR_WINDOW_INDEX, i);
            shown->restore(element);
        }
        shown->zoomFit();
        m_cores->addTab(shown, QStringLiteral("Core %1").arg(core.index));
    }
}

/// Rows, cursor, markers and zoom as they were kept with the samples.
void CapturePane::showSession()
{
    QDomDocument document;
    int place = 0;
    for (SessionWindow const& saved : readSession(m_path, document)) {
        auto* const shown = qobject_cast<WaveMonitorWidget*>(m_cores->widget(place++));
        if (!shown)
            return;
        shown->restoreLayout(saved.window.firstChildElement(DOM_TAG_LAYOUT));
        WaveMonitor::ViewState view;
        if (restoreView(saved.window, view))
            shown->setViewState(view);
    }
}

void CapturePane::showSpan(int from, int to)
{
    WaveMonitorWidget* const shown = monitor();
    auto const* const waves = shown->waveView();
    int const width = waves->width() - waves->verticalScrollBar()->width();
    WaveMonitor::ViewState view = shown->viewState();
    view.zoomRate = WaveMonitor::clampedZoomRate(
        width / ((qMax(from, to) - from + 1) * WaveMonitor::Constants::Graphics::kSampleWidth));
    view.leftTime = from;
    shown->setViewState(view);
}
