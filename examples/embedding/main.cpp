// A small host: captures the first core of a standard configuration and shows its windows.
//
//     host design.vek [picture.png]
//
// With a picture it writes the monitor there once all windows have come, and ends.

#include "acquire/standarddatamanager.h"
#include "acquire/samples.h"
#include "results/windowbuilder.h"
#include "jtag/jtagsession.h"
#include "model/bits.h"
#include "results/windowdocument.h"
#include "wavemonitor/wavemonitorwidget.h"

#include <QApplication>
#include <QDomDocument>

#include <cstdio>

using WaveMonitor::WaveMonitorWidget;

/// Starts the JTAG server that lies in ../../Programmer/bin, and connects to it.
static bool connectServer()
{
    VEK::JtagSession* const session = VEK::JtagSession::shared();
    session->validateServerList(
        session->initLocalServerListForveksh(VEK::CableFT2CH, VEK::Channel0));
    return session->connectServer(VEK::Server::Ft2chName);
}

/// Appends a window that was just read to what the monitor shows.
static void showWindow(VEK::VekStandardDataManager& manager, WaveMonitorWidget& monitor, int window)
{
    QBitArray const bits = VEK::combine(manager.getCurrentData(window)); // also moves the run on
    VEK::SxCore const& core = *manager.getCore(0);
    QDomDocument document;
    QDomElement element = VEK::windowElement(document, core.triggerPos, core.dataSignalList,
                                             VEK::standardSamples(core, bits));
    element.setAttribute(VEK::DOM_ATTR_WINDOW_INDEX, window);
    monitor.setWindowsNum(window + 1);
    monitor.restore(element);
    monitor.zoomFit();
}

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication app(argc, argv);
    QStringList const arguments = QApplication::arguments();
    VEK::VekStandardDataManager manager;
    QString error;
    if (arguments.size() < 2 || !manager.readVekFile(arguments.at(1), error)) {
        std::fprintf(stderr, "host: no configuration: %s\n", qPrintable(error));
        return 1;
    }
    if (!connectServer()) {
        std::fprintf(stderr, "host: no JTAG server\n");
        return 1;
    }

    WaveMonitorWidget monitor(1); // the domain: another number for each monitor
    monitor.resize(1000, 500);
    monitor.show();
    QObject::connect(&manager, &VEK::VekStandardDataManager::readRamComplete,
                     [&](int, int window) { showWindow(manager, monitor, window); });
    QObject::connect(&manager, &VEK::DataManager::triggerComplete, [&](int result) {
        if (result != VEK::Protocol::Result::Ok)
            std::fprintf(stderr, "host: device error %d. %s\n", result,
                         qPrintable(manager.deviceReason()));
        if (arguments.size() > 2) {
            QApplication::processEvents(); // the waves are laid out when the events come round
            QApplication::exit(monitor.grab().save(arguments.at(2)) ? 0 : 1);
        }
    });
    manager.initDeviceChainandLocation({0}, VEK::Server::Ft2chName, QString());
    manager.startDataTrigger({0});
    int const status = QApplication::exec();
    VEK::JtagSession::shared()->disconnectServer();
    VEK::JtagSession::shared()->clearAllServerMap();
    return status;
}
