#include "triggerui/dynamicconfigwidget.h"

#include "triggerui/countingmodel.h"
#include "triggerui/evenlistview.h"
#include "triggerui/matchunitdialog.h"
#include "triggerui/matchunitmodel.h"
#include "triggerui/matchunittable.h"
#include "triggerui/muexpressiondialog.h"
#include "widgets/named.h"
#include "widgets/viewkeeper.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <limits>

namespace VEK {

/// The form.
class Ui_DynamicConfigWidget
{
public:
    void setupUi(QWidget* widget, MatchUnitModel* model);

    QGroupBox* groupBox = nullptr;
    QLineEdit* lineEditStorage = nullptr;
    QComboBox* comboBoxWindow = nullptr;
    CountingModel* windows = nullptr; ///< The items of `comboBoxWindow`.
    QComboBox* comboBoxAmount = nullptr;
    QSpinBox* spinBoxTrPos = nullptr;
    QGroupBox* groupBox_2 = nullptr;
    QListWidget* listExpressions = nullptr;
    QGroupBox* groupBox_3 = nullptr;
    MatchUnitTable* tableUnit = nullptr;

private:
    QGroupBox* makeCapture(QWidget* widget);
    QGroupBox* makeExpressions(QWidget* widget);
    QGroupBox* makeUnits(QWidget* widget, MatchUnitModel* model);
};

namespace {

constexpr int MinimumAmount = 4; ///< The least samples that a segment holds.

QComboBox* makeBox(QWidget* parent, char const* name)
{
    auto* const box = named(new QComboBox(parent), name);
    box->setMaxVisibleItems(15);
    box->setStyleSheet(QStringLiteral("QComboBox{combobox-popup:0;}"));
    // a width by contents would ask every item for its text
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(10);
    return box;
}

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

void Ui_DynamicConfigWidget::setupUi(QWidget* widget, MatchUnitModel* model)
{
    widget->setWindowTitle(QStringLiteral("Configuration"));
    auto* const layout = new QVBoxLayout(widget);
    layout->addWidget(makeCapture(widget));
    layout->addWidget(makeExpressions(widget), 1);
    layout->addWidget(makeUnits(widget, model), 2);
}

QGroupBox* Ui_DynamicConfigWidget::makeCapture(QWidget* widget)
{
    groupBox = named(new QGroupBox(QStringLiteral("Capture"), widget), "groupBox");
    lineEditStorage = named(new QLineEdit(groupBox), "lineEditStorage");
    lineEditStorage->setReadOnly(true);
    lineEditStorage->setFocusPolicy(Qt::ClickFocus); // to copy from; the first to edit comes next
    lineEditStorage->setStyleSheet(QStringLiteral("QLineEdit{background:transparent;border:0;}"));

    comboBoxWindow = makeBox(groupBox, "comboBoxWindow");
    windows = new CountingModel(comboBoxWindow);
    comboBoxWindow->setView(new EvenListView(comboBoxWindow));
    comboBoxWindow->setModel(windows);

    comboBoxAmount = makeBox(groupBox, "comboBoxAmount");
    spinBoxTrPos = named(new QSpinBox(groupBox), "spinBoxTrPos");
    spinBoxTrPos->setMinimum(0);

    auto* const form = new QFormLayout(groupBox);
    form->addRow(QStringLiteral("Storage Size:"), lineEditStorage);
    form->addRow(QStringLiteral("Segments Number:"), comboBoxWindow);
    form->addRow(QStringLiteral("Capture Amount:"), comboBoxAmount);
    form->addRow(QStringLiteral("Trigger Position:"), spinBoxTrPos);
    return groupBox;
}

QGroupBox* Ui_DynamicConfigWidget::makeExpressions(QWidget* widget)
{
    groupBox_2 = named(new QGroupBox(QStringLiteral("Trigger Expressions"), widget), "groupBox_2");
    listExpressions = named(new QListWidget(groupBox_2), "listExpressions");
    auto* const layout = new QVBoxLayout(groupBox_2);
    layout->addWidget(listExpressions);
    return groupBox_2;
}

QGroupBox* Ui_DynamicConfigWidget::makeUnits(QWidget* widget, MatchUnitModel* model)
{
    groupBox_3 = named(new QGroupBox(QStringLiteral("Match Units"), widget), "groupBox_3");
    tableUnit = named(new MatchUnitTable(groupBox_3), "tableUnit");
    tableUnit->setModel(model);
    tableUnit->setColumnHidden(MatchUnitModel::EnabledColumn, true);
    auto* const layout = new QVBoxLayout(groupBox_3);
    layout->addWidget(tableUnit);
    return groupBox_3;
}

DynamicConfigWidget::DynamicConfigWidget(QWidget* parent)
    : QWidget(parent), ui(new Ui_DynamicConfigWidget), model(new MatchUnitModel(this))
{
    ui->setupUi(this, model);
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
    ui->windows->setLast(last);
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
    ui->windows->setLast(0);
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
    ViewKeeper const keeper(ui->tableUnit);
    QPointer<QDialog> const dialog = new MatchUnitDialog(unit, true, this);
    unitDialog = dialog;
    dialog->exec();
    if (!dialog)
        return; // gone with this panel
    dialog->deleteLater();
    ui->tableUnit->viewport()->update();
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
