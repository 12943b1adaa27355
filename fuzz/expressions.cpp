// A trigger expression: to tokens and to its table.

#include "fuzz/input.h"

#include "image/expression.h"
#include "image/truthtable.h"

using namespace VEK;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const text = QString::fromLatin1(FuzzInput(data, size).bytes);
    QStringList tokens;
    for (QString const& part : text.split(QLatin1Char(' ')))
        tokens << part;
    isOk(tokens);
    if (logicTruthTable(text).size() > MaxTruthTable)
        qFatal("a table beyond what a core holds");
    return 0;
}
