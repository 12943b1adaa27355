#include "triggerui/matchvalueeditor.h"

#include "image/matchvalue.h"

#include <QMenu>
#include <QRegExpValidator>
#include <QTreeWidget>

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

/// The widths of all rows together.
int totalWidth(QTreeWidget* tree)
{
    int width = 0;
    for (TreeLineEdit const* row : rowEditors(tree))
        width += row->width;
    return width;
}

} // namespace

MatchValueEditor::MatchValueEditor(QTreeWidget* first, QTreeWidget* second, QWidget* dialog)
    : QObject(dialog), m_first(first), m_second(second), m_dialog(dialog),
      m_validator(new QRegExpValidator(this))
{
    resetTrees();
}

MatchValueEditor::~MatchValueEditor()
{
    clear();
}

void MatchValueEditor::fill(QList<SignalItem> const& items)
{
    fillTree(m_first, items);
    fillTree(m_second, items);
}

void MatchValueEditor::fillTree(QTreeWidget* tree, QList<SignalItem> const& items)
{
    QWidget* last = tree;
    int row = 0;
    for (SignalItem const& item : items) {
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

TreeLineEdit* MatchValueEditor::Signal2treeItemAndEdit(QTreeWidget* tree, SignalItem const& item,
                                                       int row)
{
    QTreeWidgetItem* const treeItem = Signal2treeItem(tree, item);
    TreeLineEdit* const edit = TreeLineEdit::inItem(treeItem);
    edit->width = item.isBus() ? item.signalList.size() : 1;
    edit->index = row;
    watch(edit);

    for (int i = 0; i < treeItem->childCount(); ++i) {
        TreeLineEdit* const bit = TreeLineEdit::inItem(treeItem->child(i));
        bit->index = i;
        bit->bus = edit;
        watch(bit);
        edit->subEdits << bit;
    }
    return edit;
}

void MatchValueEditor::watch(TreeLineEdit* edit)
{
    connect(edit, &QWidget::customContextMenuRequested, this,
            [this, edit](QPoint const& position) { openMenu(edit, position); });
    connect(edit, &QLineEdit::editingFinished, this, [this, edit] { spread(edit); });
}

void MatchValueEditor::clear()
{
    clearTree(m_first);
    clearTree(m_second);
}

/// An editor that goes may have the focus. It must not speak any more, nor hand the focus to the
/// next one, whose row is gone already.
void MatchValueEditor::clearTree(QTreeWidget* tree)
{
    for (TreeLineEdit* const row : rowEditors(tree)) {
        row->blockSignals(true);
        for (TreeLineEdit* const bit : qAsConst(row->subEdits))
            bit->blockSignals(true);
    }
    if (tree->isAncestorOf(m_dialog->focusWidget()))
        tree->setFocus();
    tree->clear();
}

void MatchValueEditor::setRadix(int radix)
{
    m_radix = radix;
    resetTrees();
    toolTipValueChanged(m_first);
    toolTipValueChanged(m_second);
}

void MatchValueEditor::setKind(int func, int matchType)
{
    m_func = func;
    m_matchType = matchType;
    resetTrees();
}

int MatchValueEditor::calculatedBitwidth(int width) const
{
    return digitCount(width, m_radix);
}

/// The rows are cleared, so that none ever holds text which its new validator refuses: such text
/// would let any letter in.
void MatchValueEditor::resetTrees()
{
    m_validator->setRegExp(QRegExp(valuePattern(m_radix, m_func, m_matchType)));
    resetTree(m_first);
    resetTree(m_second);
}

void MatchValueEditor::resetTree(QTreeWidget* tree)
{
    for (TreeLineEdit* const row : rowEditors(tree)) {
        setEditorType(row, row->width);
        for (TreeLineEdit* const bit : qAsConst(row->subEdits))
            setEditorType(bit, bit->width);
    }
}

void MatchValueEditor::setEditorType(QLineEdit* edit, int width)
{
    QString const digits(calculatedBitwidth(width), QLatin1Char('N'));
    edit->clear();
    edit->setInputMask(QString());
    edit->setInputMask(QStringLiteral(">%1;0").arg(digits));
    edit->setValidator(m_validator);
}

MatchValueEditor::Values MatchValueEditor::readValues(bool replaceLetters)
{
    spread(qobject_cast<TreeLineEdit*>(m_dialog->focusWidget()));
    return {getEditor(m_first, replaceLetters), getEditor(m_second, replaceLetters)};
}

QString MatchValueEditor::getEditor(QTreeWidget* tree, bool replaceLetters) const
{
    QString value;
    for (TreeLineEdit const* row : rowEditors(tree)) {
        QString const bits = bitsOfRow(row);
        value +=
            replaceLetters && holdsLetters(bits) ? BitWidthAdjust(QString(), row->width) : bits;
    }
    return value;
}

QString MatchValueEditor::bitsOfRow(TreeLineEdit const* row) const
{
    if (row->subEdits.isEmpty())
        return bitOf(row);
    QString bits;
    for (TreeLineEdit const* bit : row->subEdits)
        bits += bitOf(bit);
    return bits;
}

/// Outside of radix 2 an editor of one bit takes any digit: its lowest bit counts.
QString MatchValueEditor::bitOf(TreeLineEdit const* edit) const
{
    return bitsOfText(edit->displayText(), m_radix, 1);
}

void MatchValueEditor::applyValues(Values const& values)
{
    if (m_validator->regExp().exactMatch(values.first))
        setEditor(values.first, m_first);
    if (m_validator->regExp().exactMatch(values.second))
        setEditor(values.second, m_second);
}

void MatchValueEditor::loadValues(Values const& values)
{
    setEditor(fitted(values.first), m_first);
    setEditor(fitted(values.second), m_second);
}

QString MatchValueEditor::fitted(QString const& value) const
{
    QString const accepted = lettersAllowed() + QLatin1Char('1');
    QString fitted = value.rightJustified(totalWidth(m_first), QLatin1Char('0'), true);
    for (QChar& bit : fitted) {
        if (!accepted.contains(bit))
            bit = QLatin1Char('0');
    }
    return fitted;
}

QString MatchValueEditor::lettersAllowed() const
{
    return VEK::lettersAllowed(m_radix, m_func, m_matchType);
}

void MatchValueEditor::setEditor(QString const& value, QTreeWidget* tree)
{
    int at = 0;
    for (TreeLineEdit* const row : rowEditors(tree)) {
        showRow(row, value.mid(at, row->width));
        at += row->width;
    }
}

/// Writes `bits` into the row and, one each, into the rows of its bits. A text must be as long as
/// its mask, or it fills from the left.
void MatchValueEditor::showRow(TreeLineEdit* row, QString const& bits)
{
    bool const numeric = m_radix == 2 || !holdsLetters(bits);
    QString const shown = BitWidthAdjust(numeric ? bits : QString(), row->width);
    row->setText(textOfBits(shown, m_radix));
    row->setCursorPosition(0); // the head of a long value is in sight
    for (int i = 0; i < row->subEdits.size(); ++i)
        row->subEdits[i]->setText(shown.mid(i, 1));
}

void MatchValueEditor::spread(TreeLineEdit* edit)
{
    if (!edit)
        return;
    if (edit->bus)
        showRow(edit->bus, bitsOfRow(edit->bus));
    else
        showRow(edit, bitsOfText(edit->displayText(), m_radix, edit->width));
}

void MatchValueEditor::toolTipValueChanged(QTreeWidget* tree)
{
    for (TreeLineEdit* const row : rowEditors(tree)) {
        QString const lowest(calculatedBitwidth(row->width), QLatin1Char('0'));
        QString const highest = textOfBits(QString(row->width, QLatin1Char('1')), m_radix);
        row->setToolTip(lowest + QLatin1Char('~') + highest);
    }
}

void MatchValueEditor::openMenu(TreeLineEdit* edit, QPoint position)
{
    m_menuEdit = edit;
    if (!edit)
        return;
    auto* const menu = new QMenu(m_dialog);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QString const enabled = lettersAllowed() + QStringLiteral("01");
    for (QString const& text :
         {QStringLiteral("X   Don't Care"), QStringLiteral("0   Low"), QStringLiteral("1   High"),
          QStringLiteral("R   Rising Edge"), QStringLiteral("F   Falling Edge"),
          QStringLiteral("B   Either Edge"), QStringLiteral("N   No Edge")}) {
        QChar const letter = text[0];
        menu->addAction(text, this, [this, letter] { changeAll(letter); })
            ->setEnabled(enabled.contains(letter));
    }
    menu->popup(edit->mapToGlobal(position));
}

void MatchValueEditor::changeAll(QChar to)
{
    QString const accepted = lettersAllowed() + QStringLiteral("01");
    if (!m_menuEdit || !accepted.contains(to))
        return;
    QString const bits(m_menuEdit->width, to);
    m_menuEdit->setText(textOfBits(bits, m_radix)); // this sends no signal of an edit
    spread(m_menuEdit);
}

} // namespace VEK
