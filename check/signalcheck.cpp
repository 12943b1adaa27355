#include "check/signalcheck.h"

#include <QSet>

namespace VEK {
namespace {

QString const CaptureEnable = QStringLiteral("capture_enable");
QString const Text = QStringLiteral("text");
QString const Signal = QStringLiteral("Signal");

/// What other texts than "true" and "false" do to a signal or a bus.
QString strangeFlag(ListForm form, bool isBus)
{
    if (form == ListForm::Standard && !isBus)
        return QStringLiteral("the signal is dropped");
    return QStringLiteral("it is not captured");
}

class SignalCheck
{
public:
    SignalCheck(ListForm form, FindingList& list) : m_form(form), m_list(list) {}

    void checkItem(QDomElement const& item)
    {
        bool const isBus = item.tagName() == QLatin1String("Bus");
        if (m_form != ListForm::Port)
            checkTrueOrFalse(item, CaptureEnable, strangeFlag(m_form, isBus), m_list);
        if (isBus)
            checkBus(item);
        else
            checkSignal(item, m_form == ListForm::Port ? QStringList{Text}
                                                       : QStringList{Text, CaptureEnable});
    }

private:
    void checkSignal(QDomElement const& signal, QStringList const& attributes)
    {
        checkForm(signal, {{}, attributes, {}, {}}, m_list);
        QString const name = signal.text();
        if (name.isEmpty())
            m_list.error(signal, QString(), QStringLiteral("a signal without a name"));
        else if (m_names.contains(name))
            m_list.warn(signal, QString(),
                        QStringLiteral("\"%1\" stands twice in this list").arg(name));
        m_names << name;
    }

    void checkBus(QDomElement const& bus)
    {
        QStringList attributes{QStringLiteral("name"), QStringLiteral("restorename")};
        if (m_form != ListForm::Port)
            attributes << CaptureEnable;
        checkForm(bus, {{}, attributes, {Signal}, {}}, m_list);
        QString const name = bus.attribute(QStringLiteral("name"));
        if (name.isEmpty() && bus.attribute(QStringLiteral("restorename")).isEmpty())
            m_list.warn(bus, QString(), QStringLiteral("a bus without a name"));
        QList<QDomElement> const members = childElements(bus, Signal);
        if (members.isEmpty())
            m_list.error(bus, QString(),
                         QStringLiteral("a bus without signals is taken for one signal"));
        for (QDomElement const& member : members)
            checkSignal(member, {Text});
    }

    ListForm m_form;
    FindingList& m_list;
    QSet<QString> m_names;
};

} // namespace

void checkSignalList(QDomElement const& signalList, ListForm form, FindingList& list)
{
    checkForm(signalList, {{}, {}, {Signal, QStringLiteral("Bus")}, {}}, list);
    SignalCheck check(form, list);
    for (QDomElement const& item : childElements(signalList))
        if (item.tagName() == Signal || item.tagName() == QLatin1String("Bus"))
            check.checkItem(item);
}

} // namespace VEK
