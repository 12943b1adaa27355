#pragma once

#include <CLI/CLI.hpp>

#include <QString>

#include <functional>

namespace VEK::Cli {

/// Gives a command's exit status. Throws a Failure.
using Command = std::function<int()>;

/// Adds the command to the program's command line: one such function a file. When the command was
/// chosen `chosen` is set.
void addCheckCommand(CLI::App& program, Command& chosen);
void addCompareCommand(CLI::App& program, Command& chosen);
void addConvertCommand(CLI::App& program, Command& chosen);
void addExplainCommand(CLI::App& program, Command& chosen);
void addImageCommand(CLI::App& program, Command& chosen);
void addNetsCommand(CLI::App& program, Command& chosen);
void addNewCommand(CLI::App& program, Command& chosen);
void addRehearseCommand(CLI::App& program, Command& chosen);
void addReplayCommand(CLI::App& program, Command& chosen);
void addReportCommand(CLI::App& program, Command& chosen);
void addRunCommand(CLI::App& program, Command& chosen);

/// A text of the command line.
inline QString textOf(std::string const& argument)
{
    return QString::fromLocal8Bit(argument.c_str());
}

/// One line on standard error, and those of the excerpt under it.
void printError(QString const& message, QString const& excerpt = QString());
void printWarning(QString const& message);

/// One line on standard output. False when it does not get there.
bool printLine(QString const& text);

} // namespace VEK::Cli
