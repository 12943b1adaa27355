#pragma once

#include "jtag/jtagsession.h"
#include "model/bits.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

/// Stands in for a JTAG server without a socket: records every request of the session as a line of
/// text, and replies when it is told to.
class ScriptedServer : public QObject
{
public:
    ScriptedServer()
    {
        VEK::JtagSession* session = VEK::JtagSession::shared();
        session->cancelAll();
        session->setWorkerMode(true);
        connect(session, &VEK::JtagSession::createData, this, &ScriptedServer::take);
    }

    ~ScriptedServer() override
    {
        VEK::JtagSession::shared()->cancelAll();
        VEK::JtagSession::shared()->setWorkerMode(false);
    }

    /// The requests so far, which are then forgotten. Keys in ascending order, without the ids.
    QStringList takeLines()
    {
        QStringList lines;
        for (CmdPack const& pack : packs)
            lines.append(line(pack));
        packs.clear();
        return lines;
    }

    /// Replies to a request with these keys and the request's id.
    static void reply(CmdPack const& request, CmdPack answer)
    {
        for (QString const& key :
             {VEK::Protocol::Key::RequestId, VEK::Protocol::Key::DataRequestId}) {
            if (request.contains(key))
                answer.insert(key, request.value(key));
        }
        VEK::JtagSession::shared()->dataReturned(answer);
    }

    static void replyData(CmdPack const& request, QString const& bits)
    {
        reply(request, {{VEK::Protocol::Key::Data, VEK::str2bit(bits)}});
    }

    static QString line(CmdPack pack)
    {
        pack.remove(VEK::Protocol::Key::RequestId);
        pack.remove(VEK::Protocol::Key::DataRequestId);
        QStringList words;
        for (auto it = pack.constBegin(); it != pack.constEnd(); ++it)
            words.append(it.key() + QLatin1Char('=') + text(it.value()));
        return words.join(QLatin1Char(' '));
    }

    QList<CmdPack> packs;
    std::function<void(CmdPack const&)> onRequest; ///< Called for each request, after recording.

private:
    static QString text(QVariant const& value)
    {
        if (value.type() == QVariant::BitArray)
            return VEK::bit2str(value.toBitArray());
        if (value.type() == QVariant::List) {
            QStringList items;
            for (QVariant const& item : value.toList())
                items.append(text(item));
            return QLatin1Char('[') + items.join(QLatin1Char(',')) + QLatin1Char(']');
        }
        QString const quote = value.type() == QVariant::String ? QStringLiteral("'") : QString();
        return quote + value.toString() + quote;
    }

    void take(CmdPack const& pack)
    {
        packs.append(pack);
        if (onRequest)
            onRequest(pack);
    }
};
