// A small host: captures the first core of a standard configuration and shows its windows.
//
//     host design.vek [picture.png]
//
// With a picture it writes the monitor there once all windows have come, and ends.

#include "capture/capture.h"
#include "results/windowbuilder.h"
#include "results/windowdocument.h"
#include "wavemonitor/wavemonitorwidget.h"

#include <QApplication>
#include <QDomDocument>

#include <cstdio>

using WaveMonitor::WaveMonitorWidget;

/// Appends a window that was just read to what the monitor shows.
static void showWindow(VEK::SxCore const& core, int window,
                       QList<WaveMonitor::SignalData> const& samples, WaveMonitorWidget& monitor)
{
    QDomDocument document;
    QDomElement element =
        VEK::windowElement(document, core.triggerPos, core.dataSignalList, samples);
    element.setAttribute(VEK::DOM_ATTR_WINDOW_INDEX, window);
    monitor.setWindowsNum(window + 1);
    monitor.restore(element);
}

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QStringList const arguments = QApplication::arguments();
    VEK::Capture capture;
    QString error = QStringLiteral("none is given");
    if (arguments.size() < 2 || !capture.open(arguments.at(1), error) ||
        capture.cores().isEmpty()) {
        std::fprintf(stderr, "host: no standard configuration: %s\n", qPrintable(error));
        return 1;
    }

    WaveMonitorWidget monitor(1); // the domain: another number for each monitor
    monitor.resize(1000, 500);
    monitor.show();
    QObject::connect(&capture, &VEK::Capture::windowArrived,
                     [&](int core, int window, QList<WaveMonitor::SignalData> const& samples, int) {
                         if (core == 0)
                             showWindow(*capture.cores().first(), window, samples, monitor);
                     });
    QObject::connect(
        &capture, &VEK::Capture::ended, &app,
        [&](VEK::CaptureOutcome const& outcome) {
            if (!outcome.isOk())
                std::fprintf(stderr, "host: %s\n", qPrintable(outcome.message));
            if (arguments.size() > 2) {
                QApplication::processEvents(); // the waves are laid out when the events come round
                QApplication::exit(monitor.grab().save(arguments.at(2)) && outcome.isOk() ? 0 : 1);
            }
        },
        Qt::QueuedConnection);
    capture.run({}); // the first USB cable, with patience
    return QApplication::exec();
}
