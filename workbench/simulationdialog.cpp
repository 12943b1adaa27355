#include "workbench/simulationdialog.h"

#include "cli/exitstatus.h"
#include "workbench/netscan.h"
#include "workbench/nettree.h"
#include "workbench/triggernote.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>

using namespace VEK;
using Cli::Failure;
using Cli::NewDesign;

namespace {

QString const Ending = QStringLiteral(".vek");
constexpr QSize UsualSize{760, 720};

QSpinBox* makeNumber(QString const& name, int least, int most, int value, QWidget* parent)
{
    auto* const box = new QSpinBox(parent);
    box->setObjectName(name);
    box->setRange(least, most);
    box->setValue(value);
    return box;
}

} // namespace

SimulationDialog::SimulationDialog(QString const& folder, QWidget* parent)
    : QDialog(parent), m_folder(folder)
{
    setWindowTitle(QStringLiteral("New From Simulation"));
    makeForm();
    resize(UsualSize);
    follow();
}

SimulationDialog::~SimulationDialog() = default;

void SimulationDialog::makeForm()
{
    auto* const form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    NewDesign const usual;
    m_dump = makePathLine("dump", "chooseDump", &SimulationDialog::chooseDump);
    m_dump->setReadOnly(true);
    form->addRow(QStringLiteral("Simulation (.vcd):"), m_dump->parentWidget());
    m_tree = new NetTree(this);
    form->addRow(m_tree);
    m_choice = new QLabel(this);
    form->addRow(m_choice);
    m_clock = new QComboBox(this);
    m_clock->setObjectName(QStringLiteral("clock"));
    m_clock->setEditable(true);
    form->addRow(QStringLiteral("Sample &clock:"), m_clock);
    m_depth = makeNumber(QStringLiteral("depth"), 8, 65536, usual.depth, this);
    form->addRow(QStringLiteral("Memory &depth:"), m_depth);
    m_windows = makeNumber(QStringLiteral("windows"), 1, 8192, usual.windows, this);
    form->addRow(QStringLiteral("&Windows:"), m_windows);
    m_position = new QLineEdit(usual.position, this);
    m_position->setObjectName(QStringLiteral("position"));
    m_position->setToolTip(QStringLiteral("Of a window: samples, or a share such as 25%"));
    form->addRow(QStringLiteral("Trigger &position:"), m_position);
    m_trigger = new QLineEdit(this);
    m_trigger->setObjectName(QStringLiteral("newTrigger"));
    m_trigger->setPlaceholderText(
        QStringLiteral("Such as: addr in 0x50..0x57 & valid rises. Empty: the first sample"));
    form->addRow(QStringLiteral("&Trigger:"), m_trigger);
    m_triggerNote = makeNote(QStringLiteral("newTriggerNote"), this);
    form->addRow(QString(), m_triggerNote);
    m_output = makePathLine("output", "chooseOutput", &SimulationDialog::chooseOutput);
    form->addRow(QStringLiteral("&Save as:"), m_output->parentWidget());
    auto* const hint = new QLabel(
        QStringLiteral("For rehearsals: it describes no core that was built. Runs of it go to "
                       "the simulated chip, never to a cable."),
        this);
    hint->setWordWrap(true);
    form->addRow(hint);
    m_error = makeNote(QStringLiteral("newError"), this);
    form->addRow(m_error);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_create = buttons->addButton(QStringLiteral("C&reate"), QDialogButtonBox::AcceptRole);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &SimulationDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SimulationDialog::reject);
    connect(m_tree, &NetTree::choiceChanged, this, &SimulationDialog::onChoice);
    for (QLineEdit* const line : {m_trigger, m_output, m_clock->lineEdit()})
        connect(line, &QLineEdit::textChanged, this, &SimulationDialog::follow);
}

/// A line for a file with a button beside it that chooses one.
QLineEdit* SimulationDialog::makePathLine(char const* name, char const* chooseName,
                                          void (SimulationDialog::*choose)())
{
    auto* const both = new QWidget(this);
    auto* const layout = new QHBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const line = new QLineEdit(both);
    line->setObjectName(QLatin1String(name));
    auto* const button = new QToolButton(both);
    button->setObjectName(QLatin1String(chooseName));
    button->setText(QStringLiteral("..."));
    layout->addWidget(line);
    layout->addWidget(button);
    connect(button, &QToolButton::clicked, this, choose);
    return line;
}

void SimulationDialog::chooseDump()
{
    QString const path =
        QFileDialog::getOpenFileName(this, QStringLiteral("Simulation"), m_folder,
                                     QStringLiteral("Value change dumps (*.vcd);;All files (*)"));
    if (!path.isEmpty())
        openDump(path);
}

void SimulationDialog::chooseOutput()
{
    QString const path = QFileDialog::getSaveFileName(
        this, QStringLiteral("Configuration"), m_output->text(),
        QStringLiteral("Configurations (*.vek)"), nullptr, QFileDialog::DontConfirmOverwrite);
    if (!path.isEmpty())
        m_output->setText(path);
}

void SimulationDialog::openDump(QString const& path)
{
    m_scan.reset(); // of the dump before
    m_dump->setText(path);
    m_clock->clear();
    tell(QString());
    m_nets.clear();
    try {
        m_nets = Cli::designNets(path);
    } catch (Failure const& failure) {
        tell(failure.message);
    }
    m_tree->showNets(m_nets);
    QFileInfo const file(path);
    m_folder = file.absolutePath();
    m_output->setText(m_folder + QLatin1Char('/') + file.completeBaseName() + Ending);
    if (m_nets.empty())
        return;
    m_scan = std::make_unique<NetScan>(path);
    connect(m_scan.get(), &NetScan::done, this, &SimulationDialog::showClocks);
}

/// Whatever the user has typed in the meantime stays.
void SimulationDialog::showClocks()
{
    m_tree->showChanges(m_scan->nets());
    QString const typed = m_clock->currentText();
    for (Dump::Net const& net : m_scan->nets())
        if (net.looksLikeClock)
            m_clock->addItem(QString::fromUtf8(net.variable.path));
    if (!typed.isEmpty())
        m_clock->setEditText(typed);
    tell(m_scan->message());
}

void SimulationDialog::onChoice()
{
    m_signals.clear();
    NewDesign chosen = design();
    try {
        m_signals = Cli::designSignals(chosen, m_nets);
        tell(QString());
    } catch (Failure const& failure) {
        tell(failure.message);
    }
    QString const scope = chosen.scope;
    m_choice->setText(
        QStringLiteral("%1 signals").arg(flatSignals(m_signals).size()) +
        (scope.isEmpty() ? QString() : QStringLiteral(", names from %1 on").arg(scope)));
    follow();
}

/// The trigger is looked at as one types.
void SimulationDialog::follow()
{
    QString const text = m_trigger->text();
    QList<TriggerError> errors;
    if (!m_signals.isEmpty())
        errors = Cli::designTriggerErrors(design(), m_signals);
    showNote(*m_triggerNote, errorNote(text, errors), true);
    m_create->setEnabled(!m_signals.isEmpty() && errors.isEmpty() &&
                         !m_clock->currentText().isEmpty() && !m_output->text().isEmpty());
}

NewDesign SimulationDialog::design() const
{
    NewDesign design;
    design.dump = m_dump->text();
    design.paths = m_tree->chosen();
    design.scope = m_tree->chosenScope();
    design.clock = m_clock->currentText();
    design.depth = m_depth->value();
    design.windows = m_windows->value();
    design.position = m_position->text();
    design.trigger = m_trigger->text();
    design.prefix = m_output->text();
    if (design.prefix.endsWith(Ending))
        design.prefix.chop(Ending.size());
    return design;
}

void SimulationDialog::accept()
{
    try {
        m_made = Cli::makeDesign(design());
    } catch (Failure const& failure) {
        return tell(failure.message);
    }
    QDialog::accept();
}

void SimulationDialog::tell(QString const& error)
{
    showNote(*m_error, error, true);
}
