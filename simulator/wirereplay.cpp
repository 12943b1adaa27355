#include "simulator/wirereplay.h"

#include "image/registermap.h"
#include "jtag/frame.h"
#include "simulator/chainword.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace VEK::Simulator {
namespace {

constexpr int SelectBits = 5; ///< A word that selects a core has these alone.
constexpr int LengthBytes = 4;
constexpr int NotRecorded = -100; ///< Result of OPEN and QUERY.
constexpr int ShownBits = 64;

/// Which callback of the session a reply goes to: the key of its id, and the id.
std::optional<QPair<QString, uint>> idOf(CmdPack const& pack)
{
    for (QString const& key : {Protocol::Key::RequestId, Protocol::Key::DataRequestId}) {
        auto const id = pack.constFind(key);
        if (id != pack.constEnd())
            return qMakePair(key, id->toUInt());
    }
    return std::nullopt;
}

void removeIds(CmdPack& pack)
{
    pack.remove(Protocol::Key::RequestId);
    pack.remove(Protocol::Key::DataRequestId);
}

QByteArray textOf(QBitArray const& bits)
{
    QByteArray text(bits.size(), '0');
    for (int i = 0; i < bits.size(); ++i)
        text[i] = bits.testBit(i) ? '1' : '0';
    return text;
}

bool isPoll(CmdPack const& request)
{
    return request.value(Protocol::Key::Oprate) == Protocol::Oprate::ReadStartReg;
}

QString valueText(QVariant const& value)
{
    if (value.userType() == QMetaType::QBitArray) {
        QBitArray const bits = value.toBitArray();
        if (bits.size() > ShownBits)
            return QStringLiteral("%1... (%2 bits)")
                .arg(QLatin1String(textOf(bits).left(ShownBits)))
                .arg(bits.size());
        return QString::fromLatin1(textOf(bits));
    }
    return value.toString();
}

QString textOf(CmdPack request)
{
    removeIds(request);
    QStringList parts{request.take(Protocol::Key::Cmd).toString()};
    if (request.contains(Protocol::Key::Oprate))
        parts << request.take(Protocol::Key::Oprate).toString();
    for (auto entry = request.begin(); entry != request.end(); ++entry)
        parts << entry.key() + QLatin1Char('=') + valueText(entry.value());
    return parts.join(QLatin1Char(' '));
}

} // namespace

void WireState::note(CmdPack const& request)
{
    QString const command = request.value(Protocol::Key::Cmd).toString();
    if (command == Protocol::Cmd::Open) {
        m_core.clear();
        m_pointer.clear();
    }
    if (command != Protocol::Cmd::Write)
        return;
    QBitArray const word = request.value(Protocol::Key::Data).toBitArray();
    if (word.size() == SelectBits)
        m_core = textOf(word);
    ChainWord const chain(word);
    if (chain.opcode == opcodeNumber(Opcode::Select) || chain.opcode == opcodeNumber(Opcode::Burst))
        m_pointer = textOf(word);
    else if (chain.opcode == opcodeNumber(Opcode::Write) && chain.address == Register::Start)
        ++m_starts[m_core];
}

/// Only a read depends on the pointer: what is written between two polls depends on the time.
QByteArray WireState::keyOf(CmdPack request) const
{
    removeIds(request);
    QString const command = request.value(Protocol::Key::Cmd).toString();
    QByteArray key = frameFromPack(request);
    if (command == Protocol::Cmd::Write || command == Protocol::Cmd::Read)
        key += m_core;
    if (command == Protocol::Cmd::Read)
        key += '/' + m_pointer;
    return key;
}

QString WireState::text() const
{
    auto const shown = [](QByteArray const& word) {
        return word.isEmpty() ? QStringLiteral("none") : QString::fromLatin1(word.left(ShownBits));
    };
    return QStringLiteral("behind core select %1 and address or burst %2")
        .arg(shown(m_core), shown(m_pointer));
}

bool WireReplay::load(QIODevice& device, bool takesCut, QString& error)
{
    WireReader reader(device);
    WireReader::State state = reader.begin(m_header);
    WireFrame frame;
    Pending pending;
    while (state == WireReader::State::Ok) {
        state = reader.next(frame);
        if (state == WireReader::State::Ok && !loadFrame(frame, pending, error))
            return false;
    }
    m_state = {};
    if (state == WireReader::State::End || (state == WireReader::State::Cut && takesCut))
        return true;
    error = reader.error();
    return false;
}

bool WireReplay::loadFrame(WireFrame const& frame, Pending& pending, QString& error)
{
    CmdPack pack;
    if (frame.event == WireEvent::Lost) {
        m_isLost = true;
    } else if (!packFromBody(frame.bytes.mid(LengthBytes), pack)) {
        // the recorded client has dropped such a reply, and never sends such a request
        if (frame.event == WireEvent::Request)
            error = QStringLiteral("it holds a request without a message");
    } else if (frame.event == WireEvent::Request) {
        loadRequest(pack, pending);
    } else {
        loadReply(pack, pending);
    }
    return error.isEmpty();
}

void WireReplay::loadRequest(CmdPack const& request, Pending& pending)
{
    m_state.note(request);
    QByteArray const key = m_state.keyOf(request);
    std::vector<Occurrence>& occurrences = m_kinds[key].occurrences;
    std::optional<QPair<QString, uint>> const id = idOf(request);
    if (!id)
        return;
    pending.insert(*id, {key, occurrences.size()});
    occurrences.push_back({m_state.starts()});
}

void WireReplay::loadReply(CmdPack reply, Pending& pending)
{
    std::optional<QPair<QString, uint>> const id = idOf(reply);
    auto const request = id ? pending.find(*id) : pending.end();
    if (request == pending.end())
        return;
    std::vector<Occurrence>& occurrences = m_kinds[request->first].occurrences;
    std::size_t const place = request->second;
    pending.erase(request);
    removeIds(reply);
    QBitArray const bits = reply.value(Protocol::Key::Data).toBitArray();
    Occurrence& occurrence = occurrences[place];
    occurrence.hasFired = !bits.isEmpty() && bits.count(true) == 0;
    int const before = place > 0 ? occurrences[place - 1].answer : -1;
    if (before >= 0 && m_answers[std::size_t(before)] == reply) { // a poll has thousands alike
        occurrence.answer = before;
        return;
    }
    occurrence.answer = int(m_answers.size());
    m_answers.push_back(reply);
}

WireReplay::Occurrence const& WireReplay::Kind::take(int starts, bool isPoll)
{
    if (!isPoll)
        return next < occurrences.size() ? occurrences[next++] : occurrences.back();
    auto const isEarlier = [starts](Occurrence const& o) { return o.starts < starts; };
    auto const isLater = [starts](Occurrence const& o) { return o.starts > starts; };
    auto const from =
        std::find_if_not(occurrences.begin() + std::ptrdiff_t(next), occurrences.end(), isEarlier);
    auto const to = std::find_if(from, occurrences.end(), isLater);
    auto taken = std::find_if(from, to, [](Occurrence const& o) { return o.hasFired; });
    if (taken == to)
        taken = from;
    if (taken == to) // all of this time were asked for
        return from == occurrences.begin() ? *from : *(from - 1);
    next = std::size_t(taken - occurrences.begin()) + 1;
    return *taken;
}

bool WireReplay::serve(CmdPack const& request, CmdPack& reply)
{
    ++m_requests;
    m_closes = false;
    m_state.note(request);
    auto const kind = m_kinds.find(m_state.keyOf(request));
    std::optional<QPair<QString, uint>> const id = idOf(request);
    if (kind == m_kinds.end() || (id && kind->occurrences.empty()))
        return refuse(request, reply);
    if (!id)
        return false;
    Occurrence const& occurrence = kind->take(m_state.starts(), isPoll(request));
    m_closes = occurrence.answer < 0 && m_isLost;
    if (occurrence.answer < 0)
        return false;
    reply = m_answers[std::size_t(occurrence.answer)];
    reply.insert(id->first, request.value(id->first));
    return true;
}

bool WireReplay::refuse(CmdPack const& request, CmdPack& reply)
{
    bool const isRead = request.value(Protocol::Key::Cmd) == Protocol::Cmd::Read;
    std::optional<QPair<QString, uint>> const id = idOf(request);
    m_closes = isRead && id;
    if (m_closes && m_isLost) // the recorded client was no longer able to ask
        return false;
    ++m_unrecorded;
    if (onUnrecorded)
        onUnrecorded(isRead ? textOf(request) + QLatin1Char(' ') + m_state.text()
                            : textOf(request));
    if (!id || isRead)
        return false;
    reply = {{Protocol::Key::Res, NotRecorded},
             {Protocol::Key::Reason, QStringLiteral("The recording holds no such request.")},
             {id->first, request.value(id->first)}};
    return true;
}

} // namespace VEK::Simulator
