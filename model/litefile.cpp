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
    core->allSignalList =
        readSignalList(element.firstChildElement(QStringLiteral("SignalList")), ListForm::Lite);
    core->dataSignalList = capturedItems(core->allSignalList);
    return core;
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
    if (!openVekFile(file, QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    QXmlStreamWriter writer(&file);
    writeDocument(writer, cores);
    return true;
}

QList<SXCore_Lite*> readVEKConfigFromXml_Lite(QString const& path, QString& id, bool* ok,
                                              QString* error)
{
    QFile file(path);
    if (!openVekFile(file, QIODevice::ReadOnly)) {
        reportFailure(QStringLiteral("Open file failed"), ok, error);
        return {};
    }
    QByteArray const bytes = file.readAll();
    if (bytes.isEmpty()) {
        if (ok)
            *ok = true;
        return {};
    }
    ParsedDocument const parsed = parseVekDocument(bytes);
    if (!acceptDocument(parsed, {LATEST_VERSION}, QStringLiteral("Unknown Vek version."), ok,
                        error))
        return {};
    return readLiteCores(parsed.document, id);
}

QList<SXCore_Lite*> readLiteCores(QDomDocument const& document, QString& id)
{
    ParsedDocument parsed;
    parsed.document = document;
    QDomElement const config = parsed.config();
    QList<SXCore_Lite*> cores;
    for (QDomElement const& element : childElements(config, QStringLiteral("SxCore_Lite")))
        cores.append(readCore(element));
    // here the identifier belongs to the configuration, wrapped or not
    QDomElement const vekId = config.firstChildElement(QStringLiteral("VEK_ID"));
    if (!vekId.isNull())
        id = vekId.text();
    return cores;
}

} // namespace VEK
