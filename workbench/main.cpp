// The workbench: a host application around the widgets.
//
//     workbench [--device NAME] [--grab FOLDER] [design.vek | session.rsx]
//
// With --grab it runs one capture, writes pictures of its panes into the folder and ends.

#include "workbench/mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("vek"));
    QApplication::setApplicationName(QStringLiteral("workbench"));
    QApplication::setApplicationVersion(QStringLiteral(VEK_VERSION));
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("Configuration or session."));
    QCommandLineOption const device(QStringLiteral("device"),
                                    QStringLiteral("Device on the desk, a row of the programmer."),
                                    QStringLiteral("name"));
    QCommandLineOption const grab(QStringLiteral("grab"),
                                  QStringLiteral("Capture, write pictures."),
                                  QStringLiteral("folder"));
    parser.addOptions({device, grab});
    parser.process(app);

    MainWindow window;
    window.show();
    if (parser.isSet(device))
        window.setDevice(parser.value(device));
    QStringList const files = parser.positionalArguments();
    bool const opened = !files.isEmpty() && window.open(files.constFirst());
    if (parser.isSet(grab)) {
        if (!opened)
            return 1;
        window.grab(parser.value(grab));
    }
    return QApplication::exec();
}
