#pragma once

#include "acquire/datamanager.h"
#include "jtag/protocol.h"
#include "jtag/wiretap.h"

#include <QString>

namespace VEK {

/// How a run of `Capture` is to be made. Times are in ms.
struct CaptureSettings
{
    static constexpr int Never = -1;

    QString cable = Server::Ft2chName;
    QString location; ///< Of the cable; empty for any.
    QString device;   ///< Model of the device, which some cores' memory layout depends on.

    /// A server on another machine, by name or address, that is there already; empty for the
    /// server of the cable on this machine, which the run starts and ends.
    QString host;
    int port = Server::RemotePort;

    /// The server of the cable is there already: the run neither starts nor ends one.
    bool attach = false;

    WireTap tap; ///< Is handed all that the server is sent and sends, where it is set.

    QList<int> places; ///< In the list of cores; empty for all.
    bool repeat = false;
    Pacing pacing = Pacing::ByReplies;

    int queue = 2000;    ///< How long to wait for a cable that another run holds.
    int wait = Never;    ///< From arming: cores that have not fired then are stopped.
    int force = Never;   ///< From arming: they are forced then. Standard cores only.
    int patience = 5000; ///< For a server to connect or to reply; 2 ms a word written come on top.

    /// A server that owes a reply for longer than `patience` ends the run. Otherwise it is waited
    /// for, see `Capture::serverSilence`.
    bool endsOnSilence = true;

    /// The wait is over as well when the server says that no trigger is to be expected any more,
    /// as a simulated chip does at the end of its stimulus. With `force` the cores are forced then.
    bool givesUp = false;
};

/// How a run of `Capture` ended.
enum class CaptureEnd {
    Complete,
    Stopped,     ///< By `stop`.
    NoServer,    ///< Its program could not be started, or the one to attach to is not there.
    Silent,      ///< The server could not be connected to, or owed a reply for too long.
    Busy,        ///< Another run holds the cable, or the server of another machine.
    OpenFailed,  ///< The device could not be opened.
    Empty,       ///< The device holds no bitstream.
    DeviceError, ///< Another result of opening the device.
    NoTrigger,   ///< A core has not fired in time, and was stopped.
    Lost,        ///< The server has closed the connection.
    Incomplete   ///< The server did not send all of a window.
};

struct CaptureOutcome
{
    CaptureEnd end = CaptureEnd::Complete;
    int result = 0;  ///< The server's result of opening the device.
    QString reason;  ///< The server's words on the device, may be empty.
    QString message; ///< All of it in a sentence or two, for a person.

    /// A run that was stopped by its owner is no failure.
    bool isOk() const { return end == CaptureEnd::Complete || end == CaptureEnd::Stopped; }
};

} // namespace VEK
