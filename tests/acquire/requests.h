#pragma once

#include "tests/support/scriptedserver.h"

inline QString const Close = QStringLiteral("CMD='CLOSE'");

/// A number in base 2.
inline QString number(int value, int width)
{
    return QStringLiteral("%1").arg(value, width, 2, QLatin1Char('0'));
}

/// Asks for the start register, whose bits are all 0 when the capture is there.
inline QStringList askStart(int size)
{
    return {"CMD='WRITE' DATA=011010000000000000000 OPRATE='WRITE_START_REG'",
            QStringLiteral("CMD='READ' OPRATE='READ_START_REG' SIZE=%1").arg(size)};
}

/// Asks for one section of a window; `size` bits are expected.
inline QStringList askSection(int i, int count, int window, int address, QString const& burst,
                              int size)
{
    QString const place = QStringLiteral("SECTION=%1 SECTION_COUNT=%2").arg(i).arg(count);
    return {QStringLiteral("CMD='WRITE' DATA=00111%1%2 OPRATE='BRUST_READ' %3 WINDOW=%4")
                .arg(number(address, 16), burst, place)
                .arg(window),
            QStringLiteral("CMD='READ' OPRATE='READ_RAM' %1 SIZE=%2 WINDOW=%3")
                .arg(place)
                .arg(size)
                .arg(window)};
}

/// Replies to a request for a section.
inline void answerSection(CmdPack request, QString const& bits)
{
    request.insert("DATA", VEK::str2bit(bits));
    ScriptedServer::reply(request, request);
}
