#pragma once

#include <QMap>
#include <QString>
#include <QUrl>
#include <QVariant>

/// One message to or from a JTAG server.
using CmdPack = QMap<QString, QVariant>;

/// The vocabulary of the protocol. Spellings such as OPRATE, WRITE_REGISTOR, BRUST_READ and
/// WRITE_INFOR are the protocol's: servers match them to the letter.
namespace VEK {

using ::CmdPack;

/// A request as a caller hands it to the session.
struct JtagRequest
{
    QUrl url; ///< Left empty by every caller; never sent.
    CmdPack pack;
};

namespace Protocol {

/// Stream version of every frame (QDataStream::Qt_4_6); set by the frame functions only.
constexpr int StreamVersion = 12;

namespace Key {
inline const QString Cmd = QStringLiteral("CMD");
inline const QString Oprate = QStringLiteral("OPRATE");
inline const QString Data = QStringLiteral("DATA");
inline const QString Size = QStringLiteral("SIZE");
inline const QString Section = QStringLiteral("SECTION");
inline const QString SectionCount = QStringLiteral("SECTION_COUNT");
inline const QString Window = QStringLiteral("WINDOW");
inline const QString Chain = QStringLiteral("CHAIN");
inline const QString CableIndex = QStringLiteral("cable_index");
inline const QString CableLocation = QStringLiteral("cable_location");
inline const QString Cables = QStringLiteral("CABLES");
inline const QString Res = QStringLiteral("RES");
inline const QString Reason = QStringLiteral("REASON"); ///< A text; servers need not give it.
inline const QString Mode = QStringLiteral("MODE");
inline const QString SxCore = QStringLiteral("Sxcore");
inline const QString MemDataWidth = QStringLiteral("MEM_DATA_WIDTH");
inline const QString ShiftWidth = QStringLiteral("DATA_OUT_SHIFT_REGISTER_WIDTH");
inline const QString RequestId = QStringLiteral("request_id");
inline const QString DataRequestId = QStringLiteral("data_request_id");
} // namespace Key

namespace Cmd {
inline const QString Open = QStringLiteral("OPEN");
inline const QString Close = QStringLiteral("CLOSE");
inline const QString Query = QStringLiteral("QUERY");
inline const QString Read = QStringLiteral("READ");
inline const QString Write = QStringLiteral("WRITE");
inline const QString WriteInfor = QStringLiteral("WRITE_INFOR");
} // namespace Cmd

namespace Oprate {
inline const QString WriteRegistor = QStringLiteral("WRITE_REGISTOR");
inline const QString WriteStartReg = QStringLiteral("WRITE_START_REG");
inline const QString ReadStartReg = QStringLiteral("READ_START_REG");
inline const QString SelectCaptureInit = QStringLiteral("OP_SELECT_CAPTURE_INIT");
inline const QString ReadCaptureInit = QStringLiteral("OP_READ_CAPTURE_INIT");
inline const QString BrustRead = QStringLiteral("BRUST_READ");
inline const QString ReadRam = QStringLiteral("READ_RAM");
} // namespace Oprate

namespace Mode {
inline const QString Standard = QStringLiteral("standard");
inline const QString Lite = QStringLiteral("lite");
} // namespace Mode

/// Values of `RES` in the reply to OPEN.
namespace Result {
constexpr int Ok = 0;
constexpr int OpenFailed = -1;
constexpr int NoBitstream = -20;
} // namespace Result

/// Overhead of a standard READ_RAM reply: bits in front of the records and behind them.
constexpr int RamHeadBits = 32;
constexpr int RamTailBits = 1;

} // namespace Protocol

/// Names, sockets and ports of the servers, and the times of starting them.
namespace Server {

inline const QString Ft2chName = QStringLiteral("Kavro USB Cable(FT2CH)");
inline const QString Tr7qzName = QStringLiteral("Kavro USB Cable(TR7QZ)");
inline const QString WinUsbName = QStringLiteral("Kavro USB Cable(WINUSB)");
inline const QString LptName = QStringLiteral("Parallel Port(LPT)");

inline const QString UsbProgram = QStringLiteral("scanbridge");
inline const QString LptProgram = QStringLiteral("scanbridge_lpt");
inline const QString Tr7qzProgram = QStringLiteral("scanbridge_7qz");
inline const QString LocalArgument = QStringLiteral("-local");

inline const QString UsbSocket = QStringLiteral("vek1");
inline const QString LptSocket = QStringLiteral("vek");
inline const QString Tr7qzSocket = QStringLiteral("vek7qz");

constexpr int UsbPort = 36545;
constexpr int LptPort = 36546;
constexpr int RemotePort = 36547; ///< Also the port of the TR7QZ record.

/// Folder of the servers, relative to the folder of the running program.
inline const QString Folder = QStringLiteral("../../Programmer/bin");

constexpr int StartTimeout = 5000;   ///< ms, for a server process to start.
constexpr int StopTimeout = 3000;    ///< ms, for a killed one to end.
constexpr int ConnectTimeout = 5000; ///< ms, for one connection attempt.
constexpr int ConnectRounds = 64;    ///< Attempts at most.
constexpr int ConnectPause = 30000;  ///< us, before each attempt.

} // namespace Server

/// The cable kinds and channels of the batch tool's command line.
enum CABLE : int { CableTR7QZ = 0, CableFT2CH = 1, CableLPT = 3 };
enum CHANNEL : int { Channel0 = 0, Channel1 = 1 };

} // namespace VEK
