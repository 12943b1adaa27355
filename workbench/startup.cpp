#include "workbench/startup.h"

#include <QStringList>

#include <algorithm>

bool asksForHelp(int argc, char const* const* argv)
{
    return std::any_of(argv + 1, argv + argc, [](char const* argument) {
        return QStringList{QStringLiteral("-h"), QStringLiteral("--help"),
                           QStringLiteral("--help-all"), QStringLiteral("-v"),
                           QStringLiteral("--version")}
            .contains(QLatin1String(argument));
    });
}
