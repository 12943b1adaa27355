#include "results/realtype.h"

#include <array>

namespace VEK {
namespace {

constexpr std::array<char const*, 4> TypeNames = {"single", "double", "signed", "unsigned"};
static_assert(TypeNames.size() == FixedUnsigned + 1);

} // namespace

void RealType::initial()
{
    *this = RealType();
}

bool RealType::equal(RealType const& other) const
{
    bool const floating = kind == 1;
    return kind == other.kind && type == other.type &&
           (floating || binaryPoint == other.binaryPoint);
}

QString RealType::stringFromFixedFloatingType(int type)
{
    if (type < 0 || type >= int(TypeNames.size()))
        return QString();
    return QLatin1String(TypeNames[std::size_t(type)]);
}

FixedFloatingType RealType::FixedFloatingtypeFromString(QString const& text)
{
    for (std::size_t i = 0; i < TypeNames.size(); ++i) {
        if (text == QLatin1String(TypeNames[i]))
            return FixedFloatingType(i);
    }
    return FixedSigned;
}

} // namespace VEK
