#include "analyzer/console.h"

#include <iostream>

namespace VEK {

void printLine(QString const& text)
{
    std::cout << text.toStdString() << std::endl;
}

} // namespace VEK
