#include "triggerui/dynamicconfigwidget.h"

#include "triggerui/countingmodel.h"
#include "triggerui/evenlistview.h"
#include "triggerui/matchunitdialog.h"
#include "triggerui/matchunitmodel.h"
#include "triggerui/matchunittable.h"
#include "triggerui/muexpressiondialog.h"
#include "widgets/viewkeeper.h"

#include "ui_dynamicconfigwidget.h"

#include <QKeyEvent>
#include <QSignalBlocker>

#include <limits>

namespace VEK {

namespace {

constexpr int MinimumAmount = 4; ///< The least samples that a segment holds.

QString expressionLine(int row, QString const& expression)
{
    return QStringLiteral("exp%1:  %2").arg(QString::number(row), expression);
}

/// Texts of older files name their units match[0], match[1] and so on.
QString shownExpression(QString text)
{
    text.replace(QStringLiteral("match"), QStringLiteral("M"));
    return text.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
}

/// A flag for each expression; those that a core does not have are on.
QList<bool> filledFlags(QList<bool> flags, int count)
{
    while (flags.size() < count)
        flags << true;
    return flags;
}

} // namespace

DynamicConfigWidget::DynamicConfigWidget(QWidget* parent)
    : QWidget(parent), ui(new Ui_DynamicConfigWidget), model(new MatchUnitModel(this))
{
    ui->setupUi(this);
    windows = new CountingModel(ui->comboBoxWindow);
    ui->comboBoxWindow->setView(new EvenListView(ui->comboBoxWindow));
    ui->comboBoxWindow->setModel(windows); // the box has a fixed width, to ask no item for its text
    ui->tableUnit->setModel(model);
    ui->tableUnit->setColumnHidden(MatchUnitModel::EnabledColumn, true);
    resetUI();
    setEnabled(false);

    auto const changed = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(ui->comboBoxWindow, changed, this, &DynamicConfigWidget::onWindowNumChanged);
    connect(ui->comboBoxAmount, changed, this, &DynamicConfigWidget::onCaptureAmountChanged);
    ui->tableUnit->installEventFilter(this);
    ui->listExpressions->installEventFilter(this);
    connect(ui->tableUnit, &QTableView::doubleClicked, this, &DynamicConfigWidget::editMu);
    connect(ui->listExpressions, &QListWidget::itemDoubleClicked, this,
            &DynamicConfigWidget::editExpression);
}

DynamicConfigWidget::~DynamicConfigWidget() = default;

void DynamicConfigWidget::setSxCore(SxCore* core)
{
    resetUI();
    this->core = core;
    if (!core)
        return;
    ui->lineEditStorage->setText(QString::number(core->storageDepth));
    setWindows();
    resetCaptureAmount();
    QSignalBlocker const blocked(ui->comboBoxAmount);
    ui->comboBoxAmount->setCurrentIndex(
        ui->comboBoxAmount->findText(QString::number(core->captureAmount)));
    setPositionLimit(core->captureAmount);
    ui->spinBoxTrPos->setValue(core->triggerPos);
    model->setMatcherList(core->enabledMatchUnits());
    setExpressions();
}

void DynamicConfigWidget::setWindows()
{
    QSignalBlocker const blocked(ui->comboBoxWindow);
    int const last = core->storageDepth / MinimumAmount;
    int const chosen = core->windowNum >= 1 && core->windowNum <= last ? core->windowNum : 0;
    windows->setLast(last);
    ui->comboBoxWindow->setCurrentIndex(chosen - 1);
}

void DynamicConfigWidget::setExpressions()
{
    QList<bool> const flags = filledFlags(core->expressionEnabled, core->expressions.size());
    if (core->expressionEnabled.isEmpty())
        core->expressionEnabled = flags;
    for (int row = 0; row < core->expressions.size(); ++row) {
        auto* const item = new QListWidgetItem(
            expressionLine(row, shownExpression(core->expressions[row])), ui->listExpressions);
        if (core->expressionType == ExpressionDynamic)
            item->setCheckState(flags[row] ? Qt::Checked : Qt::Unchecked);
    }
}

void DynamicConfigWidget::resetCaptureAmount()
{
    QSignalBlocker const blocked(ui->comboBoxAmount);
    ui->comboBoxAmount->clear();
    qint64 const parts = fixedWindowNum(unsigned(windowNum()));
    qint64 const limit = core && parts > 0 ? core->storageDepth / parts : 0;
    for (qint64 amount = MinimumAmount; amount <= limit; amount *= 2)
        ui->comboBoxAmount->addItem(QString::number(amount));
}

void DynamicConfigWidget::setPositionLimit(int amount)
{
    ui->spinBoxTrPos->setMaximum(amount > MinimumAmount ? amount - MinimumAmount : 0);
}

void DynamicConfigWidget::save()
{
    if (!core)
        return;
    if (ui->comboBoxWindow->currentIndex() >= 0)
        core->windowNum = windowNum();
    if (ui->comboBoxAmount->currentIndex() >= 0)
        core->captureAmount = ui->comboBoxAmount->currentText().toInt();
    core->triggerPos = ui->spinBoxTrPos->value();

    int const count = ui->listExpressions->count();
    if (core->expressionType != ExpressionDynamic) {
        core->expressionEnabled = filledFlags(core->expressionEnabled, count);
        return;
    }
    QList<bool> flags;
    for (int row = 0; row < count; ++row)
        flags << (ui->listExpressions->item(row)->checkState() == Qt::Checked);
    core->expressionEnabled = flags;
}

int DynamicConfigWidget::windowNum() const
{
    return ui->comboBoxWindow->currentText().toInt();
}

void DynamicConfigWidget::resetUI()
{
    core = nullptr; // an emptied panel must not be saved into it
    if (unitDialog)
        unitDialog->reject(); // its unit may go with the core
    QSignalBlocker const windowBlocked(ui->comboBoxWindow);
    QSignalBlocker const amountBlocked(ui->comboBoxAmount);
    ui->lineEditStorage->clear();
    windows->setLast(0);
    ui->comboBoxAmount->clear();
    ui->listExpressions->clear();
    model->reset();
    ui->spinBoxTrPos->setMaximum(std::numeric_limits<int>::max());
    ui->spinBoxTrPos->setValue(0);
}

void DynamicConfigWidget::editMu()
{
    QModelIndexList const rows = ui->tableUnit->selectionModel()->selectedRows();
    MatchUnit* const unit = rows.isEmpty() ? nullptr : model->muFromIndex(rows.first());
    if (!unit)
        return;
    int const row = rows.first().row();
    ViewKeeper const keeper(ui->tableUnit);
    QPointer<QDialog> const dialog = new MatchUnitDialog(unit, true, this);
    unitDialog = dialog;
    dialog->exec();
    if (!dialog)
        return; // gone with this panel
    dialog->deleteLater();
    model->updateRow(row);
}

bool DynamicConfigWidget::eventFilter(QObject* view, QEvent* event)
{
    int const key = event->type() == QEvent::KeyPress ? static_cast<QKeyEvent*>(event)->key() : 0;
    if (key != Qt::Key_Return && key != Qt::Key_Enter && key != Qt::Key_F2)
        return QWidget::eventFilter(view, event);
    if (view == ui->listExpressions) {
        editExpression(ui->listExpressions->currentItem());
        return true;
    }
    if (!ui->tableUnit->selectionModel()->hasSelection())
        ui->tableUnit->selectRow(ui->tableUnit->currentIndex().row());
    editMu();
    return true;
}

void DynamicConfigWidget::onWindowNumChanged()
{
    QString const amount = ui->comboBoxAmount->currentText();
    resetCaptureAmount();
    {
        QSignalBlocker const blocked(ui->comboBoxAmount);
        int const same = ui->comboBoxAmount->findText(amount);
        ui->comboBoxAmount->setCurrentIndex(same >= 0 ? same : ui->comboBoxAmount->count() - 1);
    }
    onCaptureAmountChanged();
    Q_EMIT windowNumChanged();
}

void DynamicConfigWidget::onCaptureAmountChanged()
{
    setPositionLimit(ui->comboBoxAmount->currentText().toInt());
}

void DynamicConfigWidget::editExpression(QListWidgetItem* item)
{
    if (!core || core->expressionType == ExpressionStatic || !item)
        return;
    QList<bool> enabled;
    for (int unit = 0; unit < CoreUnitCount; ++unit) {
        MatchUnit const* const matchUnit = core->matchUnit(unit);
        enabled << (matchUnit && matchUnit->enabled);
    }
    SxCore* const shown = core;
    int const row = ui->listExpressions->row(item);
    ViewKeeper const keeper(ui->listExpressions);
    QPointer<DynamicConfigWidget> const self(this);
    QString const expression = MuExpressionDialog::getExpression(enabled, this);
    if (!self)
        return;
    // the host may have put another core here while the dialog was open
    QListWidgetItem* const edited = core == shown ? ui->listExpressions->item(row) : nullptr;
    if (expression.isEmpty() || !edited)
        return;
    core->setExpression(expression, row);
    edited->setText(expressionLine(row, expression));
}

} // namespace VEK
