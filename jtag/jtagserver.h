#pragma once

#include <QString>

namespace VEK {

/// One server endpoint.
struct JtagServer
{
    QString name; ///< Cable name: shown to users, matched by `connectServer`, key of the process.
    QString address; ///< Local socket name, or host name of a remote server.
    int port = 0;    ///< Used as unsigned short, by a remote connection only.
    int cable = 0;   ///< A VEK::CABLE.
    int channel = 0; ///< A VEK::CHANNEL.
};

} // namespace VEK
