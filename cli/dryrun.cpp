#include "cli/dryrun.h"

#include "cli/exitstatus.h"
#include "cli/privatedesk.h"

#include <QBitArray>
#include <QEventLoop>

namespace VEK::Cli {
namespace {

/// The bits that a request reads may be what a file claims.
constexpr int MaxReadBits = 64 * 1024 * 1024;

/// The flag of the initial data says: arm me. A lite core that has captured it at power-up says
/// that it is there.
bool initFlag(SXCore_Lite const* core)
{
    return !core || !core->captureInitDataEnabled;
}

/// Answers as a chip that has captured by the time it is asked.
class NoChip : public Simulator::RequestHandler
{
public:
    /// `flag`: of the initial data, before anything is armed.
    explicit NoChip(bool flag) : m_flag(flag) {}

    bool serve(CmdPack const& request, CmdPack& reply) override
    {
        reply.clear();
        for (QString const& key : {Protocol::Key::RequestId, Protocol::Key::DataRequestId,
                                   Protocol::Key::SectionCount, Protocol::Key::Window})
            if (request.contains(key))
                reply.insert(key, request.value(key));
        QVariant const command = request.value(Protocol::Key::Cmd);
        if (command == Protocol::Cmd::Open) {
            reply.insert(Protocol::Key::Res, Protocol::Result::Ok);
            return true;
        }
        if (command != Protocol::Cmd::Read)
            return false;
        bool const flag =
            m_flag && request.value(Protocol::Key::Oprate) == Protocol::Oprate::ReadCaptureInit;
        int const size = request.value(Protocol::Key::Size).toInt();
        reply.insert(Protocol::Key::Data, QBitArray(qBound(0, size, MaxReadBits), flag));
        return true;
    }

private:
    bool const m_flag;
};

} // namespace

void runDry(Capture& capture, CaptureSettings settings,
            std::function<void(QByteArray const& frame)> const& take)
{
    NoChip chip(initFlag(capture.liteCore()));
    PrivateDesk const desk(chip, settings.cable);
    settings.attach = true;
    settings.tap = [&take](WireEvent event, QByteArray const& frame) {
        if (event == WireEvent::Request)
            take(frame);
    };
    CaptureOutcome outcome;
    QEventLoop loop;
    auto const ended =
        QObject::connect(&capture, &Capture::ended, &loop, [&](CaptureOutcome const& result) {
            outcome = result;
            loop.quit();
        });
    capture.run(settings);
    loop.exec();
    QObject::disconnect(ended);
    if (outcome.end != CaptureEnd::Complete)
        throw Failure{Status::NoAnswer, outcome.message};
}

} // namespace VEK::Cli
