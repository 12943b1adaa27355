#include "triggerui/matchunitform.h"

#include "triggerui/named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace VEK {

namespace {

constexpr int MostCounterWidth = 4096; ///< A register is not wider.

QRadioButton* makeRadix(QWidget* parent, char const* name, QString const& caption)
{
    return named(new QRadioButton(caption, parent), name);
}

QTreeWidget* makeTree(QWidget* parent, char const* name, QStringList const& columns)
{
    auto* const tree = named(new QTreeWidget(parent), name);
    tree->setHeaderLabels(columns);
    tree->setSelectionMode(QAbstractItemView::NoSelection);
    tree->setUniformRowHeights(true);
    return tree;
}

QTreeWidget* makeValueTree(QWidget* parent, char const* name)
{
    return makeTree(parent, name, {QStringLiteral("Signal"), QStringLiteral("Value")});
}

} // namespace

void Ui_MatchUnitDialog::setupUi(QDialog* dialog)
{
    dialog->setWindowTitle(QStringLiteral("Match Unit Config"));
    lbTitle = named(new QLabel(QStringLiteral("Match Unit 0"), dialog), "lbTitle");

    auto* const left = new QVBoxLayout;
    left->addWidget(makeTrigger(dialog), 1);
    left->addWidget(makeGeneral(dialog));
    left->addWidget(makeCounter(dialog));
    auto* const columns = new QHBoxLayout;
    columns->addLayout(left, 1);
    columns->addWidget(makeValues(dialog), 2);

    buttonBox = named(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel,
                                           Qt::Horizontal, dialog),
                      "buttonBox");
    auto* const layout = new QVBoxLayout(dialog);
    layout->addWidget(lbTitle);
    layout->addLayout(columns, 1);
    layout->addWidget(buttonBox);
    dialog->resize(900, 600);
}

QWidget* Ui_MatchUnitDialog::makeTrigger(QDialog* dialog)
{
    groupBoxTrigger =
        named(new QGroupBox(QStringLiteral("On Trigger Port:"), dialog), "groupBoxTrigger");
    comboBoxTrigger = named(new QComboBox(groupBoxTrigger), "comboBoxTrigger");
    treeSignals = makeTree(groupBoxTrigger, "treeSignals", {QStringLiteral("Signal")});
    treeSignals->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto* const layout = new QVBoxLayout(groupBoxTrigger);
    layout->addWidget(comboBoxTrigger);
    layout->addWidget(treeSignals);
    return groupBoxTrigger;
}

QWidget* Ui_MatchUnitDialog::makeGeneral(QDialog* dialog)
{
    groupBoxGeneral = named(new QGroupBox(dialog), "groupBoxGeneral");
    lbType = named(new QLabel(QStringLiteral("Match Type:"), groupBoxGeneral), "lbType");
    comboBoxType = named(new QComboBox(groupBoxGeneral), "comboBoxType");
    lbFunc = named(new QLabel(QStringLiteral("Function:"), groupBoxGeneral), "lbFunc");
    comboBoxFunc = named(new QComboBox(groupBoxGeneral), "comboBoxFunc");
    auto* const form = new QFormLayout(groupBoxGeneral);
    form->addRow(lbType, comboBoxType);
    form->addRow(lbFunc, comboBoxFunc);
    return groupBoxGeneral;
}

QWidget* Ui_MatchUnitDialog::makeValues(QDialog* dialog)
{
    groupBoxValue0 = named(new QGroupBox(QStringLiteral("Value"), dialog), "groupBoxValue0");
    rbtnBin = makeRadix(groupBoxValue0, "rbtnBin", QStringLiteral("BIN"));
    rbtnOct = makeRadix(groupBoxValue0, "rbtnOct", QStringLiteral("OCT"));
    rbtnDec = makeRadix(groupBoxValue0, "rbtnDec", QStringLiteral("DEC"));
    rbtnHex = makeRadix(groupBoxValue0, "rbtnHex", QStringLiteral("HEX"));
    auto* const radices = new QHBoxLayout;
    for (QRadioButton* const radix : {rbtnBin, rbtnOct, rbtnDec, rbtnHex})
        radices->addWidget(radix);
    radices->addStretch();

    lbValue0 = named(new QLabel(QStringLiteral("Minimum:"), groupBoxValue0), "lbValue0");
    treeSignals0 = makeValueTree(groupBoxValue0, "treeSignals0");
    lbValue1 = named(new QLabel(QStringLiteral("Maximum:"), groupBoxValue0), "lbValue1");
    treeSignals1 = makeValueTree(groupBoxValue0, "treeSignals1");

    auto* const layout = new QVBoxLayout(groupBoxValue0);
    layout->addLayout(radices);
    layout->addWidget(lbValue0);
    layout->addWidget(treeSignals0, 1);
    layout->addWidget(lbValue1);
    layout->addWidget(treeSignals1, 1);
    return groupBoxValue0;
}

QWidget* Ui_MatchUnitDialog::makeCounter(QDialog* dialog)
{
    groupBoxCounter = named(new QGroupBox(QStringLiteral("Counter"), dialog), "groupBoxCounter");
    groupBoxCounter->setCheckable(true);
    lbWidth = named(new QLabel(QStringLiteral("Width:"), groupBoxCounter), "lbWidth");
    spinBoxCounterWidth = named(new QSpinBox(groupBoxCounter), "spinBoxCounterWidth");
    spinBoxCounterWidth->setRange(0, MostCounterWidth);
    spinBoxCounterWidth->setValue(2);
    lbCount = named(new QLabel(QStringLiteral("Count:"), groupBoxCounter), "lbCount");
    spinBoxCounter = named(new QSpinBox(groupBoxCounter), "spinBoxCounter");
    spinBoxCounter->setMinimum(1); // the register holds the count less one
    spinBoxCounter->setValue(1);
    checkBoxContinuous =
        named(new QCheckBox(QStringLiteral("Continuous"), groupBoxCounter), "checkBoxContinuous");
    auto* const form = new QFormLayout(groupBoxCounter);
    form->addRow(lbWidth, spinBoxCounterWidth);
    form->addRow(lbCount, spinBoxCounter);
    form->addRow(checkBoxContinuous);
    return groupBoxCounter;
}

} // namespace VEK
