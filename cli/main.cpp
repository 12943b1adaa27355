#include "cli/command.h"
#include "cli/exitstatus.h"

#include <QCoreApplication>
#include <QHash>
#include <QTextCodec>

#include <clocale>
#include <cstring>

#include <langinfo.h>

using namespace VEK::Cli;

namespace {

/// Jobs run in the C locale, in which Qt would lose all letters beyond ASCII from names of files.
void useUtf8InPlainLocale()
{
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(::nl_langinfo(CODESET), "ANSI_X3.4-1968") == 0)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

int failUsage(CLI::App& program, CLI::Error const& error)
{
    if (error.get_exit_code() == 0)
        return program.exit(error); // help or version, on standard output
    QString const message = textOf(error.what());
    printError(message + (message.endsWith(QLatin1Char('.'))
                              ? QStringLiteral(" Try vek --help.")
                              : QStringLiteral(". Try vek --help.")));
    return int(Status::Usage);
}

} // namespace

int main(int argc, char* argv[])
{
    qSetGlobalQHashSeed(0); // the order of attributes in a session: equal captures, equal files
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vek"));
    useUtf8InPlainLocale();
    CLI::App program("Captures with the logic analyzers in an FPGA design, for scripts and people.",
                     "vek");
    program.set_version_flag("--version", "vek " VEK_VERSION);
    program.require_subcommand(1);
    program.footer(statusHelp().toStdString());
    Command command;
    addRunCommand(program, command);
    addCheckCommand(program, command);
    addExplainCommand(program, command);
    addImageCommand(program, command);
    addNetsCommand(program, command);
    addNewCommand(program, command);
    addRehearseCommand(program, command);
    addReplayCommand(program, command);
    addConvertCommand(program, command);
    addCompareCommand(program, command);
    addReportCommand(program, command);
    try {
        program.parse(argc, argv);
        return command();
    } catch (CLI::Error const& error) {
        return failUsage(program, error);
    } catch (Failure const& failure) {
        printError(failure.message, failure.excerpt);
        return int(failure.status);
    }
}
