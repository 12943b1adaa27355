#pragma once

/// Whether the command line asks for help or the version, which is answered without a display too,
/// where an application with windows aborts.
bool asksForHelp(int argc, char const* const* argv);
