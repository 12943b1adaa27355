#include "widgets/realdialog.h"

#include "ui_realdialog.h"

#include <QPushButton>

namespace VEK {

namespace {

/// The items of the combo box, and the kinds of number.
enum Kind : int { Fixed = 0, Floating = 1 };

} // namespace

RealDialog::RealDialog(RealType type, QWidget* parent)
    : QDialog(parent), realType(type), ui(new Ui_RealDialog)
{
    ui->setupUi(this);
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
