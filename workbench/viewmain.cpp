// The viewer: captures as waves, without a desk.
//
//     vek-view [--clock NAME] [--trigger SAMPLE] [FILE...]
//     vek-view FILE... --grab PICTURE [--from SAMPLE] [--to SAMPLE] [--size WxH] [--dark]
//
// With --grab it writes a picture and ends, also where there is no display.

#include "cli/exitstatus.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/capturepane.h"
#include "workbench/picture.h"
#include "workbench/startup.h"
#include "workbench/theme.h"
#include "workbench/viewwindow.h"

#include <QApplication>
#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>

using namespace VEK;
using Cli::Status;

namespace {

struct Options
{
    QCommandLineOption clock{QStringLiteral("clock"),
                             QStringLiteral("Clock of a simulator's dump, which it is sampled at; "
                                            "without it there is one sample a change."),
                             QStringLiteral("name")};
    QCommandLineOption trigger{QStringLiteral("trigger"),
                               QStringLiteral("Sample of the trigger, whatever the files say."),
                               QStringLiteral("sample")};
    QCommandLineOption grab{QStringLiteral("grab"),
                            QStringLiteral("Write a picture (.png, .svg, .pdf) and end."),
                            QStringLiteral("file")};
    QCommandLineOption from{QStringLiteral("from"),
                            QStringLiteral("First sample in the picture, from 0 on."),
                            QStringLiteral("sample")};
    QCommandLineOption to{QStringLiteral("to"), QStringLiteral("Last sample in the picture."),
                          QStringLiteral("sample")};
    QCommandLineOption size{QStringLiteral("size"),
                            QStringLiteral("Of the picture in pixels (default 1200x560)."),
                            QStringLiteral("WxH"), QStringLiteral("1200x560")};
    QCommandLineOption dark{QStringLiteral("dark"), QStringLiteral("Dark windows.")};
};

int fail(Status status, QString const& message)
{
    std::fprintf(stderr, "vek-view: %s\n", qPrintable(message));
    return int(status);
}

/// Whether an option is a number of a sample; one that is not given is.
bool isSample(QCommandLineParser const& parser, QCommandLineOption const& option, QString& error)
{
    bool ok = true;
    if (parser.isSet(option) && (parser.value(option).toInt(&ok) < 0 || !ok)) {
        error = QStringLiteral("--%1: \"%2\" is no sample")
                    .arg(option.names().constFirst(), parser.value(option));
        return false;
    }
    return true;
}

QString usageError(QCommandLineParser const& parser, Options const& options)
{
    QString error;
    for (QCommandLineOption const* option : {&options.trigger, &options.from, &options.to})
        if (!isSample(parser, *option, error))
            return error;
    if (parser.isSet(options.grab) && !isPictureName(parser.value(options.grab)))
        return QStringLiteral("--grab: a picture is a .png, .svg or .pdf");
    if (parser.isSet(options.grab) && parser.positionalArguments().isEmpty())
        return QStringLiteral("--grab: there is no capture to show");
    if (pictureSize(parser.value(options.size)).isEmpty())
        return QStringLiteral("--size: \"%1\" is not of the form 1200x560")
            .arg(parser.value(options.size));
    bool const hasSpan = parser.isSet(options.from) && parser.isSet(options.to);
    if (hasSpan && parser.value(options.to).toInt() < parser.value(options.from).toInt())
        return QStringLiteral("--to: the span ends before it begins");
    return QString();
}

/// The pane's samples that the options name, by default all.
void showSpan(CapturePane& pane, QCommandLineParser const& parser, Options const& options)
{
    if (!parser.isSet(options.from) && !parser.isSet(options.to))
        return;
    int const last = pane.monitor()->model()->timeLength() - 1;
    int const from = parser.isSet(options.from) ? parser.value(options.from).toInt() : 0;
    int const to = parser.isSet(options.to) ? parser.value(options.to).toInt() : last;
    pane.showSpan(std::min(from, last), std::min(to, last));
}

int grab(ViewWindow& window, QCommandLineParser const& parser, Options const& options)
{
    QWidget& content = *window.content();
    content.setFixedSize(pictureSize(parser.value(options.size)));
    window.adjustSize();
    window.show();
    QApplication::processEvents(); // rows and zoom are on their way
    for (CapturePane* const pane : window.panes())
        showSpan(*pane, parser, options);
    QApplication::processEvents();
    QString error;
    if (!writePicture(content, parser.value(options.grab), error))
        return fail(Status::Output,
                    QStringLiteral("%1: %2").arg(parser.value(options.grab), error));
    return int(Status::Done);
}

int view(QCommandLineParser const& parser, Options const& options)
{
    QString const usage = usageError(parser, options);
    if (!usage.isEmpty())
        return fail(Status::Usage, usage);
    if (parser.isSet(options.dark))
        setDark(true);
    else if (!parser.isSet(options.grab))
        restoreTheme(); // a picture is the same whatever a user has chosen
    Cli::CaptureHints hints;
    hints.clock = parser.value(options.clock);
    hints.eachChange = true;
    if (parser.isSet(options.trigger))
        hints.trigger = parser.value(options.trigger).toInt();
    ViewWindow window(hints);
    for (QString const& path : parser.positionalArguments()) {
        QString error;
        if (!window.open(path, error))
            return fail(Status::Configuration, error);
    }
    for (CapturePane const* const pane : window.panes())
        for (QString const& warning : pane->warnings())
            std::fprintf(stderr, "vek-view: warning: %s\n", qPrintable(warning));
    if (parser.isSet(options.grab))
        return grab(window, parser, options);
    window.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
{
    bool const isPicture = std::any_of(argv + 1, argv + argc, [](char const* argument) {
        return QByteArray(argument).startsWith("--grab");
    });
    if (isPicture) // the same on every screen, and without one
        qputenv("QT_QPA_PLATFORM", "offscreen");
    else
        QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setOrganizationName(QStringLiteral("vek"));
    QApplication::setApplicationName(QStringLiteral("view"));
    QApplication::setApplicationVersion(QStringLiteral(VEK_VERSION));
    QCommandLineParser parser;
    Options const options;
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("Captures: .csv, .rsx, .vcd, .prn."),
                                 QStringLiteral("[file...]"));
    parser.addOptions({options.clock, options.trigger, options.grab, options.from, options.to,
                       options.size, options.dark});
    if (asksForHelp(argc, argv)) {
        QCoreApplication app(argc, argv);
        parser.process(app);
    }
    QApplication app(argc, argv);
    if (!parser.parse(app.arguments()))
        return fail(Status::Usage, parser.errorText());
    return view(parser, options);
}
