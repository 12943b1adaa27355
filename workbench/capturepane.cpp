#include "workbench/capturepane.h"

#include "model/bits.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"
#include "wavemonitor/constants.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "wavemonitor/waveview.h"
#include "workbench/savedview.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <limits>

using namespace VEK;
using WaveMonitor::WaveMonitorWidget;
using WaveMonitor::Constants::Graphics::kSampleWidth;

namespace {

/// Far in front of all samples, where no line is painted.
constexpr int NoTrigger = std::numeric_limits<int>::min();

/// The rows come first and the samples for all of them then, without a text of each bit.
void fill(WaveMonitorWidget& monitor, Cli::CoreCapture const& core)
{
    CapturedWindow const& first = core.windows.first();
    QList<QBitArray> samples = first.samples;
    for (int i = 0; i < samples.size() && core.windows.size() > 1; ++i) {
        QList<QBitArray> parts;
        for (CapturedWindow const& window : core.windows)
            parts << window.samples.at(i);
        samples[i] = combine(parts);
    }
    QList<QBitArray> none;
    for (int i = 0; i < samples.size(); ++i)
        none << QBitArray();
    QDomDocument document;
    QDomElement element =
        windowElement(document, 0, first.layout, namedSignals(flatSignals(first.layout), none));
    element.setAttribute(DOM_ATTR_WINDOW_INDEX, 0);
    monitor.restore(element);
    monitor.updataWaveDatas(samples);
}

void showRangeOf(WaveMonitorWidget& monitor, SampleRange const& range)
{
    int const last = monitor.model()->timeLength() - 1;
    int const from = qMin(range.from.value_or(0), last);
    int const to = qBound(from, range.to.value_or(last), last);
    WaveMonitor::WaveView* const waves = monitor.waveView();
    double const rate = waves->viewport()->width() / (double(kSampleWidth) * (to - from + 1));
    monitor.setZoomRate(rate); // what is on its way of another zoom tells of this one now
    waves->setZoomRate(rate);
    QCoreApplication::sendPostedEvents(); // ruler and monitor hear of it
    waves->scrollTo(from);
}

} // namespace

CapturePane::CapturePane(ViewedCapture const& capture, QWidget* parent)
    : QWidget(parent), m_files(capture.files), m_title(makeTitle(capture)), m_cores(new QTabWidget)
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_title);
    layout->addWidget(m_cores, 1);
    m_cores->setDocumentMode(true);
    m_cores->tabBar()->setAutoHide(true);
    m_cores->tabBar()->setExpanding(false);
    for (ViewedCore const& core : capture.cores)
        addMonitor(core);
}

QWidget* CapturePane::makeTitle(ViewedCapture const& capture)
{
    auto* const title = new QWidget;
    auto* const layout = new QHBoxLayout(title);
    layout->setContentsMargins(6, 2, 2, 2);
    auto* const name = new QLabel(capture.title);
    name->setTextFormat(Qt::PlainText);
    name->setToolTip(capture.files.join(QLatin1Char('\n')));
    name->setMinimumWidth(1); // a long name must not widen the window
    auto* const button = new QToolButton;
    button->setAutoRaise(true);
    button->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    button->setToolTip(QStringLiteral("Close this capture"));
    connect(button, &QToolButton::clicked, this, &CapturePane::closing);
    layout->addWidget(name, 1);
    layout->addWidget(button);
    return title;
}

void CapturePane::addMonitor(ViewedCore const& core)
{
    auto* const monitor = new WaveMonitorWidget(m_cores);
    m_cores->addTab(monitor, core.name);
    monitor->setTitle(0, core.capture.index);
    monitor->setWindowsNum(core.capture.windows.size());
    if (core.window.isNull())
        fill(*monitor, core.capture);
    else
        monitor->restore(core.window);
    monitor->setTriggerPosition(core.capture.windows.first().trigger.value_or(NoTrigger));
    WaveMonitor::ViewState view;
    if (restoreView(core.window, view)) {
        monitor->setViewState(view);
        m_savedViews << monitor;
    } else {
        monitor->zoomFit();
    }
}

WaveMonitorWidget* CapturePane::monitor() const
{
    return qobject_cast<WaveMonitorWidget*>(m_cores->currentWidget());
}

void CapturePane::setTitleVisible(bool visible)
{
    m_title->setVisible(visible);
}

void CapturePane::hideScrollBars()
{
    for (int i = 0; i < m_cores->count(); ++i) {
        auto* const monitor = qobject_cast<WaveMonitorWidget*>(m_cores->widget(i));
        for (QAbstractScrollArea* const area :
             {static_cast<QAbstractScrollArea*>(monitor->treeView()),
              static_cast<QAbstractScrollArea*>(monitor->rulerView()),
              static_cast<QAbstractScrollArea*>(monitor->waveView())}) {
            area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
            area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        }
    }
}

void CapturePane::showRange(SampleRange const& range)
{
    for (int i = 0; i < m_cores->count(); ++i) {
        auto* const monitor = qobject_cast<WaveMonitorWidget*>(m_cores->widget(i));
        if (range.isSet() || !m_savedViews.contains(monitor))
            showRangeOf(*monitor, range);
    }
}
