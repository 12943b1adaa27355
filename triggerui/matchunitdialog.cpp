#include "triggerui/matchunitdialog.h"

#include "widgets/messagebox.h"

#include "ui_matchunitdialog.h"

#include <QRegExpValidator>
#include <QSignalBlocker>

namespace VEK {

namespace {

/// A value of a file in the width of a port, as the chip gets it: a short one is preceded by zeros,
/// a long one keeps its head. Characters that the editors would refuse are zeros.
QString fittedValue(QString const& value, int width, QString const& letters)
{
    QString fitted = value.rightJustified(width, QLatin1Char('0'), true);
    for (QChar& bit : fitted) {
        if (bit != QLatin1Char('1') && !letters.contains(bit))
            bit = QLatin1Char('0');
    }
    return fitted;
}

} // namespace

MatchUnitDialog::MatchUnitDialog(MatchUnit* unit, bool fixedStructure, QWidget* parent)
    : QDialog(parent), ui(new Ui_MatchUnitDialog), fixedStructure(fixedStructure),
      validator(new QRegExpValidator(this)), unit(unit), core(unit->core),
      matchType(unit->matchType), func(unit->func)
{
    ui->setupUi(this);
    initialize();
    if (!fixedStructure)
        return;
    ui->comboBoxTrigger->setEnabled(false);
    ui->comboBoxType->setEnabled(false);
    ui->spinBoxCounterWidth->setEnabled(false);
}

MatchUnitDialog::~MatchUnitDialog()
{
    clearTrees();
}

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
    ui->groupBoxValue0->setEnabled(port);
    fillTrees();
    if (port) {
        int const width = port->singleSignals().size();
        QString const letters = lettersAllowed(radix, func, matchType);
        setEditor(fittedValue(unit->value0, width, letters), ui->treeSignals0);
        setEditor(fittedValue(unit->value1, width, letters), ui->treeSignals1);
    }
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

void MatchUnitDialog::onTriggerChanged()
{
    Values values = readValues(false);
    bool const chosen = ui->comboBoxTrigger->currentIndex() >= 0;
    port = chosen ? core->getTrigger(ui->comboBoxTrigger->currentData().toInt()) : nullptr;
    clearTrees();
    ui->groupBoxValue0->setEnabled(port);
    if (!port)
        return;
    fillTrees();
    int const width = port->singleSignals().size();
    applyValues({BitWidthAdjust(values.first, width), BitWidthAdjust(values.second, width)});
}

void MatchUnitDialog::onTypeChanged()
{
    if (ui->comboBoxType->currentIndex() < 0)
        return;
    Values const values = readValues(false);
    matchType = ui->comboBoxType->currentData().toInt();
    QList<MatchFunc> const allowed = optionalFunctions(MatchType(matchType));
    if (!allowed.contains(MatchFunc(func)))
        func = allowed.first();
    fillFunctions();
    showRangeRows();
    resetTrees();
    applyValues(values);
}

void MatchUnitDialog::onFuncChanged()
{
    if (ui->comboBoxFunc->currentIndex() < 0)
        return;
    int const chosen = ui->comboBoxFunc->currentData().toInt();
    Values const values = readValues(chosen > FuncNotEqual);
    func = chosen;
    showRangeRows();
    resetTrees();
    applyValues(values);
}

void MatchUnitDialog::onBaseChanged()
{
    int const chosen = ui->rbtnHex->isChecked()   ? 16
                       : ui->rbtnDec->isChecked() ? 10
                       : ui->rbtnOct->isChecked() ? 8
                                                  : 2;
    if (chosen == radix)
        return;
    Values const values = readValues(true);
    radix = chosen;
    resetTrees();
    applyValues(values);
    toolTipValueChanged(ui->treeSignals0);
    toolTipValueChanged(ui->treeSignals1);
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
    Values const values = readValues(false);
    if (isRange() && QString::compare(values.first, values.second) > 0) {
        warn(QStringLiteral("Maximum value is less than minimum value."));
        return;
    }
    // Deliberate: the masks alone keep the width. Against an empty text this never fails.
    if (!checkExcessBitWidth(QString(), values.first.size()) ||
        !checkExcessBitWidth(QString(), values.second.size())) {
        warn(QStringLiteral("value is more than effective width."));
        return;
    }
    writeUnit(values);
    QDialog::accept();
}

void MatchUnitDialog::warn(QString const& text)
{
    showMessage(QMessageBox::Warning, QStringLiteral("Value Invalid"), text, this);
}

void MatchUnitDialog::writeUnit(Values const& values)
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
    unit->value0 = values.first;
    unit->value1 = values.second;
}

} // namespace VEK
