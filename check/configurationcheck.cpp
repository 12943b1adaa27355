#include "check/configurationcheck.h"

#include "check/capturelimits.h"
#include "check/elementcheck.h"
#include "check/signalcheck.h"
#include "check/triggercheck.h"
#include "model/capturecore.h"
#include "model/signallist.h"
#include "model/standardfile.h"
#include "model/vekfile.h"
#include "results/windowdocument.h"

#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>

namespace VEK {
namespace {

QString const Version = QStringLiteral("Version");
QString const Mode = QStringLiteral("Mode");
QString const SignalListTag = QStringLiteral("SignalList");

/// Where the words of a parser's message are known: "message at line:column".
Finding parserFinding(QString const& error)
{
    static QRegularExpression const place(QStringLiteral(" at (\\d+):\\d+\\z"));
    Finding finding;
    finding.line = place.match(error).captured(1).toInt();
    finding.message = error;
    return finding;
}

/// Readers of Standard files take the bytes for Latin-1, whatever an editor made of them.
bool isOtherEncoding(QByteArray const& bytes)
{
    bool const isAscii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > 0; });
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return !isAscii && state.invalidChars == 0 && state.remainingChars == 0;
}

void checkVersion(ParsedDocument const& parsed, FindingList& list)
{
    bool ok = false;
    QString error;
    acceptDocument(parsed, {LATEST_VERSION}, QStringLiteral("Unknown Vek Version."), &ok, &error);
    QDomElement const version = parsed.config().firstChildElement(Version);
    if (!ok)
        list.error(version.isNull() ? parsed.config() : version, QString(), error);
}

/// Sizes of a core. Where one of them is none at all, nothing follows from it.
void checkSizes(QDomElement const& element, SxCore const& core, FindingList& list)
{
    QString const index = QStringLiteral("index");
    numberOf(element, index, {0, CoreSelects - 1}, list);
    bool isSized = true;
    for (char const* const name : {"storage_depth", "window_num", "capture_amount"})
        isSized &= bool(numberOf(element, QString::fromLatin1(name), {1}, list));
    bool const hasPosition = bool(numberOf(element, QStringLiteral("trigger_pos"), {}, list));
    if (!isSized)
        return;
    for (LimitProblem const& problem : limitProblems(core)) {
        if (problem.attribute == index || // told above
            (problem.attribute == QLatin1String("trigger_pos") && !hasPosition))
            continue;
        if (problem.isError)
            list.error(element, problem.attribute, problem.message);
        else
            list.warn(element, problem.attribute, problem.message);
    }
}

/// Where the captured signals come from: older files may take those of the ports.
void checkSignals(QDomElement const& element, SxCore const& core, FindingList& list)
{
    QString const source = QStringLiteral("capture_from_trigger");
    QDomElement const listed = element.firstChildElement(SignalListTag);
    if (!listed.isNull())
        checkSignalList(listed, ListForm::Standard, list);
    if (element.hasAttribute(source) && !numberOf(element, source, {0, 1}, list))
        return;
    if (!flatSignals(core.dataSignalList).isEmpty())
        return;
    // a signal that was dropped was told above
    if (listed.isNull() || childElements(listed).isEmpty() || !core.allSignalList.isEmpty())
        list.error(element, QString(), QStringLiteral("the core captures no signals"));
}

void checkClock(QDomElement const& element, FindingList& list)
{
    QString const clock = QStringLiteral("sample_clock");
    if (element.hasAttribute(clock) && element.attribute(clock).isEmpty())
        list.warn(element, clock, QStringLiteral("the core has no sample clock"));
}

void checkStandardCore(QDomElement const& element, SxCore const& core, FindingList& list)
{
    QString const init = QStringLiteral("capture_init_data_enabled");
    checkForm(
        element,
        {{QStringLiteral("sample_clock"), init},
         {QStringLiteral("index"), QStringLiteral("trig_type"), QStringLiteral("storage_depth"),
          QStringLiteral("window_num"), QStringLiteral("capture_amount"),
          QStringLiteral("trigger_pos"), QStringLiteral("implementation"),
          QStringLiteral("module_name"), QStringLiteral("capture_from_trigger")},
         {},
         {SignalListTag, QStringLiteral("Triggers"), QStringLiteral("MatchUnits"),
          QStringLiteral("Expressions")}},
        list);
    checkClock(element, list);
    numberOf(element, QStringLiteral("trig_type"), {}, list);
    numberOf(element, QStringLiteral("implementation"), {}, list);
    checkTrueOrFalse(element, init, QStringLiteral("it counts as \"false\""), list);
    checkSizes(element, core, list);
    checkSignals(element, core, list);
    checkTrigger(element, core, list);
}

void checkStandard(ParsedDocument const& parsed, FindingList& list)
{
    QList<QDomElement> const elements = childElements(parsed.config(), QStringLiteral("SxCore"));
    QString id;
    QList<SxCore*> const cores = read_VER_2000(parsed.document, id);
    for (int i = 0; i < elements.size() && i < cores.size(); ++i)
        checkStandardCore(elements.at(i), *cores.at(i), list);
    qDeleteAll(cores);
    checkIndexesDiffer(elements, QStringLiteral("core"), list);
}

void checkLiteCore(QDomElement const& element, FindingList& list)
{
    checkForm(
        element,
        {{QStringLiteral("sample_clock")},
         {QStringLiteral("index"), QStringLiteral("trig_type"), QStringLiteral("capture_amount"),
          QStringLiteral("implemention"), QStringLiteral("input_register_enabled"),
          QStringLiteral("capture_init_data_enabled"), QStringLiteral("module_name")},
         {},
         {SignalListTag}},
        list);
    checkClock(element, list);
    for (char const* const name : {"index", "trig_type", "implemention"})
        numberOf(element, QString::fromLatin1(name), {}, list);
    numberOf(element, QStringLiteral("capture_amount"), {1}, list);
    flagOf(element, QStringLiteral("input_register_enabled"), list);
    flagOf(element, QStringLiteral("capture_init_data_enabled"), list);
    QDomElement const listed = element.firstChildElement(SignalListTag);
    if (!listed.isNull())
        checkSignalList(listed, ListForm::Lite, list);
    if (capturedItems(readSignalList(listed, ListForm::Lite)).isEmpty())
        list.error(element, QString(), QStringLiteral("the core captures no signals"));
}

void checkLite(QDomElement const& config, FindingList& list)
{
    QList<QDomElement> const elements = childElements(config, QStringLiteral("SxCore_Lite"));
    for (QDomElement const& element : elements)
        checkLiteCore(element, list);
    if (elements.size() > 1)
        list.error(elements.at(1), QString(),
                   QStringLiteral("a Lite file with several cores can't be run"));
}

/// Whether the document is of the Lite form; nothing when it is of none.
std::optional<bool> isLite(QDomElement const& config, FindingList& list)
{
    QDomElement const mode = config.firstChildElement(Mode);
    if (mode.isNull() || mode.text() == QLatin1String("Standard"))
        return false;
    if (mode.text() == QLatin1String("Lite"))
        return true;
    list.error(mode, QString(), QStringLiteral("unknown mode \"%1\"").arg(mode.text()));
    return std::nullopt;
}

void checkDocument(ParsedDocument const& parsed, FindingList& list)
{
    QDomElement const root = parsed.document.documentElement();
    QDomElement const config = parsed.config();
    if (config.isNull() || config.tagName() != QLatin1String("VEK_CONFIG")) {
        list.error(root, QString(), QStringLiteral("no VEK_CONFIG: this is no configuration"));
        return;
    }
    std::optional<bool> const lite = isLite(config, list);
    QString const coreTag =
        lite.value_or(false) ? QStringLiteral("SxCore_Lite") : QStringLiteral("SxCore");
    if (lite)
        checkForm(config,
                  {{}, {}, {coreTag, DOM_TAG_WINDOW}, {Version, Mode, QStringLiteral("VEK_ID")}},
                  list);
    checkVersion(parsed, list);
    if (!lite)
        return;
    if (childElements(config, coreTag).isEmpty())
        list.error(config, QString(), QStringLiteral("there is no core in it"));
    else if (*lite)
        checkLite(config, list);
    else
        checkStandard(parsed, list);
}

} // namespace

QList<Finding> checkConfiguration(QByteArray const& bytes)
{
    FindingList list;
    if (bytes.isEmpty()) {
        list.error(QDomElement(), QString(), QStringLiteral("the file is empty: there is no core"));
        return list.findings();
    }
    ParsedDocument parsed = parseVekDocument(bytes);
    if (!parsed.isOk())
        return {parserFinding(parsed.error)};
    bool const isLiteForm = parsed.config().firstChildElement(Mode).text() == QLatin1String("Lite");
    if (!isLiteForm) {
        // as its reader takes it: Latin-1, up to a NUL
        parsed = parseVekDocument(QString::fromLatin1(bytes.constData()));
        if (!parsed.isOk())
            return {parserFinding(parsed.error)};
        if (isOtherEncoding(bytes))
            list.warn(
                QDomElement(), QString(),
                QStringLiteral("the letters beyond ASCII are UTF-8, and are read as Latin-1"));
    }
    checkDocument(parsed, list);
    return list.findings();
}

} // namespace VEK
