#include "check/elementcheck.h"

#include "model/signallist.h"

#include <QSet>

#include <algorithm>

namespace VEK {
namespace {

QString quoted(QString const& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString rangeText(NumberRange const& range)
{
    if (range.highest == std::numeric_limits<int>::max())
        return QStringLiteral("below %1").arg(range.lowest);
    return QStringLiteral("not %1 to %2").arg(range.lowest).arg(range.highest);
}

} // namespace

void FindingList::add(Severity severity, QDomElement const& element, QString const& attribute,
                      QString const& message)
{
    m_findings.append(
        {severity, std::max(element.lineNumber(), 0), element.tagName(), attribute, message});
}

void FindingList::error(QDomElement const& element, QString const& attribute,
                        QString const& message)
{
    add(Severity::Error, element, attribute, message);
}

void FindingList::warn(QDomElement const& element, QString const& attribute, QString const& message)
{
    add(Severity::Warning, element, attribute, message);
}

QList<Finding> FindingList::findings() const
{
    QList<Finding> sorted = m_findings;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](Finding const& a, Finding const& b) { return a.line < b.line; });
    return sorted;
}

void checkForm(QDomElement const& element, ElementForm const& form, FindingList& list)
{
    QDomNamedNodeMap const attributes = element.attributes();
    QStringList names;
    for (int i = 0; i < attributes.count(); ++i)
        names << attributes.item(i).nodeName();
    names.sort(); // the map's own order changes from run to run
    for (QString const& name : qAsConst(names))
        if (!form.attributes.contains(name) && !form.optional.contains(name))
            list.warn(element, name, QStringLiteral("no reader knows this attribute"));
    for (QString const& name : form.attributes)
        if (!element.hasAttribute(name))
            list.warn(element, name, QStringLiteral("this attribute is missing"));
    QSet<QString> seen;
    for (QDomElement const& child : childElements(element)) {
        QString const tag = child.tagName();
        if (!form.children.contains(tag) && !form.single.contains(tag))
            list.error(child, QString(),
                       QStringLiteral("nothing in %1 is called that: it is passed over")
                           .arg(element.tagName()));
        else if (form.single.contains(tag) && seen.contains(tag))
            list.error(child, QString(),
                       QStringLiteral("only the first one in %1 counts").arg(element.tagName()));
        seen << tag;
    }
}

std::optional<int> numberOf(QDomElement const& element, QString const& attribute,
                            NumberRange const& range, FindingList& list)
{
    bool const isThere = element.hasAttribute(attribute);
    QString const text = element.attribute(attribute);
    bool isNumber = true;
    int const number = isThere ? text.toInt(&isNumber) : 0;
    QString const asZero =
        range.lowest > 0 ? QStringLiteral(", and reads as 0, which is %1").arg(rangeText(range))
                         : QStringLiteral(", and reads as 0");
    if (!isThere && range.lowest > 0)
        list.error(element, attribute, QStringLiteral("this attribute is missing") + asZero);
    else if (!isThere)
        list.warn(element, attribute, QStringLiteral("this attribute is missing") + asZero);
    else if (!isNumber)
        list.error(element, attribute, quoted(text) + QStringLiteral(" is no number") + asZero);
    else if (number < range.lowest || number > range.highest)
        list.error(element, attribute,
                   QStringLiteral("%1 is %2").arg(number).arg(rangeText(range)));
    else
        return number;
    return std::nullopt;
}

void checkTrueOrFalse(QDomElement const& element, QString const& attribute,
                      QString const& otherwise, FindingList& list)
{
    QString const text = element.attribute(attribute);
    if (!text.isEmpty() && text != QLatin1String("true") && text != QLatin1String("false"))
        list.error(element, attribute,
                   QStringLiteral("%1 is neither \"true\" nor \"false\": %2")
                       .arg(quoted(text), otherwise));
}

void checkIndexesDiffer(QList<QDomElement> const& elements, QString const& what, FindingList& list)
{
    QSet<int> seen;
    QString const attribute = QStringLiteral("index");
    for (QDomElement const& element : elements) {
        bool isNumber = false;
        int const index = element.attribute(attribute).toInt(&isNumber);
        if (isNumber && seen.contains(index))
            list.error(element, attribute,
                       QStringLiteral("an earlier %1 has index %2 too").arg(what).arg(index));
        seen << index;
    }
}

} // namespace VEK
