#include "triggerui/matchunitdialog.h"

#include "triggerui/matchvalueeditor.h"
#include "widgets/messagebox.h"

#include "ui_matchunitdialog.h"

#include <QSignalBlocker>

namespace VEK {

MatchUnitDialog::MatchUnitDialog(MatchUnit* unit, bool fixedStructure, QWidget* parent)
    : QDialog(parent), ui(new Ui_MatchUnitDialog), fixedStructure(fixedStructure), unit(unit),
      core(unit->core), matchType(unit->matchType), func(unit->func)
{
    ui->setupUi(this);
    values = std::make_unique<MatchValueEditor>(ui->treeSignals0, ui->treeSignals1, this);
    initialize();
    if (!fixedStructure)
        return;
    ui->comboBoxTrigger->setEnabled(false);
    ui->comboBoxType->setEnabled(false);
    ui->spinBoxCounterWidth->setEnabled(false);
}

MatchUnitDialog::~MatchUnitDialog() = default;

void MatchUnitDialog::initialize()
{
    ui->lbTitle->setText(QStringLiteral("Match Unit %1").arg(unit->index));
    for (int type = MatchBasic; type <= MatchRangeEdges; ++type)
        ui->comboBoxType->addItem(type2string(MatchType(type)), type);
    ui->comboBoxType->setCurrentIndex(ui->comboBoxType->findData(matchType));
    fillFunctions();

    QList<TriggerPort*> const available = core ? core->availableTriggers() : QList<TriggerPort*>();
    for (TriggerPort const* trigger : available)
        ui->comboBoxTrigger->addItem(QStringLiteral("Trigger Port %1").arg(trigger->index),
                                     trigger->index);
    port = available.contains(unit->trigger) ? unit->trigger : nullptr;
    ui->comboBoxTrigger->setCurrentIndex(port ? ui->comboBoxTrigger->findData(port->index) : -1);

    ui->rbtnBin->setChecked(true);
    showRangeRows();
    values->setKind(func, matchType);
    fillTrees();
    values->loadValues({unit->value0, unit->value1});
    initializeCounter();
    connectForm();
}

void MatchUnitDialog::initializeCounter()
{
    if (fixedStructure) {
        ui->groupBoxCounter->setCheckable(false);
        ui->groupBoxCounter->setEnabled(unit->counterEnable);
    } else {
        ui->groupBoxCounter->setChecked(unit->counterEnable);
    }
    ui->spinBoxCounterWidth->setValue(unit->counterWidth);
    onCounterWidthChanged();
    ui->spinBoxCounter->setValue(unit->counter);
    ui->checkBoxContinuous->setChecked(unit->continuous);
}

void MatchUnitDialog::connectForm()
{
    auto const chosen = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(ui->comboBoxTrigger, chosen, this, &MatchUnitDialog::onTriggerChanged);
    connect(ui->comboBoxType, chosen, this, &MatchUnitDialog::onTypeChanged);
    connect(ui->comboBoxFunc, chosen, this, &MatchUnitDialog::onFuncChanged);
    for (QRadioButton* const button : {ui->rbtnBin, ui->rbtnOct, ui->rbtnDec, ui->rbtnHex})
        connect(button, &QRadioButton::toggled, this, &MatchUnitDialog::onBaseChanged);
    connect(ui->spinBoxCounterWidth, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &MatchUnitDialog::onCounterWidthChanged);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &MatchUnitDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &MatchUnitDialog::reject);
}

bool MatchUnitDialog::isRange() const
{
    return func == FuncInRange || func == FuncNotInRange;
}

/// A function that the type does not have stays as it is, with none chosen in the box.
void MatchUnitDialog::fillFunctions()
{
    QSignalBlocker const blocked(ui->comboBoxFunc);
    ui->comboBoxFunc->clear();
    for (MatchFunc const allowed : optionalFunctions(MatchType(matchType)))
        ui->comboBoxFunc->addItem(func2string(allowed), int(allowed));
    ui->comboBoxFunc->setCurrentIndex(ui->comboBoxFunc->findData(func));
}

void MatchUnitDialog::showRangeRows()
{
    ui->lbValue0->setVisible(isRange());
    ui->lbValue1->setVisible(isRange());
    ui->treeSignals1->setVisible(isRange());
}

/// The rows of the port chosen; without one there is nothing to edit.
void MatchUnitDialog::fillTrees()
{
    ui->treeSignals->clear();
    values->clear();
    ui->groupBoxValue0->setEnabled(port);
    if (!port)
        return;
    for (SignalItem const& item : qAsConst(port->signalList))
        Signal2treeItem(ui->treeSignals, item);
    values->fill(port->signalList);
}

void MatchUnitDialog::onTriggerChanged()
{
    MatchValueEditor::Values const old = values->readValues(false);
    bool const chosen = ui->comboBoxTrigger->currentIndex() >= 0;
    port = chosen ? core->getTrigger(ui->comboBoxTrigger->currentData().toInt()) : nullptr;
    fillTrees();
    if (!port)
        return;
    int const width = port->singleSignals().size();
    values->applyValues({BitWidthAdjust(old.first, width), BitWidthAdjust(old.second, width)});
}

void MatchUnitDialog::onTypeChanged()
{
    if (ui->comboBoxType->currentIndex() < 0)
        return;
    MatchValueEditor::Values const old = values->readValues(false);
    matchType = ui->comboBoxType->currentData().toInt();
    QList<MatchFunc> const allowed = optionalFunctions(MatchType(matchType));
    if (!allowed.contains(MatchFunc(func)))
        func = allowed.first();
    fillFunctions();
    showRangeRows();
    values->setKind(func, matchType);
    values->applyValues(old);
}

void MatchUnitDialog::onFuncChanged()
{
    if (ui->comboBoxFunc->currentIndex() < 0)
        return;
    int const chosen = ui->comboBoxFunc->currentData().toInt();
    MatchValueEditor::Values const old = values->readValues(chosen > FuncNotEqual);
    func = chosen;
    showRangeRows();
    values->setKind(func, matchType);
    values->applyValues(old);
}

void MatchUnitDialog::onBaseChanged()
{
    int const chosen = ui->rbtnHex->isChecked()   ? 16
                       : ui->rbtnDec->isChecked() ? 10
                       : ui->rbtnOct->isChecked() ? 8
                                                  : 2;
    if (chosen == values->radix())
        return;
    MatchValueEditor::Values const old = values->readValues(true);
    values->setRadix(chosen);
    values->applyValues(old);
}

void MatchUnitDialog::onCounterWidthChanged()
{
    ui->spinBoxCounter->setMaximum(counterLimit(ui->spinBoxCounterWidth->value()));
}

void MatchUnitDialog::accept()
{
    if (!port) {
        QDialog::accept();
        return;
    }
    auto const [value0, value1] = values->readValues(false);
    if (isRange() && QString::compare(value0, value1) > 0) {
        warn(QStringLiteral("Maximum value is less than minimum value."));
        return;
    }
    // Deliberate: the masks alone keep the width. Against an empty text this never fails.
    if (!checkExcessBitWidth(QString(), value0.size()) ||
        !checkExcessBitWidth(QString(), value1.size())) {
        warn(QStringLiteral("value is more than effective width."));
        return;
    }
    writeUnit(value0, value1);
    QDialog::accept();
}

void MatchUnitDialog::warn(QString const& text)
{
    showMessage(QMessageBox::Warning, QStringLiteral("Value Invalid"), text, this);
}

void MatchUnitDialog::writeUnit(QString const& value0, QString const& value1)
{
    if (!fixedStructure) {
        unit->trigger = port;
        unit->matchType = MatchType(matchType);
        unit->counterEnable = ui->groupBoxCounter->isChecked();
        unit->counterWidth = ui->spinBoxCounterWidth->value();
    }
    unit->func = MatchFunc(func);
    unit->counter = ui->spinBoxCounter->value();
    unit->continuous = ui->checkBoxContinuous->isChecked();
    unit->value0 = value0;
    unit->value1 = value1;
}

int MatchUnitDialog::calculatedBitwidth(int width)
{
    return values->calculatedBitwidth(width);
}

void MatchUnitDialog::toolTipValueChanged(QTreeWidget* tree)
{
    values->toolTipValueChanged(tree);
}

void MatchUnitDialog::onEditMenu(QPoint position)
{
    values->openMenu(qobject_cast<TreeLineEdit*>(sender()), position);
}

void MatchUnitDialog::onBusEditChange()
{
    values->spread(qobject_cast<TreeLineEdit*>(sender()));
}

void MatchUnitDialog::onSubEditChange()
{
    values->spread(qobject_cast<TreeLineEdit*>(sender()));
}

void MatchUnitDialog::onChangeX()
{
    values->changeAll(QLatin1Char('X'));
}

void MatchUnitDialog::onChange0()
{
    values->changeAll(QLatin1Char('0'));
}

void MatchUnitDialog::onChange1()
{
    values->changeAll(QLatin1Char('1'));
}

void MatchUnitDialog::onChangeR()
{
    values->changeAll(QLatin1Char('R'));
}

void MatchUnitDialog::onChangeF()
{
    values->changeAll(QLatin1Char('F'));
}

void MatchUnitDialog::onChangeB()
{
    values->changeAll(QLatin1Char('B'));
}

void MatchUnitDialog::onChangeN()
{
    values->changeAll(QLatin1Char('N'));
}

} // namespace VEK
