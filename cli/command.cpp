#include "cli/command.h"

#include <cstdio>

namespace VEK::Cli {
namespace {

void print(char const* kind, QString message)
{
    message.replace(QLatin1Char('\n'), QLatin1Char(' '));
    std::fprintf(stderr, "vek: %s: %s\n", kind, message.toLocal8Bit().constData());
}

} // namespace

void printError(QString const& message, QString const& excerpt)
{
    print("error", message);
    if (!excerpt.isEmpty())
        std::fprintf(stderr, "%s\n", excerpt.toLocal8Bit().constData());
}

void printWarning(QString const& message)
{
    print("warning", message);
}

bool printLine(QString const& text)
{
    bool const isWritten = std::puts(text.toLocal8Bit().constData()) >= 0;
    return std::fflush(stdout) == 0 && isWritten;
}

} // namespace VEK::Cli
