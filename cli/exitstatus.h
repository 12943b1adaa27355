#pragma once

#include <QString>

/// Exit statuses of `vek`, one a cause. Scripts rely on the numbers.
namespace VEK::Cli {

enum class Status : int {
    Done = 0,
    Differs = 1,
    Usage = 2,
    Configuration = 3,
    NoServer = 4,
    NoAnswer = 5,
    Busy = 6,
    OpenFailed = 7,
    Empty = 8,
    DeviceError = 9,
    NoTrigger = 10,
    ServerLost = 11,
    Output = 12,
    Signal = 128 ///< Plus the signal's number.
};

/// A row of the table that help and manual page show.
struct StatusRow
{
    Status status;
    char const* cause; ///< Its word in a manifest.
    char const* meaning;
};

constexpr StatusRow StatusTable[] = {
    {Status::Done, "done", "done"},
    {Status::Differs, "differs", "compared, and differs"},
    {Status::Usage, "usage", "the command line is wrong"},
    {Status::Configuration, "configuration",
     "the configuration, or another file to read, is invalid"},
    {Status::NoServer, "no-server", "the JTAG server's program can't be started"},
    {Status::NoAnswer, "no-answer", "the JTAG server does not answer, or not with all of it"},
    {Status::Busy, "busy", "another run holds the cable"},
    {Status::OpenFailed, "open-failed", "the device can't be opened"},
    {Status::Empty, "empty", "the device is empty"},
    {Status::DeviceError, "device-error", "another device error, told with its number"},
    {Status::NoTrigger, "no-trigger", "no trigger in time"},
    {Status::ServerLost, "server-lost", "the JTAG server was lost"},
    {Status::Output, "output", "an output can't be written"},
    {Status::Signal, "signal", "128 + n: ended by signal n"},
};

/// The table's word for a status.
QString causeOf(Status status);

/// The table as lines of text.
QString statusHelp();

/// What ends a command: thrown before its event loop runs, and told in one line.
struct Failure
{
    Status status;
    QString message;
    QString excerpt = QString(); ///< Lines under it that show the place; may be empty.
};

} // namespace VEK::Cli
