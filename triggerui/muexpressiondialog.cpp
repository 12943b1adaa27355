#include "triggerui/muexpressiondialog.h"

#include "image/expression.h"
#include "model/capturecore.h"
#include "widgets/messagebox.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalMapper>
#include <QVBoxLayout>

namespace VEK {

/// The form: 16 unit buttons in four rows, the operators beside them, the line above.
class Ui_MuExpressionDialog
{
public:
    void setupUi(QDialog* dialog);

    QLineEdit* lineEdit = nullptr;
    QList<QPushButton*> unitButtons; ///< By unit index.
    QList<QPushButton*> operatorButtons;
    QPushButton* backspace = nullptr;
    QPushButton* clearAll = nullptr;
    QDialogButtonBox* buttonBox = nullptr;

private:
    QPushButton* makeButton(QString const& name, QString const& caption, int row, int column);
    void makeUnitButtons();
    void makeOperatorButtons();

    QDialog* m_dialog = nullptr;
    QGridLayout* m_pad = nullptr;
};

namespace {

constexpr int PadColumns = 4;

struct OperatorButton
{
    char const* name;
    char const* caption;
    QString const& token;
};

QFont padFont()
{
    QFont font(QStringLiteral("Courier"), 16, QFont::Bold);
    font.setStyleHint(QFont::Monospace);
    return font;
}

} // namespace

void Ui_MuExpressionDialog::setupUi(QDialog* dialog)
{
    m_dialog = dialog;
    dialog->setWindowTitle(QStringLiteral("Expression"));

    lineEdit = new QLineEdit(dialog);
    lineEdit->setObjectName(QStringLiteral("lineEdit"));
    lineEdit->setReadOnly(true);
    lineEdit->setFont(padFont());

    m_pad = new QGridLayout;
    makeUnitButtons();
    makeOperatorButtons();

    buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel,
                                     Qt::Horizontal, dialog);
    buttonBox->setObjectName(QStringLiteral("buttonBox"));

    auto* const layout = new QVBoxLayout(dialog);
    layout->addWidget(lineEdit);
    layout->addLayout(m_pad);
    layout->addWidget(buttonBox);
}

QPushButton* Ui_MuExpressionDialog::makeButton(QString const& name, QString const& caption, int row,
                                               int column)
{
    auto* const button = new QPushButton(caption, m_dialog);
    button->setObjectName(name);
    button->setFont(padFont());
    // Return must end the dialog, not press the token that was clicked last
    button->setAutoDefault(false);
    m_pad->addWidget(button, row, column);
    return button;
}

void Ui_MuExpressionDialog::makeUnitButtons()
{
    for (int unit = 0; unit < CoreUnitCount; ++unit) {
        QString const caption = QStringLiteral("M%1").arg(unit);
        unitButtons << makeButton(caption, caption, unit / PadColumns, unit % PadColumns);
    }
}

void Ui_MuExpressionDialog::makeOperatorButtons()
{
    // a button shows one "&" for two
    OperatorButton const buttons[] = {
        {"btnAnd", "&&", OP_AND}, {"btnOr", "|", OP_OR},          {"btnNot", "!", OP_NOT},
        {"btnXor", "^", OP_XOR},  {"btnLeft", "(", LEFT_BRACKET}, {"btnRight", ")", RIGHT_BRACKET},
    };
    int place = 0;
    auto const next = [&](char const* name, QString const& caption) {
        int const row = place / 2;
        int const column = PadColumns + place % 2;
        ++place;
        return makeButton(QLatin1String(name), caption, row, column);
    };
    for (OperatorButton const& button : buttons) {
        operatorButtons << next(button.name, QLatin1String(button.caption));
        operatorButtons.last()->setProperty("token", button.token);
    }
    backspace = next("btnBackspace", QString(QChar(0x2190)));
    clearAll = next("btnClear", QStringLiteral("C"));
}

MuExpressionDialog::MuExpressionDialog(QWidget* parent)
    : QDialog(parent), ui(new Ui_MuExpressionDialog), mapper(new QSignalMapper(this))
{
    ui->setupUi(this);
    auto const map = [this](QPushButton* button, QString const& token) {
        connect(button, &QPushButton::clicked, mapper,
                static_cast<void (QSignalMapper::*)()>(&QSignalMapper::map));
        mapper->setMapping(button, token);
    };
    for (QPushButton* const button : qAsConst(ui->unitButtons))
        map(button, button->text());
    for (QPushButton* const button : qAsConst(ui->operatorButtons))
        map(button, button->property("token").toString());
    connect(mapper, &QSignalMapper::mappedString, this, &MuExpressionDialog::expBtnClicked);
    connect(ui->backspace, &QPushButton::clicked, this, &MuExpressionDialog::backspaceClicked);
    connect(ui->clearAll, &QPushButton::clicked, this, &MuExpressionDialog::clearAllClicked);
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
    int const count = qMin(enabled.size(), ui->unitButtons.size());
    for (int unit = 0; unit < count; ++unit)
        ui->unitButtons[unit]->setEnabled(enabled[unit]);
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

void MuExpressionDialog::showTokens()
{
    ui->lineEdit->setText(tokens.join(QString()));
}

} // namespace VEK
