#include "triggerui/muexpressiondialog.h"

#include "image/expression.h"
#include "widgets/messagebox.h"

#include "ui_muexpressiondialog.h"

#include <QPointer>
#include <QSignalMapper>

namespace VEK {

namespace {

/// A form cannot say what stands in for a missing Courier.
QFont padFont()
{
    QFont font(QStringLiteral("Courier"), 16, QFont::Bold);
    font.setStyleHint(QFont::Monospace);
    return font;
}

} // namespace

MuExpressionDialog::MuExpressionDialog(QWidget* parent)
    : QDialog(parent), ui(new Ui_MuExpressionDialog), mapper(new QSignalMapper(this))
{
    ui->setupUi(this);
    ui->lineEdit->setFont(padFont());
    for (QPushButton* const button : // the box's own are no direct children
         findChildren<QPushButton*>(QString(), Qt::FindDirectChildrenOnly)) {
        button->setFont(padFont());
        // Return must end the dialog, not press the token that was clicked last
        button->setAutoDefault(false);
    }
    unitButtons = {ui->M0, ui->M1, ui->M2,  ui->M3,  ui->M4,  ui->M5,  ui->M6,  ui->M7,
                   ui->M8, ui->M9, ui->M10, ui->M11, ui->M12, ui->M13, ui->M14, ui->M15};
    for (QPushButton* const button : qAsConst(unitButtons))
        addToken(button, button->text());
    addToken(ui->btnAnd, OP_AND);
    addToken(ui->btnOr, OP_OR);
    addToken(ui->btnNot, OP_NOT);
    addToken(ui->btnXor, OP_XOR);
    addToken(ui->btnLeft, LEFT_BRACKET);
    addToken(ui->btnRight, RIGHT_BRACKET);

    connect(mapper, &QSignalMapper::mappedString, this, &MuExpressionDialog::expBtnClicked);
    connect(ui->btnBackspace, &QPushButton::clicked, this, &MuExpressionDialog::backspaceClicked);
    connect(ui->btnClear, &QPushButton::clicked, this, &MuExpressionDialog::clearAllClicked);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &MuExpressionDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &MuExpressionDialog::reject);
}

MuExpressionDialog::~MuExpressionDialog() = default;

QString MuExpressionDialog::getExpression(QList<bool>& enabled, QWidget* parent)
{
    QPointer<MuExpressionDialog> const dialog = new MuExpressionDialog(parent);
    dialog->changeMIndexEnable(enabled);
    bool const accepted = dialog->exec() == QDialog::Accepted;
    if (!dialog)
        return QString(); // gone with its parent
    dialog->deleteLater();
    return accepted ? dialog->currentExpression() : QString();
}

void MuExpressionDialog::changeMIndexEnable(QList<bool> const& enabled)
{
    int const count = qMin(enabled.size(), unitButtons.size());
    for (int unit = 0; unit < count; ++unit)
        unitButtons[unit]->setEnabled(enabled[unit]);
}

QString MuExpressionDialog::currentExpression() const
{
    return ui->lineEdit->text();
}

bool MuExpressionDialog::isOk() const
{
    return VEK::isOk(tokens);
}

void MuExpressionDialog::accept()
{
    if (isOk())
        QDialog::accept();
    else
        showMessage(QMessageBox::Critical, QStringLiteral("Error"),
                    QStringLiteral("Please input the right expression"), this);
}

void MuExpressionDialog::expBtnClicked(QString const& token)
{
    tokens << token;
    showTokens();
}

void MuExpressionDialog::backspaceClicked()
{
    if (!tokens.isEmpty())
        tokens.removeLast();
    showTokens();
}

void MuExpressionDialog::clearAllClicked()
{
    tokens.clear();
    showTokens();
}

void MuExpressionDialog::addToken(QPushButton* button, QString const& token)
{
    connect(button, &QPushButton::clicked, mapper, QOverload<>::of(&QSignalMapper::map));
    mapper->setMapping(button, token);
}

void MuExpressionDialog::showTokens()
{
    ui->lineEdit->setText(tokens.join(QString()));
}

} // namespace VEK
