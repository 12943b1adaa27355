#include "cli/imageprinter.h"

#include "cli/command.h"
#include "cli/matchtext.h"
#include "image/registermap.h"
#include "image/truthtable.h"
#include "model/bits.h"
#include "trigger/trigger.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace VEK::Cli {
namespace {

template <typename Json>
QString compact(Json const& json)
{
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

QString bitsText(ImageRow const& row)
{
    QString text = bit2str(row.bits);
    if (row.headBits < text.size())
        text.insert(row.headBits, QLatin1Char(' '));
    if (row.address >= 0 && text.size() > Opcode::Bits)
        text.insert(Opcode::Bits, QLatin1Char(' '));
    return text;
}

class TextPrinter : public ImagePrinter
{
public:
    explicit TextPrinter(bool frames) : m_frames(frames) {}

    void begin(Capture const& capture, QList<int> const& places) override
    {
        if (capture.liteCore())
            return;
        for (int const place : places) {
            SxCore const& core = *capture.cores().at(place);
            line(QStringLiteral("core %1: fields of %2 bits")
                     .arg(core.index)
                     .arg(core.dataOutShiftWidth()));
            line(QStringLiteral("  trigger: %1").arg(triggerText(core)));
            for (QString const& note : triggerNotes(core))
                line(QStringLiteral("  note: %1").arg(note));
            for (MatchUnit const* unit : core.enabledMatchUnits())
                if (unit->trigger && !unit->trigger->signalList.isEmpty())
                    line(QStringLiteral("  M%1: %2").arg(unit->index).arg(matchText(*unit)));
            for (QString const& expression : core.expressions)
                line(QStringLiteral("  %1: %2").arg(expression, logicTruthTable(expression)));
        }
    }

    void row(ImageRow const& row) override
    {
        ++m_count;
        QString const target = row.address < 0 ? QString()
                                               : QStringLiteral("0x%1 %2")
                                                     .arg(row.address, 4, 16, QLatin1Char('0'))
                                                     .arg(row.registerName);
        QStringList parts{QStringLiteral("%1").arg(m_count, 6), row.request.leftJustified(21),
                          target.leftJustified(32), bitsText(row), row.meaning};
        parts.removeAll(QString());
        line(parts.join(QStringLiteral("  ")));
        if (m_frames)
            line(QStringLiteral("        ") + QString::fromLatin1(row.frame.toHex(' ')));
    }

    void end(ImageTotals const& totals) override
    {
        line(QStringLiteral("%1 words of %2 bits, %3 reads of %4 bits, %5 requests of %6 bytes")
                 .arg(totals.words)
                 .arg(totals.wordBits)
                 .arg(totals.reads)
                 .arg(totals.readBits)
                 .arg(totals.frames)
                 .arg(totals.bytes));
    }

private:
    bool m_frames;
    int m_count = 0;
};

/// One object, whose rows are printed as they come.
class JsonPrinter : public ImagePrinter
{
public:
    explicit JsonPrinter(bool frames) : m_frames(frames) {}

    void begin(Capture const& capture, QList<int> const& places) override
    {
        QJsonArray cores;
        if (!capture.liteCore())
            for (int const place : places)
                cores << toJson(*capture.cores().at(place));
        line(QStringLiteral("{\"cores\": %1,").arg(compact(cores)));
        line(QStringLiteral("\"requests\": ["));
    }

    void row(ImageRow const& row) override
    {
        QJsonObject json{{QStringLiteral("request"), row.request},
                         {QStringLiteral("meaning"), row.meaning}};
        if (row.core >= 0)
            json.insert(QStringLiteral("core"), row.core);
        if (!row.bits.isEmpty())
            json.insert(QStringLiteral("bits"), bit2str(row.bits));
        if (row.size >= 0)
            json.insert(QStringLiteral("size"), row.size);
        if (row.address >= 0) {
            json.insert(QStringLiteral("address"), row.address);
            json.insert(QStringLiteral("register"), row.registerName);
            json.insert(QStringLiteral("field"), bit2str(cutHead(row.bits, row.headBits)));
        }
        if (m_frames)
            json.insert(QStringLiteral("frame"), QString::fromLatin1(row.frame.toHex()));
        QString const separator = m_isFirst ? QString() : QStringLiteral(",");
        m_isFirst = false;
        line(separator + compact(json));
    }

    void end(ImageTotals const& totals) override
    {
        QJsonObject const json{{QStringLiteral("words"), totals.words},
                               {QStringLiteral("word_bits"), totals.wordBits},
                               {QStringLiteral("reads"), totals.reads},
                               {QStringLiteral("read_bits"), totals.readBits},
                               {QStringLiteral("requests"), totals.frames},
                               {QStringLiteral("bytes"), totals.bytes}};
        line(QStringLiteral("],"));
        line(QStringLiteral("\"totals\": %1}").arg(compact(json)));
    }

private:
    static QJsonObject toJson(SxCore const& core)
    {
        QJsonObject units;
        for (MatchUnit const* unit : core.enabledMatchUnits())
            if (unit->trigger && !unit->trigger->signalList.isEmpty())
                units.insert(QStringLiteral("M%1").arg(unit->index), matchText(*unit));
        QJsonArray expressions;
        for (QString const& expression : core.expressions)
            expressions << QJsonObject{{QStringLiteral("text"), expression},
                                       {QStringLiteral("table"), logicTruthTable(expression)}};
        return {{QStringLiteral("index"), core.index},
                {QStringLiteral("width"), core.dataOutShiftWidth()},
                {QStringLiteral("trigger"), triggerText(core)},
                {QStringLiteral("units"), units},
                {QStringLiteral("expressions"), expressions}};
    }

    bool m_frames;
    bool m_isFirst = true;
};

} // namespace

void ImagePrinter::line(QString const& text)
{
    m_isWritten &= printLine(text);
}

std::unique_ptr<ImagePrinter> makeImagePrinter(bool json, bool frames)
{
    if (json)
        return std::make_unique<JsonPrinter>(frames);
    return std::make_unique<TextPrinter>(frames);
}

} // namespace VEK::Cli
