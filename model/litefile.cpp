#include "model/litefile.h"

#include "model/signallist.h"
#include "model/vekfile.h"

#include <QFile>
#include <QXmlStreamWriter>

namespace VEK {
namespace {

void writeCore(QXmlStreamWriter& writer, SXCore_Lite const& core)
{
    writer.writeStartElement(QStringLiteral("SxCore_Lite"));
    writeNumber(writer, QStringLiteral("index"), core.index);
    writer.writeAttribute(QStringLiteral("sample_clock"), core.sampleClock);
    writeNumber(writer, QStringLiteral("trig_type"), core.trigType);
    writeNumber(writer, QStringLiteral("capture_amount"), core.captureAmount);
    // the misspelling is this form's own; the standard form has "implementation"
    writeNumber(writer, QStringLiteral("implemention"), core.implemention);
    writeNumber(writer, QStringLiteral("input_register_enabled"), core.inputRegisterEnabled);
    writeNumber(writer, QStringLiteral("capture_init_data_enabled"), core.captureInitDataEnabled);
    writer.writeAttribute(QStringLiteral("module_name"), core.moduleName);
    writeSignalList(writer, core.allSignalList, CaptureFlag::Written);
    writer.writeEndElement();
}

void writeDocument(QXmlStreamWriter& writer, QList<SXCore_Lite*> const& cores)
{
    startVekDocument(writer, QStringLiteral("Lite"));
    for (SXCore_Lite const* core : cores)
        writeCore(writer, *core);
    writer.writeEndDocument();
}

/// All child nodes, whatever they are: deliberately unlike the standard form.
QList<QDomElement> memberNodes(QDomElement const& bus)
{
    QList<QDomElement> nodes;
    for (QDomNode node = bus.firstChild(); !node.isNull(); node = node.nextSibling())
        nodes.append(node.toElement());
    return nodes;
}

void readSignals(QDomElement const& list, SXCore_Lite& core)
{
    for (QDomElement const& element : childElements(list)) {
        SignalItem item;
        if (element.tagName() == QLatin1String("Signal"))
            item = readSignal(element, isCaptured(element));
        else if (element.tagName() == QLatin1String("Bus"))
            item = readBus(element, memberNodes(element), isCaptured(element));
        else
            continue;
        core.allSignalList.append(item);
        if (item.captureEnable)
            core.dataSignalList.append(item);
    }
}

SXCore_Lite* readCore(QDomElement const& element)
{
    SXCore_Lite* core = new SXCore_Lite;
    core->index = number(element, QStringLiteral("index"));
    core->sampleClock = element.attribute(QStringLiteral("sample_clock"));
    core->trigType = number(element, QStringLiteral("trig_type"));
    core->captureAmount = number(element, QStringLiteral("capture_amount"));
    core->implemention = number(element, QStringLiteral("implemention"));
    core->inputRegisterEnabled = number(element, QStringLiteral("input_register_enabled")) != 0;
    core->captureInitDataEnabled =
        number(element, QStringLiteral("capture_init_data_enabled")) != 0;
    if (element.hasAttribute(QStringLiteral("module_name")))
        core->moduleName = element.attribute(QStringLiteral("module_name"));
    readSignals(element.firstChildElement(QStringLiteral("SignalList")), *core);
    return core;
}

/// An empty text when the version can be read, else the error.
QString versionError(QDomElement const& version)
{
    if (version.isNull())
        return QStringLiteral("Unknown Vek version.");
    try {
        if (compareVersion(version.text(), LATEST_VERSION) == VersionHigher)
            return VersionTooHigh;
    } catch (CompareException const& exception) {
        return exception.message;
    }
    return QString();
}

} // namespace

QString writeVekConfigToString_Lite(QList<SXCore_Lite*> const& cores)
{
    QByteArray text; // and not a QString, to which the writer would tell no encoding
    QXmlStreamWriter writer(&text);
    writeDocument(writer, cores);
    return QString::fromUtf8(text);
}

bool writeVEKConfigToXml_Lite(QList<SXCore_Lite*> const& cores, QString const& path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return false;
    QXmlStreamWriter writer(&file);
    writeDocument(writer, cores);
    return true;
}

QList<SXCore_Lite*> readVEKConfigFromXml_Lite(QString const& path, QString& id, bool* ok,
                                              QString* error)
{
    QList<SXCore_Lite*> cores;
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        reportFailure(QStringLiteral("Open file failed"), ok, error);
        return cores;
    }
    QByteArray const bytes = file.readAll();
    if (!bytes.isEmpty()) {
        ParsedDocument const parsed = parseVekDocument(bytes);
        QDomElement const config = parsed.config();
        QString const message =
            parsed.isOk() ? versionError(config.firstChildElement(QStringLiteral("Version")))
                          : parsed.error;
        if (!message.isEmpty()) {
            reportFailure(message, ok, error);
            return cores;
        }
        for (QDomElement const& element : childElements(config, QStringLiteral("SxCore_Lite")))
            cores.append(readCore(element));
        // here the identifier belongs to the configuration, wrapped or not
        QDomElement const vekId = config.firstChildElement(QStringLiteral("VEK_ID"));
        if (!vekId.isNull())
            id = vekId.text();
    }
    if (ok)
        *ok = true;
    return cores;
}

} // namespace VEK
