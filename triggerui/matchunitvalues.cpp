#include "triggerui/matchunitdialog.h"

#include "ui_matchunitdialog.h"

#include <QMenu>
#include <QRegExpValidator>

/// The value editor of the match unit dialog. A bus shows the bits of its rows: both are written
/// together, whichever was edited.
namespace VEK {

namespace {

constexpr int WidestNames = 240;

QList<TreeLineEdit*> rowEditors(QTreeWidget* tree)
{
    QList<TreeLineEdit*> editors;
    for (int row = 0; row < tree->topLevelItemCount(); ++row)
        editors << TreeLineEdit::ofItem(tree->topLevelItem(row));
    return editors;
}

} // namespace

int MatchUnitDialog::calculatedBitwidth(int width)
{
    return digitCount(width, radix);
}

void MatchUnitDialog::fillTrees()
{
    updateValidator();
    if (!port)
        return;
    for (SignalItem const& item : qAsConst(port->signalList))
        Signal2treeItem(ui->treeSignals, item);
    fillValueTree(ui->treeSignals0);
    fillValueTree(ui->treeSignals1);
}

void MatchUnitDialog::fillValueTree(QTreeWidget* tree)
{
    QWidget* last = tree;
    int row = 0;
    for (SignalItem const& item : qAsConst(port->signalList)) {
        TreeLineEdit* const edit = Signal2treeItemAndEdit(tree, item, row++);
        QWidget::setTabOrder(last, edit);
        last = edit;
        for (TreeLineEdit* const bit : qAsConst(edit->subEdits)) {
            QWidget::setTabOrder(last, bit);
            last = bit;
        }
    }
    tree->resizeColumnToContents(0);
    tree->setColumnWidth(0, qMin(tree->columnWidth(0), WidestNames));
    resetTree(tree);
    toolTipValueChanged(tree);
}

/// An editor that goes may have the focus. It must not speak any more, nor hand the focus to the
/// next one, whose row is gone already.
void MatchUnitDialog::clearTrees()
{
    ui->treeSignals->clear();
    for (QTreeWidget* const tree : {ui->treeSignals0, ui->treeSignals1}) {
        for (TreeLineEdit* const row : rowEditors(tree)) {
            row->blockSignals(true);
            for (TreeLineEdit* const bit : qAsConst(row->subEdits))
                bit->blockSignals(true);
        }
        if (tree->isAncestorOf(focusWidget()))
            tree->setFocus();
        tree->clear();
    }
}

TreeLineEdit* MatchUnitDialog::Signal2treeItemAndEdit(QTreeWidget* tree, SignalItem const& item,
                                                      int row)
{
    QTreeWidgetItem* const treeItem = Signal2treeItem(tree, item);
    TreeLineEdit* const edit = TreeLineEdit::inItem(treeItem);
    edit->width = item.isBus() ? item.signalList.size() : 1;
    edit->index = row;
    connect(edit, &QWidget::customContextMenuRequested, this, &MatchUnitDialog::onEditMenu);
    connect(edit, &QLineEdit::editingFinished, this, &MatchUnitDialog::onBusEditChange);

    for (int i = 0; i < treeItem->childCount(); ++i) {
        TreeLineEdit* const bit = TreeLineEdit::inItem(treeItem->child(i));
        bit->index = i;
        bit->bus = edit;
        connect(bit, &QWidget::customContextMenuRequested, this, &MatchUnitDialog::onEditMenu);
        connect(bit, &QLineEdit::editingFinished, this, &MatchUnitDialog::onSubEditChange);
        edit->subEdits << bit;
    }
    return edit;
}

void MatchUnitDialog::updateValidator()
{
    validator->setRegExp(QRegExp(valuePattern(radix, func, matchType)));
}

/// Clears the editor, so that it never holds text which its new validator refuses: such text would
/// let any letter in.
void MatchUnitDialog::setEditorType(QLineEdit* edit, int width)
{
    QString const digits(calculatedBitwidth(width), QLatin1Char('N'));
    edit->clear();
    updateValidator();
    edit->setInputMask(QString());
    edit->setInputMask(QStringLiteral(">%1;0").arg(digits));
    edit->setValidator(validator);
}

void MatchUnitDialog::resetTree(QTreeWidget* tree)
{
    updateValidator();
    for (TreeLineEdit* const row : rowEditors(tree)) {
        setEditorType(row, row->width);
        for (TreeLineEdit* const bit : qAsConst(row->subEdits))
            setEditorType(bit, bit->width);
    }
}

void MatchUnitDialog::resetTrees()
{
    resetTree(ui->treeSignals0);
    resetTree(ui->treeSignals1);
}

/// Outside of radix 2 an editor of one bit takes any digit: its lowest bit counts.
QString MatchUnitDialog::bitOf(TreeLineEdit const* edit) const
{
    return bitsOfText(edit->displayText(), radix, 1);
}

QString MatchUnitDialog::bitsOfRow(TreeLineEdit const* row) const
{
    if (row->subEdits.isEmpty())
        return bitOf(row);
    QString bits;
    for (TreeLineEdit const* bit : row->subEdits)
        bits += bitOf(bit);
    return bits;
}

QString MatchUnitDialog::getEditor(QTreeWidget* tree, bool replaceLetters) const
{
    QString value;
    for (TreeLineEdit const* row : rowEditors(tree)) {
        QString const bits = bitsOfRow(row);
        value +=
            replaceLetters && holdsLetters(bits) ? BitWidthAdjust(QString(), row->width) : bits;
    }
    return value;
}

void MatchUnitDialog::setEditor(QString const& value, QTreeWidget* tree)
{
    int at = 0;
    for (TreeLineEdit* const row : rowEditors(tree)) {
        showRow(row, value.mid(at, row->width));
        at += row->width;
    }
}

/// Writes `bits` into the row and, one each, into the rows of its bits. A text must be as long as
/// its mask, or it fills from the left.
void MatchUnitDialog::showRow(TreeLineEdit* row, QString const& bits)
{
    bool const numeric = radix == 2 || !holdsLetters(bits);
    QString const shown = BitWidthAdjust(numeric ? bits : QString(), row->width);
    row->setText(textOfBits(shown, radix));
    row->setCursorPosition(0); // the head of a long value is in sight
    for (int i = 0; i < row->subEdits.size(); ++i)
        row->subEdits[i]->setText(shown.mid(i, 1));
}

void MatchUnitDialog::spread(TreeLineEdit* edit)
{
    if (edit->bus)
        showRow(edit->bus, bitsOfRow(edit->bus));
    else
        showRow(edit, bitsOfText(edit->displayText(), radix, edit->width));
}

void MatchUnitDialog::onBusEditChange()
{
    if (auto* const edit = qobject_cast<TreeLineEdit*>(sender()))
        spread(edit);
}

void MatchUnitDialog::onSubEditChange()
{
    if (auto* const edit = qobject_cast<TreeLineEdit*>(sender()))
        spread(edit);
}

/// What is still being typed counts, also when the focus did not move.
MatchUnitDialog::Values MatchUnitDialog::readValues(bool replaceLetters)
{
    if (auto* const edit = qobject_cast<TreeLineEdit*>(focusWidget()))
        spread(edit);
    return {getEditor(ui->treeSignals0, replaceLetters),
            getEditor(ui->treeSignals1, replaceLetters)};
}

void MatchUnitDialog::applyValues(Values const& values)
{
    if (validator->regExp().exactMatch(values.first))
        setEditor(values.first, ui->treeSignals0);
    if (validator->regExp().exactMatch(values.second))
        setEditor(values.second, ui->treeSignals1);
}

void MatchUnitDialog::toolTipValueChanged(QTreeWidget* tree)
{
    for (TreeLineEdit* const row : rowEditors(tree)) {
        QString const lowest(calculatedBitwidth(row->width), QLatin1Char('0'));
        QString const highest = textOfBits(QString(row->width, QLatin1Char('1')), radix);
        row->setToolTip(lowest + QLatin1Char('~') + highest);
    }
}

void MatchUnitDialog::onEditMenu(QPoint position)
{
    menuEdit = qobject_cast<TreeLineEdit*>(sender());
    if (!menuEdit)
        return;
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QString const enabled = lettersAllowed(radix, func, matchType) + QStringLiteral("01");
    auto const add = [&](QString const& text, void (MatchUnitDialog::*slot)()) {
        menu->addAction(text, this, slot)->setEnabled(enabled.contains(text[0]));
    };
    add(QStringLiteral("X   Don't Care"), &MatchUnitDialog::onChangeX);
    add(QStringLiteral("0   Low"), &MatchUnitDialog::onChange0);
    add(QStringLiteral("1   High"), &MatchUnitDialog::onChange1);
    add(QStringLiteral("R   Rising Edge"), &MatchUnitDialog::onChangeR);
    add(QStringLiteral("F   Falling Edge"), &MatchUnitDialog::onChangeF);
    add(QStringLiteral("B   Either Edge"), &MatchUnitDialog::onChangeB);
    add(QStringLiteral("N   No Edge"), &MatchUnitDialog::onChangeN);
    menu->popup(menuEdit->mapToGlobal(position));
}

/// A letter that the editors refuse changes nothing: the menu offers none.
void MatchUnitDialog::changeAll(QChar to)
{
    QString const accepted = lettersAllowed(radix, func, matchType) + QStringLiteral("01");
    if (!menuEdit || !accepted.contains(to))
        return;
    QString const bits(menuEdit->width, to);
    menuEdit->setText(textOfBits(bits, radix)); // this sends no signal of an edit
    spread(menuEdit);
}

void MatchUnitDialog::onChangeX()
{
    changeAll(QLatin1Char('X'));
}

void MatchUnitDialog::onChange0()
{
    changeAll(QLatin1Char('0'));
}

void MatchUnitDialog::onChange1()
{
    changeAll(QLatin1Char('1'));
}

void MatchUnitDialog::onChangeR()
{
    changeAll(QLatin1Char('R'));
}

void MatchUnitDialog::onChangeF()
{
    changeAll(QLatin1Char('F'));
}

void MatchUnitDialog::onChangeB()
{
    changeAll(QLatin1Char('B'));
}

void MatchUnitDialog::onChangeN()
{
    changeAll(QLatin1Char('N'));
}

} // namespace VEK
