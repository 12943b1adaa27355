// The workbench: a host application around the widgets.
//
//     vek-workbench [--device NAME] [--grab FOLDER] [design.vek | session.rsx]
//
// With --grab it runs one capture, writes pictures of its panes into the folder and ends.

#include "workbench/mainwindow.h"
#include "workbench/startup.h"
#include "workbench/theme.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setOrganizationName(QStringLiteral("vek"));
    QApplication::setApplicationName(QStringLiteral("workbench"));
    QApplication::setApplicationVersion(QStringLiteral(VEK_VERSION));
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("Configuration or session."),
                                 QStringLiteral("[file]"));
    QCommandLineOption const device(QStringLiteral("device"),
                                    QStringLiteral("Device on the desk, a row of the programmer."),
                                    QStringLiteral("name"));
    QCommandLineOption const grab(QStringLiteral("grab"),
                                  QStringLiteral("Capture, write pictures."),
                                  QStringLiteral("folder"));
    parser.addOptions({device, grab});
    if (asksForHelp(argc, argv)) {
        QCoreApplication app(argc, argv);
        parser.process(app);
    }
    QApplication app(argc, argv);
    parser.process(app);
    if (!parser.isSet(grab))
        restoreTheme();

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
    return QCoreApplication::exec();
}
