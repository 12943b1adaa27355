#include "workbench/cablebox.h"

#include "jtag/protocol.h"

using namespace VEK;

CableBox::CableBox(QWidget* parent) : QComboBox(parent)
{
    setSizeAdjustPolicy(AdjustToContents);
    showFound({});
}

void CableBox::showFound(QList<QStringList> const& cables)
{
    QString const chosen = currentText();
    clear();
    add(Server::Ft2chName, CableFT2CH, QString());
    add(Server::LptName, CableLPT, QString());
    for (QStringList const& row : cables)
        add(QStringLiteral("%1 at %2").arg(row.value(1), row.value(2)), row.value(0).toInt(),
            row.value(2));
    setCurrentIndex(qMax(0, findText(chosen)));
}

void CableBox::add(QString const& text, int number, QString const& location)
{
    addItem(text, number);
    setItemData(count() - 1, location, LocationRole);
}

/// Whatever the cable calls itself: servers are found by these names.
QString CableBox::name() const
{
    return QStringList{Server::Tr7qzName, Server::Ft2chName, Server::WinUsbName, Server::LptName}
        .value(cable());
}
