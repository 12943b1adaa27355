#pragma once

#include "jtag/protocol.h"

#include <QObject>

#include <functional>

/// The vocabulary of requests. The session itself keeps the bare callbacks; the classes are for a
/// host that wants to hand requests around as objects.
namespace VEK {

/// Called at most once, with the reply without its id key.
using TaskCallback = std::function<void(CmdPack const&)>;

/// Called for each reply, without its id key. The bool is clear before each call; setting it says
/// that the task is finished.
using DataTaskCallback = std::function<void(CmdPack const&, bool*)>;

/// A request on its way.
class JtagConnection : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    QUrl url;
    CmdPack pack;
};

/// A request with one reply.
class JtagTask : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    TaskCallback callback;
};

/// A request with any number of replies.
class JtagDataTask : public JtagTask
{
    Q_OBJECT

public:
    using JtagTask::JtagTask;

    DataTaskCallback dataCallback;
};

} // namespace VEK
