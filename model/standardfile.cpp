#include "model/standardfile.h"

#include "model/signallist.h"
#include "model/vekfile.h"

#include <QFile>
#include <QXmlStreamWriter>

namespace VEK {
namespace {

/// Up to here a file is read whatever else it holds; above, up to LATEST_VERSION.
const QString LowestVersion = QStringLiteral("2.0");

/// Values of the attribute "capture_from_trigger" that older files have.
enum CaptureSource { CaptureListed = 0, CapturePorts = 1 };

void writeTriggers(QXmlStreamWriter& writer, SxCore const& core)
{
    writer.writeStartElement(QStringLiteral("Triggers"));
    for (TriggerPort const* port : core.triggers) {
        writer.writeStartElement(QStringLiteral("Trigger"));
        writeNumber(writer, QStringLiteral("index"), port->index);
        if (!port->signalList.isEmpty())
            writeSignalList(writer, port->signalList, CaptureFlag::None);
        writer.writeEndElement();
    }
    writer.writeEndElement();
}

void writeMatchUnit(QXmlStreamWriter& writer, MatchUnit const& unit)
{
    writer.writeEmptyElement(QStringLiteral("MatchUnit"));
    writeNumber(writer, QStringLiteral("index"), unit.index);
    writeNumber(writer, QStringLiteral("enabled"), unit.enabled);
    writeNumber(writer, QStringLiteral("match_type"), unit.matchType);
    writeNumber(writer, QStringLiteral("counter_enable"), unit.counterEnable);
    writeNumber(writer, QStringLiteral("counter_width"), unit.counterWidth);
    writeNumber(writer, QStringLiteral("counter"), unit.counter);
    writeNumber(writer, QStringLiteral("countinuous"), unit.continuous);
    writeNumber(writer, QStringLiteral("func"), unit.func);
    writer.writeAttribute(QStringLiteral("value0"), unit.value0);
    writer.writeAttribute(QStringLiteral("value1"), unit.value1);
    if (unit.trigger)
        writeNumber(writer, QStringLiteral("trigger"), unit.trigger->index);
}

void writeExpressions(QXmlStreamWriter& writer, SxCore const& core)
{
    writer.writeStartElement(QStringLiteral("Expressions"));
    if (core.expressionType == ExpressionDynamic) {
        writer.writeAttribute(QStringLiteral("type"), QStringLiteral("Dynamic"));
        writeNumber(writer, QStringLiteral("ex_implementation"), core.exImplementation);
    } else {
        writer.writeAttribute(QStringLiteral("type"), QStringLiteral("Static"));
    }
    for (QString const& expression : core.expressions)
        writer.writeTextElement(QStringLiteral("Expression"), expression);
    writer.writeEndElement();
}

void writeCore(QXmlStreamWriter& writer, SxCore const& core)
{
    writer.writeStartElement(QStringLiteral("SxCore"));
    writeNumber(writer, QStringLiteral("index"), core.index);
    writer.writeAttribute(QStringLiteral("sample_clock"), core.sampleClock);
    writeNumber(writer, QStringLiteral("trig_type"), core.trigType);
    writeNumber(writer, QStringLiteral("storage_depth"), core.storageDepth);
    writeNumber(writer, QStringLiteral("window_num"), core.windowNum);
    writeNumber(writer, QStringLiteral("capture_amount"), core.captureAmount);
    writeNumber(writer, QStringLiteral("trigger_pos"), core.triggerPos);
    writer.writeAttribute(QStringLiteral("module_name"), core.moduleName);
    writeNumber(writer, QStringLiteral("implementation"), core.implementation);
    writer.writeAttribute(QStringLiteral("capture_init_data_enabled"),
                          core.captureInitDataEnabled ? QStringLiteral("true")
                                                      : QStringLiteral("false"));
    writeSignalList(writer, core.allSignalList, CaptureFlag::Written);
    writeTriggers(writer, core);
    writer.writeStartElement(QStringLiteral("MatchUnits"));
    for (MatchUnit const* unit : core.matchUnits)
        writeMatchUnit(writer, *unit);
    writer.writeEndElement();
    writeExpressions(writer, core);
    writer.writeEndElement();
}

/// A missing attribute gives 0 and overwrites the default of the model: old writers left out what
/// was 0.
void readAttributes(QDomElement const& element, SxCore& core)
{
    core.index = number(element, QStringLiteral("index"));
    core.sampleClock = element.attribute(QStringLiteral("sample_clock"));
    core.trigType = number(element, QStringLiteral("trig_type"));
    core.storageDepth = number(element, QStringLiteral("storage_depth"));
    core.windowNum = number(element, QStringLiteral("window_num"));
    core.captureAmount = number(element, QStringLiteral("capture_amount"));
    core.triggerPos = number(element, QStringLiteral("trigger_pos"));
    core.implementation = number(element, QStringLiteral("implementation"));
    core.captureInitDataEnabled =
        element.attribute(QStringLiteral("capture_init_data_enabled")) == QLatin1String("true");
    if (element.hasAttribute(QStringLiteral("module_name")))
        core.moduleName = element.attribute(QStringLiteral("module_name"));
}

void readTriggers(QDomElement const& triggers, int captureSource, SxCore& core)
{
    for (QDomElement const& element : childElements(triggers, QStringLiteral("Trigger"))) {
        TriggerPort* port = core.getTrigger(number(element, QStringLiteral("index")));
        if (!port)
            continue;
        port->signalList =
            readSignalList(element.firstChildElement(QStringLiteral("SignalList")), ListForm::Port);
        if (captureSource == CapturePorts)
            core.dataSignalList += port->signalList;
    }
}

void readMatchUnits(QDomElement const& units, SxCore& core)
{
    for (QDomElement const& element : childElements(units, QStringLiteral("MatchUnit"))) {
        MatchUnit* unit = core.matchUnit(number(element, QStringLiteral("index")));
        if (!unit)
            continue;
        unit->enabled = number(element, QStringLiteral("enabled")) != 0;
        unit->matchType = MatchType(number(element, QStringLiteral("match_type")));
        unit->counterEnable = number(element, QStringLiteral("counter_enable")) != 0;
        unit->counterWidth = number(element, QStringLiteral("counter_width"));
        unit->counter = number(element, QStringLiteral("counter"));
        unit->continuous = number(element, QStringLiteral("countinuous")) != 0;
        unit->func = MatchFunc(number(element, QStringLiteral("func")));
        unit->value0 = element.attribute(QStringLiteral("value0"));
        unit->value1 = element.attribute(QStringLiteral("value1"));
        QString const trigger = element.attribute(QStringLiteral("trigger"));
        TriggerPort* port = trigger.isEmpty() ? nullptr : core.getTrigger(trigger.toInt());
        if (port)
            unit->trigger = port;
    }
}

/// Turns the older spelling of a unit, Match[3], into M3.
QString currentSpelling(QString text)
{
    text.remove(QLatin1Char(']'));
    text.remove(QStringLiteral("atch["));
    return text.toUpper();
}

void readExpressions(QDomElement const& expressions, SxCore& core)
{
    if (expressions.isNull())
        return;
    if (expressions.attribute(QStringLiteral("type")) == QLatin1String("Dynamic")) {
        core.expressionType = ExpressionDynamic;
        core.exImplementation = number(expressions, QStringLiteral("ex_implementation"));
    } else {
        core.expressionType = ExpressionStatic;
    }
    core.expressions.clear();
    for (QDomElement const& element : childElements(expressions, QStringLiteral("Expression")))
        core.expressions.append(currentSpelling(element.text()));
}

SxCore* readCore(QDomElement const& element)
{
    SxCore* core = new SxCore(0);
    readAttributes(element, *core);
    int const captureSource = number(element, QStringLiteral("capture_from_trigger"));
    if (captureSource == CaptureListed)
        core->allSignalList = readSignalList(
            element.firstChildElement(QStringLiteral("SignalList")), ListForm::Standard);
    core->dataSignalList = capturedItems(core->allSignalList);
    readTriggers(element.firstChildElement(QStringLiteral("Triggers")), captureSource, *core);
    readMatchUnits(element.firstChildElement(QStringLiteral("MatchUnits")), *core);
    readExpressions(element.firstChildElement(QStringLiteral("Expressions")), *core);
    return core;
}

} // namespace

QString writeVekConfigToString(QList<SxCore*> const& cores)
{
    QString text;
    QXmlStreamWriter writer(&text);
    startVekDocument(writer, QStringLiteral("Standard"));
    for (SxCore const* core : cores)
        writeCore(writer, *core);
    writer.writeEndDocument();
    return text;
}

bool writeVEKConfigToXml(QList<SxCore*> const& cores, QString const& path)
{
    QFile file(path);
    if (!openVekFile(file, QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    file.write(writeVekConfigToString(cores).toLatin1().constData());
    return true;
}

QList<SxCore*> readVEKConfigFromString(QString const& text, QString& id, bool* ok, QString* error)
{
    ParsedDocument const parsed = parseVekDocument(text);
    if (!acceptDocument(parsed, {LowestVersion, LATEST_VERSION},
                        QStringLiteral("Unknown Vek Version."), ok, error))
        return {};
    return read_VER_2000(parsed.document, id);
}

QList<SxCore*> readVEKConfigFromXml(QString const& path, QString& id, bool* ok, QString* error)
{
    QFile file(path);
    if (!openVekFile(file, QIODevice::ReadOnly)) {
        reportFailure(QStringLiteral("Open file failed."), ok, error);
        return {};
    }
    QByteArray const bytes = file.readAll();
    if (bytes.isEmpty()) {
        if (ok)
            *ok = true;
        return {};
    }
    // up to the first NUL, deliberately
    return readVEKConfigFromString(QString::fromLatin1(bytes.constData()), id, ok, error);
}

QList<SxCore*> read_VER_2000(QDomDocument const& document, QString& id)
{
    ParsedDocument parsed;
    parsed.document = document;
    QList<SxCore*> cores;
    for (QDomElement const& element : childElements(parsed.config(), QStringLiteral("SxCore")))
        cores.append(readCore(element));
    // the identifier stands beside a wrapped configuration, not in it
    QDomElement const vekId =
        document.documentElement().firstChildElement(QStringLiteral("VEK_ID"));
    if (!vekId.isNull())
        id = vekId.text();
    return cores;
}

} // namespace VEK
