// Shows the device programming panel, as a host application embeds it:
//
//     programmer_panel                          the panel on the first USB cable
//     programmer_panel --grab out.png           searches the chain, writes a picture, and ends
//     programmer_panel --fs design.fs           offers this Fs file for the device
//
// The catalogue "programmer.json" lies beside the program, the programmer in
// "../../Programmer/bin". With the simulated programmer the environment variable VEK_BENCH names
// what is on the desk.

#include "programmer/devicecatalogue.h"
#include "programmer/deviceselector.h"
#include "programmer/vekprogrammermodel.h"
#include "programmer/vekprogrammerwidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

using namespace VEK;

namespace {

/// Tells the panel the first cable that a scan finds: type and location.
void useFirstCable(VekProgrammerWidget& panel)
{
    QList<QStringList> const cables = panel.model()->cables();
    if (cables.isEmpty()) {
        panel.createProgrammerOutput(QStringLiteral("Warn: No cable found."));
        return;
    }
    panel.updateCable(cables.first().at(0).toInt());
    panel.updateChannel(cables.first().at(2).toInt());
}

/// Closes the chooser of devices that share an ID code, where nobody is there to choose: what the
/// programmer called the device stands.
class ChooserCloser : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* const chooser =
            event->type() == QEvent::Show ? qobject_cast<DeviceSelector*>(watched) : nullptr;
        if (chooser)
            QMetaObject::invokeMethod(chooser, &QDialog::reject, Qt::QueuedConnection);
        return false;
    }
};

/// Searches, then writes the picture once the search has ended.
void grabAfterSearch(VekProgrammerWidget& panel, QString const& path)
{
    QObject::connect(
        panel.model(), &VekProgrammerModel::TargetEnable, &panel, [&panel, path](bool on) {
            if (!on)
                return;
            bool const written = panel.grab().save(path);
            if (!written)
                QTextStream(stderr) << "programmer_panel: " << path << " can't be written\n";
            QApplication::exit(written ? 0 : 1);
        });
    qApp->installEventFilter(new ChooserCloser(&panel));
    panel.on_searchDevice_clicked();
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    QCommandLineOption const grab(QStringLiteral("grab"), QStringLiteral("Write a picture, end."),
                                  QStringLiteral("out.png"));
    QCommandLineOption const fs(QStringLiteral("fs"), QStringLiteral("Fs file."),
                                QStringLiteral("file"));
    parser.addOptions({grab, fs});
    parser.process(app);

    VekProgrammerWidget panel;
    panel.setWindowTitle(QStringLiteral("Programmer"));
    panel.resize(1200, 420);
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    panel.initData(catalogue->unKnownFamily(), catalogue->unKnownDevice(), parser.value(fs));
    QObject::connect(panel.model(), &VekProgrammerModel::cableInitFinsh, &panel, [&] {
        useFirstCable(panel);
        if (parser.isSet(grab))
            grabAfterSearch(panel, parser.value(grab));
    });
    panel.show();
    panel.model()->scanCablesInit();
    return app.exec();
}
