// Shows the windows of a capture in a wave monitor, as a host application would:
//
//     wave_monitor [--trigger SAMPLE] [--grab PICTURE.png] WINDOW0.csv WINDOW1.csv ...
//
// The files are what veksh left of one core; tools/demo --wave calls this for a demo. With --grab
// the program writes a picture of the monitor and ends, also where there is no display:
// QT_QPA_PLATFORM=offscreen.

#include "results/windowbuilder.h"
#include "results/windowdocument.h"
#include "results/windowtables.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/wavemonitorwidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDomDocument>
#include <QFile>

#include <cstdio>

using WaveMonitor::WaveMonitorWidget;

namespace {

/// The first window brings signals and rows, each further one lengthens them.
bool showWindows(WaveMonitorWidget& monitor, QStringList const& files, int trigger)
{
    monitor.setWindowsNum(files.size());
    for (int i = 0; i < files.size(); ++i) {
        QFile file(files.at(i));
        VEK::CapturedWindow captured;
        QString error;
        bool const isOpen = file.open(QIODevice::ReadOnly);
        if (!isOpen || !VEK::readCsvWindow(file, captured, error)) {
            std::fprintf(stderr, "wave_monitor: no capture in %s: %s\n", qPrintable(files.at(i)),
                         qPrintable(isOpen ? error : file.errorString()));
            return false;
        }
        QDomDocument document;
        QDomElement window = VEK::windowElement(
            document, trigger, captured.layout,
            VEK::namedSignals(VEK::flatSignals(captured.layout), captured.samples));
        window.setAttribute(VEK::DOM_ATTR_WINDOW_INDEX, i);
        monitor.restore(window);
    }
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication app(argc, argv);
    QCommandLineParser parser;
    QCommandLineOption const trigger(QStringLiteral("trigger"),
                                     QStringLiteral("The trigger's sample in each window."),
                                     QStringLiteral("sample"), QStringLiteral("0"));
    QCommandLineOption const grab(
        QStringLiteral("grab"), QStringLiteral("Write a picture and end."), QStringLiteral("file"));
    parser.addOptions({trigger, grab});
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("window"), QStringLiteral("Result files."),
                                 QStringLiteral("WINDOW.csv..."));
    parser.process(app);
    if (parser.positionalArguments().isEmpty())
        parser.showHelp(2);

    constexpr unsigned long long Domain = 1; // monitors of one process have different ones
    WaveMonitorWidget monitor(Domain);
    int const sample = parser.value(trigger).toInt();
    if (!showWindows(monitor, parser.positionalArguments(), sample))
        return 1;
    monitor.setTitle(-1, 0);
    monitor.resize(1200, 560);
    monitor.show();
    monitor.zoomTo(0.5);
    app.processEvents(); // the waves and the zoom rate are on their way
    monitor.treeView()->expand(monitor.treeView()->model()->index(0, 0));
    monitor.jump(sample);
    if (!parser.isSet(grab))
        return app.exec();

    app.processEvents();
    if (!monitor.grab().save(parser.value(grab))) {
        std::fprintf(stderr, "wave_monitor: can't write %s\n", qPrintable(parser.value(grab)));
        return 1;
    }
    return 0;
}
