#include "results/sessioncaptures.h"

#include "model/bits.h"
#include "results/windowdocument.h"
#include "results/windowreader.h"

#include <QHash>

#include <algorithm>
#include <cstring>
#include <vector>

namespace VEK {
namespace {

/// Shorter ones may stay in the document.
constexpr int ShortestRun = 64;

bool isBit(char c)
{
    return c == '0' || c == '1';
}

/// The first bit of each of eight characters, the first lowest. The others are told as wrong.
unsigned eightBits(char const* at, quint64& wrong)
{
    quint64 const bits = qFromLittleEndian<quint64>(at) ^ 0x3030303030303030u;
    wrong |= bits & ~quint64(0x0101010101010101u);
    return unsigned(bits * 0x0102040810204080u >> 56);
}

QBitArray packed(char const* at, int count)
{
    QBitArray bits(count);
    char* const bytes = storageOf(bits);
    int i = 0;
    for (quint64 wrong = 0; i + 8 <= count; i += 8)
        bytes[i / 8] = char(eightBits(at + i, wrong));
    for (; i < count; ++i)
        bits.setBit(i, at[i] == '1');
    return bits;
}

char const* endOfBits(char const* at, char const* end)
{
    for (quint64 wrong = 0; at + 8 <= end; at += 8) {
        eightBits(at, wrong);
        if (wrong)
            break;
    }
    return std::find_if_not(at, end, isBit);
}

/// The samples of a session, apart from its text.
class Samples
{
public:
    /// Gives the text with a short mark in place of each element's long run of bits.
    QByteArray takeFrom(QByteArray const& file)
    {
        QByteArray text;
        char const* at = file.constData();
        char const* const end = at + file.size();
        if (file.contains(">#")) // it would look like a mark
            return file;
        while (at < end) {
            auto const* const close =
                static_cast<char const*>(std::memchr(at, '>', std::size_t(end - at)));
            char const* const start = close ? close + 1 : end;
            text.append(at, int(start - at));
            char const* const stop = endOfBits(start, end);
            at = start;
            if (stop - start >= ShortestRun && stop < end && *stop == '<') {
                text += '#' + QByteArray::number(int(m_runs.size()));
                m_runs.push_back(packed(start, int(stop - start)));
                at = stop;
            }
        }
        return text;
    }

    /// False for a text that is not of bits.
    bool bitsOf(QString const& text, QBitArray& bits) const
    {
        if (text.startsWith(QLatin1Char('#'))) {
            bool ok = false;
            std::size_t const place = text.midRef(1).toULongLong(&ok);
            ok = ok && place < m_runs.size();
            if (ok)
                bits = m_runs[place];
            return ok;
        }
        bits = str2bit(text);
        return std::all_of(text.begin(), text.end(),
                           [](QChar c) { return c == QLatin1Char('0') || c == QLatin1Char('1'); });
    }

private:
    std::vector<QBitArray> m_runs;
};

/// Makes one window of all that a "Window" element holds.
class ElementReader
{
public:
    ElementReader(QDomElement const& element, Samples const& samples)
        : m_element(element), m_samples(samples)
    {}

    bool read(CapturedWindow& window, QString& error)
    {
        if (!readSignals(error) || !readRows(window, error))
            return false;
        for (int place = 0; place < m_items.size(); ++place) {
            if (!m_isShown.at(place))
                take(place, m_items.at(place), window.layout, window);
        }
        for (QBitArray const& bits : qAsConst(window.samples)) {
            if (bits.size() != window.length() || bits.isEmpty()) {
                error = QStringLiteral("its signals have not all the same samples");
                return false;
            }
        }
        bool ok = false;
        int const trigger =
            elementText(m_element.firstChildElement(DOM_TAG_TRIGGER_POSITION)).toInt(&ok);
        if (ok && trigger >= 0)
            window.trigger = trigger;
        return true;
    }

private:
    bool readSignals(QString& error)
    {
        QDomElement const parent = m_element.firstChildElement(DOM_TAG_SIGNALS);
        for (QDomElement signal = parent.firstChildElement(DOM_TAG_SIGNAL); !signal.isNull();
             signal = signal.nextSiblingElement(DOM_TAG_SIGNAL)) {
            SignalItem item;
            item.name = signal.attribute(DOM_ATTR_SIGNAL_NAME);
            item.text = signal.attribute(DOM_ATTR_SIGNAL_TEXT);
            item.captureEnable = true;
            QString const id = signal.attribute(DOM_ATTR_SIGNAL_ID);
            QBitArray bits;
            if (!m_samples.bitsOf(elementText(signal), bits)) {
                error = QStringLiteral("the samples of \"%1\" are not of 0 and 1").arg(item.name);
                return false;
            }
            if (!m_places.contains(id))
                m_places.insert(id, m_items.size());
            m_items << item;
            m_bits << bits;
        }
        m_isShown = QVector<bool>(m_items.size());
        if (m_items.isEmpty())
            error = QStringLiteral("a capture has no signals");
        return !m_items.isEmpty();
    }

    bool readRows(CapturedWindow& window, QString& error)
    {
        QDomElement const layout = m_element.firstChildElement(DOM_TAG_LAYOUT);
        for (QDomElement node = layout.firstChildElement(DOM_TAG_NODE); !node.isNull();
             node = node.nextSiblingElement(DOM_TAG_NODE)) {
            QString const type = node.attribute(DOM_ATTR_NODE_TYPE);
            if (type == DOM_VAL_NODE_T_SIG && !readRow(node, window.layout, window, error))
                return false;
            if (type != DOM_VAL_NODE_T_BUS)
                continue;
            SignalItem bus;
            bus.name = node.attribute(DOM_ATTR_NODE_NAME);
            bus.text = node.attribute(DOM_ATTR_NODE_TEXT);
            bus.captureEnable = true;
            for (QDomElement member = node.firstChildElement(DOM_TAG_NODE); !member.isNull();
                 member = member.nextSiblingElement(DOM_TAG_NODE)) {
                if (member.attribute(DOM_ATTR_NODE_TYPE) != DOM_VAL_NODE_T_DIVIDER &&
                    !readRow(member, bus.signalList, window, error))
                    return false;
            }
            if (bus.isBus())
                window.layout << bus;
        }
        return true;
    }

    bool readRow(QDomElement const& node, QList<SignalItem>& rows, CapturedWindow& window,
                 QString& error)
    {
        QString const id = node.attribute(DOM_ATTR_NODE_ID);
        int const place = m_places.value(id, -1);
        if (place < 0) {
            error = QStringLiteral("a row shows the signal \"%1\", which is not there").arg(id);
            return false;
        }
        SignalItem item = m_items.at(place);
        QString const text = node.attribute(DOM_ATTR_NODE_TEXT);
        if (!text.isEmpty() && text != labelOf(item))
            item.text = text;
        take(place, item, rows, window);
        return true;
    }

    void take(int place, SignalItem const& item, QList<SignalItem>& rows, CapturedWindow& window)
    {
        rows << item;
        window.samples << m_bits.at(place);
        m_isShown[place] = true;
    }

    QDomElement m_element;
    Samples const& m_samples;
    QList<SignalItem> m_items;
    QList<QBitArray> m_bits;
    QVector<bool> m_isShown;
    QHash<QString, int> m_places; ///< The first signal of each id.
};

/// Windows lie one after the other.
bool divide(CapturedWindow const& all, int count, QList<CapturedWindow>& windows, QString& error)
{
    if (all.length() % count != 0) {
        error = QStringLiteral("%1 samples are no %2 windows").arg(all.length()).arg(count);
        return false;
    }
    int const length = all.length() / count;
    for (int i = 0; i < count; ++i) {
        windows << all;
        for (QBitArray& bits : windows.last().samples)
            bits = count == 1 ? bits : sub(bits, i * length, length);
    }
    return true;
}

} // namespace

bool readSessionCaptures(QByteArray const& file, ParsedDocument& parsed,
                         QList<SessionCapture>& captures, QString& error)
{
    Samples samples;
    parsed = parseVekDocument(samples.takeFrom(file));
    if (!parsed.isOk()) {
        error = parsed.error;
        return false;
    }
    QDomElement element = parsed.config().firstChildElement(DOM_TAG_WINDOW);
    if (element.isNull())
        error = QStringLiteral("this is no session with a capture");
    for (; error.isEmpty() && !element.isNull();
         element = element.nextSiblingElement(DOM_TAG_WINDOW)) {
        CapturedWindow all;
        SessionCapture capture;
        capture.core = element.attribute(QStringLiteral("core")).toInt();
        int const count = element.firstChildElement(DOM_TAG_TRIGGER_POSITION)
                              .attribute(DOM_ATTR_TRIGGER_SEGMENTS)
                              .toInt();
        if (ElementReader(element, samples).read(all, error) &&
            divide(all, std::max(1, count), capture.windows, error))
            captures << capture;
    }
    return error.isEmpty();
}

} // namespace VEK
