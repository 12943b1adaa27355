#pragma once

/// Register addresses and opcodes of a capture core. Every address has 16 bits, every opcode 5.
namespace VEK {
namespace Register {

constexpr unsigned short Start = 0;           ///< 1 arms, 3 forces, 0 stops; reads 0 when complete.
constexpr unsigned short CaptureInitLite = 2; ///< Initial-data flag of a lite core.
constexpr unsigned short CaptureInit = 3;     ///< Initial-data flag of a standard core.
constexpr unsigned short ExpressionCount = 32; ///< Trigger expressions, minus 1.
constexpr unsigned short CaptureAmount = 33;   ///< Samples in a window, minus 1.
constexpr unsigned short AfterTrigger = 34;    ///< Samples to take after the trigger.
constexpr unsigned short WindowCount = 35;     ///< Windows, minus 1.

constexpr unsigned short MatchUnitBase = 256; ///< Match unit 0; each unit owns 16 addresses.
constexpr unsigned short MatchUnitStep = 16;
constexpr unsigned short MatchUnitA = 0; ///< Offsets within a unit.
constexpr unsigned short MatchUnitB = 1;
constexpr unsigned short MatchUnitC = 2;
constexpr unsigned short MatchUnitControl = 3;
constexpr unsigned short MatchUnitCounter = 4;

constexpr unsigned short ExpressionTable = 43776; ///< Table 0; output 1 is the next address.
constexpr unsigned short ExpressionTableStep = 16;

} // namespace Register

namespace Opcode {

constexpr char Write[] = "01001";  ///< Address, then the data.
constexpr char Select[] = "01101"; ///< Address.
constexpr char Burst[] = "00111";  ///< Address, then a 16-bit count.

constexpr int Bits = 5;
constexpr int AddressBits = 16;

} // namespace Opcode

/// Values of the start register.
namespace StartValue {

constexpr unsigned int Stop = 0;
constexpr unsigned int Arm = 1;
constexpr unsigned int Force = 3;

} // namespace StartValue
} // namespace VEK
