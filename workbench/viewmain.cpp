// The viewer: captures side by side, without a desk.
//
//     vek-view [--from N] [--to N] [--clock CLOCK] FILE...
//     vek-view --grab PICTURE.png|svg|pdf [--size WxH] [--dark] FILE...

#include "workbench/capturearea.h"
#include "workbench/picture.h"
#include "workbench/startup.h"
#include "workbench/theme.h"
#include "workbench/viewwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>

using VEK::Cli::Failure;
using VEK::Cli::Status;

namespace {

constexpr QSize UsualSize{1200, 560};
constexpr char const* DisplayVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};

struct Words
{
    QStringList files;
    VEK::Cli::CaptureHints hints;
    SampleRange range;
    QString picture; ///< Null for a window.
    QSize size = UsualSize;
    bool isDark = false;
};

bool isAmong(int argc, char const* const* argv, QStringList const& words)
{
    return std::any_of(argv + 1, argv + argc, [&](char const* argument) {
        QString const text = QLatin1String(argument);
        return std::any_of(words.begin(), words.end(), [&](QString const& word) {
            return text == word || text.startsWith(word + QLatin1Char('='));
        });
    });
}

Failure usage(QString const& message)
{
    return {Status::Usage, message};
}

/// The option's number; nothing when it is not given.
std::optional<int> numberOf(QCommandLineParser const& parser, QCommandLineOption const& option)
{
    if (!parser.isSet(option))
        return std::nullopt;
    bool ok = false;
    int const number = parser.value(option).toInt(&ok);
    if (!ok || number < 0)
        throw usage(QStringLiteral("--%1: \"%2\" is no number from 0 on")
                        .arg(option.names().first(), parser.value(option)));
    return number;
}

/// Whether what is given fits together; `size` is the text of the size, empty when none is given.
void check(Words const& words, QString const& size)
{
    if (words.size.isEmpty())
        throw usage(QStringLiteral("--size: \"%1\" is not of the form 1200x560").arg(size));
    if (words.range.from && words.range.to && *words.range.to < *words.range.from)
        throw usage(QStringLiteral("--to: the span ends before it begins"));
    if (words.picture.isNull() && !size.isEmpty())
        throw usage(QStringLiteral("--size: only a picture has one"));
    if (words.picture.isNull())
        return;
    if (!isPictureName(words.picture))
        throw usage(QStringLiteral("--grab: a picture is a .png, .svg or .pdf"));
    if (words.files.isEmpty())
        throw usage(QStringLiteral("--grab: there is no capture to show"));
}

/// Help and version end the program.
Words readWords(QCoreApplication const& app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows captures: windows of a run, sessions, exports and simulators' dumps."));
    QCommandLineOption const help = parser.addHelpOption();
    QCommandLineOption const version = parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("file"),
        QStringLiteral("Captures, .csv .rsx .vcd .prn .raw; the windows of "
                       "one run are shown one after the other."),
        QStringLiteral("[file...]"));
    auto const option = [&](char const* name, char const* text, char const* value) {
        QCommandLineOption made{QString(QLatin1String(name))};
        made.setDescription(QLatin1String(text));
        made.setValueName(QLatin1String(value));
        parser.addOption(made);
        return made;
    };
    auto const grab = option("grab", "Write a picture, .png .svg or .pdf, and end.", "picture");
    auto const from = option("from", "First sample in view.", "sample");
    auto const to = option("to", "Last sample in view.", "sample");
    auto const size = option("size", "Of the picture in pixels (default 1200x560).", "WxH");
    auto const dark = option("dark", "Dark windows.", "");
    auto const clock = option("clock",
                              "Net at which a simulator's dump is sampled (default: a "
                              "sample for each time of a change), or the frequency of a "
                              "plain one.",
                              "clock");
    auto const trigger =
        option("trigger", "Sample of the trigger, whatever the files say.", "sample");
    auto const core = option("core", "Index of the one core that is meant.", "core");
    if (!parser.parse(app.arguments()))
        throw usage(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    Words words;
    words.files = parser.positionalArguments();
    for (QString const& text : parser.values(clock)) {
        if (!words.hints.times.parse(text))
            words.hints.clock = text;
    }
    words.hints.trigger = numberOf(parser, trigger);
    words.hints.core = numberOf(parser, core);
    words.range = SampleRange{numberOf(parser, from), numberOf(parser, to)};
    if (parser.isSet(grab))
        words.picture = QLatin1String("") + parser.value(grab); // not null
    words.isDark = parser.isSet(dark);
    if (parser.isSet(size))
        words.size = pictureSize(parser.value(size));
    check(words, parser.isSet(size) ? parser.value(size) : QString());
    return words;
}

void print(QString const& message)
{
    std::fprintf(stderr, "vek-view: %s\n", qPrintable(message));
}

/// Lays the captures out on a sheet of the picture's size.
void layOut(QWidget& sheet, CaptureArea& area, Words const& words)
{
    sheet.resize(words.size);
    area.setGeometry(sheet.rect());
    for (CapturePane* const pane : area.panes()) {
        pane->setTitleVisible(area.count() > 1);
        pane->hideScrollBars();
    }
    sheet.show();
    QCoreApplication::processEvents(); // rows and zoom are on their way
    for (CapturePane* const pane : area.panes())
        pane->showRange(words.range);
    QCoreApplication::processEvents();
}

void grab(Words const& words)
{
    QWidget sheet;
    CaptureArea area(&sheet);
    for (QStringList const& files : filesByCapture(words.files)) {
        ViewedCapture const capture = readViewedCapture(files, words.hints);
        for (QString const& warning : capture.warnings)
            print(QStringLiteral("warning: ") + warning);
        area.add(capture);
    }
    layOut(sheet, area, words);
    QString error;
    if (!writePicture(sheet, words.picture, error))
        throw Failure{Status::Output,
                      QStringLiteral("%1 can't be written: %2").arg(words.picture, error)};
}

int show(Words const& words)
{
    ViewWindow window(words.hints);
    window.open(words.files);
    window.show();
    if (words.range.isSet()) {
        QCoreApplication::processEvents(); // the widths are known then
        window.showRange(words.range);
    }
    QCoreApplication::exec();
    return int(window.status());
}

bool hasDisplay(int argc, char const* const* argv)
{
    return isAmong(argc, argv, {QStringLiteral("-platform"), QStringLiteral("--platform")}) ||
           std::any_of(std::begin(DisplayVariables), std::end(DisplayVariables),
                       qEnvironmentVariableIsSet);
}

int run(int argc, char** argv)
{
    if (asksForHelp(argc, argv)) {
        QCoreApplication const app(argc, argv);
        readWords(app);
    }
    bool const isGrab = isAmong(argc, argv, {QStringLiteral("--grab"), QStringLiteral("-grab")});
    if (isGrab) // the same on every screen, and without one
        qputenv("QT_QPA_PLATFORM", "offscreen");
    else
        QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    if (!hasDisplay(argc, argv))
        throw usage(QStringLiteral("there is no display; --grab needs none"));
    QApplication const app(argc, argv);
    Words const given = readWords(app);
    if (given.isDark)
        setDark(true);
    else if (given.picture.isNull())
        restoreTheme(); // a picture is the same whatever a user has chosen
    if (given.picture.isNull())
        return show(given);
    grab(given);
    return int(Status::Done);
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication::setOrganizationName(QStringLiteral("vek"));
    QApplication::setApplicationName(QStringLiteral("view"));
    QApplication::setApplicationVersion(QStringLiteral(VEK_VERSION));
    try {
        return run(argc, argv);
    } catch (Failure const& failure) {
        print(failure.message);
        return int(failure.status);
    }
}
