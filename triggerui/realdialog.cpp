#include "triggerui/realdialog.h"

#include "triggerui/named.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace VEK {

/// The form.
class Ui_RealDialog
{
public:
    void setupUi(QDialog* dialog);

    QComboBox* comboBox = nullptr;
    QGroupBox* FixedPoint = nullptr;
    QRadioButton* Signed = nullptr;
    QRadioButton* Unsigned = nullptr;
    QSpinBox* BinaryPointValue = nullptr;
    QGroupBox* FloatingPoint = nullptr;
    QRadioButton* SinglePrecision = nullptr;
    QRadioButton* DoublePrecision = nullptr;
    QLineEdit* ExponentWidthValue = nullptr;
    QLineEdit* FractionWidthValue = nullptr;
    QDialogButtonBox* buttonBox = nullptr;

private:
    void makeFixedPoint(QDialog* dialog);
    void makeFloatingPoint(QDialog* dialog);
};

namespace {

constexpr int MostBinaryPoint = 80;

/// The items of the combo box, and the kinds of number.
enum Kind : int { Fixed = 0, Floating = 1 };

QLineEdit* makeWidthLine(QWidget* parent, char const* name)
{
    auto* const line = named(new QLineEdit(parent), name);
    line->setReadOnly(true);
    line->setEnabled(false);
    return line;
}

} // namespace

void Ui_RealDialog::setupUi(QDialog* dialog)
{
    dialog->setWindowTitle(QStringLiteral("Real Settings"));
    comboBox = named(new QComboBox(dialog), "comboBox");
    makeFixedPoint(dialog);
    makeFloatingPoint(dialog);
    buttonBox = named(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply |
                                               QDialogButtonBox::Cancel,
                                           Qt::Horizontal, dialog),
                      "buttonBox");

    auto* const typeRow = new QFormLayout;
    typeRow->addRow(QStringLiteral("Type:"), comboBox);
    auto* const layout = new QVBoxLayout(dialog);
    layout->addLayout(typeRow);
    layout->addWidget(FixedPoint);
    layout->addWidget(FloatingPoint);
    layout->addStretch();
    layout->addWidget(buttonBox);
}

void Ui_RealDialog::makeFixedPoint(QDialog* dialog)
{
    FixedPoint = named(new QGroupBox(dialog), "FixedPoint");
    Signed = named(new QRadioButton(QStringLiteral("Signed"), FixedPoint), "Signed");
    Unsigned = named(new QRadioButton(QStringLiteral("Unsigned"), FixedPoint), "Unsigned");
    BinaryPointValue = named(new QSpinBox(FixedPoint), "BinaryPointValue");
    BinaryPointValue->setRange(0, MostBinaryPoint);

    auto* const form = new QFormLayout(FixedPoint);
    form->addRow(Signed);
    form->addRow(Unsigned);
    form->addRow(QStringLiteral("Binary Point:"), BinaryPointValue);
}

void Ui_RealDialog::makeFloatingPoint(QDialog* dialog)
{
    FloatingPoint = named(new QGroupBox(dialog), "FloatingPoint");
    SinglePrecision = named(new QRadioButton(QStringLiteral("Single precision"), FloatingPoint),
                            "SinglePrecision");
    DoublePrecision = named(new QRadioButton(QStringLiteral("Double precision"), FloatingPoint),
                            "DoublePrecision");
    ExponentWidthValue = makeWidthLine(FloatingPoint, "ExponentWidthValue");
    FractionWidthValue = makeWidthLine(FloatingPoint, "FractionWidthValue");

    auto* const form = new QFormLayout(FloatingPoint);
    form->addRow(SinglePrecision);
    form->addRow(DoublePrecision);
    form->addRow(QStringLiteral("Exponent width:"), ExponentWidthValue);
    form->addRow(QStringLiteral("Fraction width:"), FractionWidthValue);
}

RealDialog::RealDialog(RealType type, QWidget* parent)
    : QDialog(parent), realType(type), ui(new Ui_RealDialog)
{
    ui->setupUi(this);
    ui->comboBox->addItem(QStringLiteral("Fixed point"));
    ui->comboBox->addItem(QStringLiteral("Floating point"));
    ui->Signed->setChecked(true);
    ui->SinglePrecision->setChecked(true);
    updateDialog();

    connect(ui->comboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &RealDialog::updateRealType);
    connect(ui->SinglePrecision, &QRadioButton::clicked, this, &RealDialog::onSingle);
    connect(ui->DoublePrecision, &QRadioButton::clicked, this, &RealDialog::onDouble);
    connect(ui->buttonBox, &QDialogButtonBox::clicked, this, &RealDialog::buttonClicked);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &RealDialog::reject);
}

RealDialog::~RealDialog() = default;

void RealDialog::updateDialog()
{
    bool const floating = realType.type == FloatingSingle || realType.type == FloatingDouble;
    ui->comboBox->setCurrentIndex(floating ? Floating : Fixed);
    ui->Unsigned->setChecked(realType.type == FixedUnsigned);
    ui->DoublePrecision->setChecked(realType.type == FloatingDouble);
    ui->BinaryPointValue->setValue(realType.binaryPoint);
    onSingle(); // the widths are never empty, also while they are hidden
    updateRealType();
}

void RealDialog::updateRealType()
{
    bool const floating = ui->comboBox->currentIndex() == Floating;
    ui->FixedPoint->setVisible(!floating);
    ui->FloatingPoint->setVisible(floating);
    if (!floating)
        return;
    if (ui->SinglePrecision->isChecked())
        onSingle();
    else
        onDouble();
}

void RealDialog::onSingle()
{
    showWidths(8, 24);
}

void RealDialog::onDouble()
{
    showWidths(11, 53);
}

void RealDialog::showWidths(int exponent, int fraction)
{
    ui->ExponentWidthValue->setText(QString::number(exponent));
    ui->FractionWidthValue->setText(QString::number(fraction));
}

void RealDialog::buttonClicked(QAbstractButton* button)
{
    bool const ok = button == ui->buttonBox->button(QDialogButtonBox::Ok);
    bool const apply = button == ui->buttonBox->button(QDialogButtonBox::Apply);
    if (!ok && !apply)
        return;
    takeForm();
    if (ok)
        accept();
    else
        Q_EMIT clickApply();
}

void RealDialog::takeForm()
{
    confirmed = true;
    realType.kind = ui->comboBox->currentIndex();
    if (realType.kind == Fixed)
        realType.type = ui->Signed->isChecked() ? FixedSigned : FixedUnsigned;
    else
        realType.type = ui->SinglePrecision->isChecked() ? FloatingSingle : FloatingDouble;
    realType.binaryPoint = ui->BinaryPointValue->value();
    realType.exponentWidth = ui->ExponentWidthValue->text().toInt();
    realType.fractionWidth = ui->FractionWidthValue->text().toInt();
}

} // namespace VEK
