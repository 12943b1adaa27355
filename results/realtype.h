#pragma once

#include <QString>

namespace VEK {

/// How the bits of a real value are read.
enum FixedFloatingType : int {
    FloatingSingle = 0,
    FloatingDouble = 1,
    FixedSigned = 2, ///< Sign and magnitude.
    FixedUnsigned = 3
};

/// The reading of a value as a real number. Nothing is checked here: whoever uses the widths takes
/// bits that a value does not have as 0.
struct RealType
{
    int kind = 0;           ///< 0 fixed point, 1 floating point.
    int type = FixedSigned; ///< A `FixedFloatingType`.
    int binaryPoint = 0;    ///< Number of fraction bits of a fixed-point value.
    int exponentWidth = 8;  ///< Bits of the exponent of a floating value.
    int fractionWidth = 24; ///< Bits of its significand, the hidden one counted.

    /// Restores the defaults.
    void initial();

    /// Same kind and type and, for fixed kinds, the same point. The widths are not compared.
    bool equal(RealType const& other) const;

    /// "single", "double", "signed" or "unsigned"; empty for any other number.
    static QString stringFromFixedFloatingType(int type);

    /// The way back; any other word is taken as signed.
    static FixedFloatingType FixedFloatingtypeFromString(QString const& text);
};

} // namespace VEK
