#include "programmer/ui_vekprogrammerwidget.h"

#include "programmer/vekprogrammermodel.h"
#include "triggerui/named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>
#include <QTextEdit>

namespace VEK {

namespace {

constexpr int MostLines = 10000; // of the output pane

} // namespace

QPushButton* Ui_VekProgrammerWidget::makeButton(QWidget* widget, char const* name,
                                                char const* caption)
{
    return named(new QPushButton(QLatin1String(caption), widget), name);
}

void Ui_VekProgrammerWidget::setupUi(QWidget* widget)
{
    enableBox = named(new QCheckBox(QStringLiteral("Enable Programmer"), widget), "enableBox");
    enableBox->setChecked(true);
    searchDevice = makeButton(widget, "searchDevice", "Search Device");
    downLoad = makeButton(widget, "downLoad", "Download");
    addDevice = makeButton(widget, "addDevice", "Add Device");
    rmDevice = makeButton(widget, "rmDevice", "Remove Device");
    moveUp = makeButton(widget, "moveUp", "Up");
    moveDown = makeButton(widget, "moveDown", "Down");
    labelFrequency = named(new QLabel(QStringLiteral("Frequency:"), widget), "labelFrequency");
    comboBoxFrequency = named(new QComboBox(widget), "comboBoxFrequency");

    auto* const bar = new QHBoxLayout;
    bar->addWidget(enableBox);
    for (QAbstractButton* const button : buttons())
        bar->addWidget(button);
    bar->addWidget(labelFrequency);
    bar->addWidget(comboBoxFrequency);
    bar->addStretch(1);

    makeTable(widget);
    makeOutput(widget);
    auto* const splitter = new QSplitter(Qt::Vertical, widget);
    splitter->addWidget(tableView);
    splitter->addWidget(textEdit);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 1);

    auto* const layout = new QVBoxLayout(widget);
    layout->addLayout(bar);
    layout->addWidget(splitter, 1);
}

QList<QAbstractButton*> Ui_VekProgrammerWidget::buttons() const
{
    return {searchDevice, downLoad, addDevice, rmDevice, moveUp, moveDown};
}

void Ui_VekProgrammerWidget::makeTable(QWidget* widget)
{
    tableView = named(new QTableView(widget), "tableView");
    tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    // the bold captions of a selected row would not fit their columns
    tableView->horizontalHeader()->setHighlightSections(false);
}

void Ui_VekProgrammerWidget::makeOutput(QWidget* widget)
{
    textEdit = named(new QTextEdit(widget), "textEdit");
    textEdit->setReadOnly(true);
    textEdit->document()->setMaximumBlockCount(MostLines);
}

} // namespace VEK
